// Files as a repair and a restart need them: what is in a directory, and changes that are on the disk when
// the routine returns. disk_changes_posix.cpp and disk_changes_windows.cpp implement them.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace platform {

/// Returns the directories, with their trailing delimiter (empty: the current one), in which the module may
/// have put a temporary checkpoint file. On Windows it looks only for backslashes, so a path with slashes has
/// two.
[[nodiscard]] std::vector<std::string> TemporaryDirectories(const std::string& checkpointPath);

/// Returns the names in a directory, in no order; none if it cannot be listed.
[[nodiscard]] std::vector<std::string> ListDirectory(const std::string& folder);

/// Moves a stream to an offset from its beginning.
[[nodiscard]] bool MoveStreamTo(std::FILE* stream, std::uint64_t offset);

/// Renames a file on the same volume, after syncing its contents. Refuses a new name that exists. Returns
/// false with the system's message in `reason`.
[[nodiscard]] bool RenameDurably(const std::string& from, const std::string& to, std::string& reason);

/// Deletes a file. Returns false with the system's message in `reason`.
[[nodiscard]] bool DeleteDurably(const std::string& path, std::string& reason);

/// Truncates a file to `bytes`, fewer than it has. Returns false with the system's message in `reason`.
[[nodiscard]] bool TruncateDurably(const std::string& path, std::uint64_t bytes, std::string& reason);

/// Replaces the contents of the file at `path` with `bytes`, through the new file `scratch` on the same
/// volume. At every instant `path` has either the old or the new contents. Returns false with the system's
/// message in `reason`.
[[nodiscard]] bool ReplaceDurably(const std::string& path, const std::string& scratch,
                                  const std::string& bytes, std::string& reason);

/// Syncs the name of a new file, on systems where that is a separate step.
[[nodiscard]] bool SyncParentDirectory(const std::string& path, std::string& reason);

}  // namespace platform
