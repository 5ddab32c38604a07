// SPDX-License-Identifier: Apache-2.0

// Reads and sets environment variables of this process and of those that it starts.
#pragma once

#include <string>

namespace platform {

/// Returns the value of a variable, or an empty string if it is not set.
[[nodiscard]] std::string ReadEnvironment(const std::string& name);

/// Sets a variable, for getenv as well as for the system's own call. An empty value removes it.
void SetEnvironment(const std::string& name, const std::string& value);

/// Sets a variable to an empty value. Returns false on Windows, which has no such variables.
[[nodiscard]] bool SetEmptyEnvironment(const std::string& name);

}  // namespace platform
