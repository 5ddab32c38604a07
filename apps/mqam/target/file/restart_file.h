// Restart information in a file of its own, replaced as a whole: at every instant the file at the path is the
// one before or the one after.
#pragma once

#include <optional>
#include <string>

#include "mqam/target/restart_state.h"

namespace mqam {

/// The file by way of which the one at the path is replaced.
[[nodiscard]] std::string ScratchOfRestartFile(const std::string& path);

/// Reads restart information; none when there is no file. Returns false with the reason in words, the path
/// among them, when the file cannot be read (`mayPass`: the system failed) or is not whole (it stays so).
[[nodiscard]] bool ReadRestartFile(const std::string& path, std::optional<RestartState>& state,
                                   std::string& reason, bool& mayPass);

/// Makes `state` the restart information, on the medium when this returns. Returns false with the reason;
/// then the one before stands, or the new one does and only its name may not have reached the medium.
[[nodiscard]] bool ReplaceRestartFile(const std::string& path, const RestartState& state,
                                      std::string& reason);

}  // namespace mqam
