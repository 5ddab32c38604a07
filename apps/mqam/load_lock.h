// One load at a time: a lock that ends with the process, however it ends. load_lock_posix.cpp and
// load_lock_windows.cpp answer.
#pragma once

#include <string>

/// Takes the lock that the file `path` stands for, made when it is missing. Waits up to `patienceSeconds` for
/// a process that is just ending. Returns false with the reason in words: another process has it, the file
/// cannot be made, or one is there that holds something and so is no lock. A process may take several.
[[nodiscard]] bool TakeLoadLock(const std::string& path, int patienceSeconds, std::string& reason);

/// The end of the reason in the last case, behind the path.
inline constexpr char kNoLock[] = " holds something: it is not the lock of a load, and is left alone";

/// Gives a lock back and removes its file. Harmless when it is not held.
void GiveBackLoadLock(const std::string& path);
