// SPDX-License-Identifier: Apache-2.0

// Keeps restart information in a file of its own. The file is always replaced as a whole: at every instant it
// is either the previous one or the new one.
#pragma once

#include <optional>
#include <string>

#include "mqam/base/status.h"
#include "mqam/target/restart_state.h"

namespace mqam {

/// Returns the path of the file that is written first and then renamed to `path`.
[[nodiscard]] std::string ScratchOfRestartFile(const std::string& path);

/// Reads restart information, or none if there is no file. The error names the path; it is kTransient if the
/// file cannot be read, kRefused if it is incomplete or damaged.
Status ReadRestartFile(const std::string& path, std::optional<RestartState>& state);

/// Replaces the restart information with `state`, synced to disk. On failure (kTransient) the previous information is
/// still there, or the new one is and only its name may not have reached the disk.
Status ReplaceRestartFile(const std::string& path, const RestartState& state);

}  // namespace mqam
