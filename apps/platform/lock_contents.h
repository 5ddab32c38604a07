// SPDX-License-Identifier: Apache-2.0

// Recognises the contents of a lock file. Only the lock's own sources include this.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace platform {

/// How much of a file has to be read in order to recognise it: more than any lock file has.
inline constexpr std::size_t kLockBytesRead = 1024;

/// Returns whether the file's contents are those of a holder. It may have died while it wrote them, and they are not
/// synced: a loss of power can leave zeros in their place.
///   beginning  the first kLockBytesRead bytes of the file, or all of them
///   contents   what a holder writes
[[nodiscard]] inline bool IsLockContents(std::string_view beginning, const std::string& contents) {
    const std::string mark = contents.substr(0, contents.find('\n') + 1);
    if (mark.empty()) return false;
    const bool isZeros =
        std::all_of(beginning.begin(), beginning.end(), [](char byte) { return byte == '\0'; });
    if (isZeros && beginning.size() < kLockBytesRead) return true;
    const std::size_t bytes = std::min(mark.size(), beginning.size());
    return beginning.substr(0, bytes) == std::string_view(mark).substr(0, bytes);
}

}  // namespace platform
