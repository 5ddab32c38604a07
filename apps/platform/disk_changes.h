// Files as a repair and a restart need them: what stands in a folder, and changes that are on the medium when
// they return.
// disk_changes_posix.cpp and disk_changes_windows.cpp answer.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace platform {

/// The folders, with their trailing delimiter (empty: the current one), in which the module may have put a
/// temporary checkpoint file. On Windows it looks for a backslash alone, so a path with slashes has two.
[[nodiscard]] std::vector<std::string> TemporaryDirectories(const std::string& checkpointPath);

/// The names in a folder, in no order; none when it cannot be listed.
[[nodiscard]] std::vector<std::string> ListDirectory(const std::string& folder);

/// Moves a stream to an offset from its beginning.
[[nodiscard]] bool MoveStreamTo(std::FILE* stream, std::uint64_t offset);

/// Gives a file a new name, on the same volume; its contents are brought to the medium first. Refuses a new
/// name that exists. Returns false with the system's words in `reason`.
[[nodiscard]] bool RenameDurably(const std::string& from, const std::string& to, std::string& reason);

/// Deletes a file. Returns false with the system's words in `reason`.
[[nodiscard]] bool DeleteDurably(const std::string& path, std::string& reason);

/// Cuts a file to `bytes`, fewer than it has. Returns false with the system's words in `reason`.
[[nodiscard]] bool TruncateDurably(const std::string& path, std::uint64_t bytes, std::string& reason);

/// Makes `bytes` the contents of the file at `path`, by way of the new file `scratch` on the same volume: at
/// every instant `path` is as before or as after. Returns false with the system's words in `reason`.
[[nodiscard]] bool ReplaceDurably(const std::string& path, const std::string& scratch,
                                  const std::string& bytes, std::string& reason);

/// Brings a new file's name to the medium, where that is a step of its own.
[[nodiscard]] bool SyncParentDirectory(const std::string& path, std::string& reason);

}  // namespace platform
