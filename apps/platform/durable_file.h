// SPDX-License-Identifier: Apache-2.0

// Changes files in such a way that the change is on the disk when the function returns, so that it survives a
// loss of power. Every function returns false with the system's error in `error` when it fails; `error` is
// unchanged otherwise.
#pragma once

#include <cstdint>
#include <string>

namespace platform {

/// Syncs the contents of `from`, then renames it to `to` on the same volume. Fails if `to` exists; nothing
/// has changed then.
[[nodiscard]] bool RenameDurably(const std::string& from, const std::string& to, std::string& error);

/// Renames `from` to `to` on the same volume; `to` is replaced if it exists. At every instant `to` is the old
/// file or the new one. The contents are not synced. On Windows replacing fails while another process has
/// `to` open, so it is retried for up to 5 seconds.
[[nodiscard]] bool MoveOverDurably(const std::string& from, const std::string& to, std::string& error);

/// Deletes a file. Fails if it does not exist.
[[nodiscard]] bool DeleteDurably(const std::string& path, std::string& error);

/// Cuts a file off after `bytes`, which must not exceed its size.
[[nodiscard]] bool TruncateDurably(const std::string& path, std::uint64_t bytes, std::string& error);

/// Replaces the contents of the file at `path` with `bytes`, or creates it. The bytes are first written to
/// the file `scratch` on the same volume, which is then renamed: at every instant `path` has either its old
/// contents or the new ones. On failure `scratch` may be left behind. On Windows replacing fails while
/// another process has `path` open, so it is retried for up to 5 seconds.
[[nodiscard]] bool ReplaceDurably(const std::string& path, const std::string& scratch,
                                  const std::string& bytes, std::string& error);

/// Makes the name of a file, after it was created or renamed, survive a loss of power. Does nothing on
/// Windows, whose file systems log changes of directories themselves.
[[nodiscard]] bool SyncParentDirectory(const std::string& path, std::string& error);

}  // namespace platform
