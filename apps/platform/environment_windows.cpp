// SPDX-License-Identifier: Apache-2.0
#include "platform/environment.h"

#include <cstdlib>

#include "platform/windows_text.h"

namespace platform {

std::string ReadEnvironment(const std::string& name) {
    const std::wstring wideName = Wide(name);
    const DWORD needed = GetEnvironmentVariableW(wideName.c_str(), nullptr, 0);
    if (needed == 0) {
        return {};
    }
    std::wstring value(needed, L'\0');
    const DWORD length = GetEnvironmentVariableW(wideName.c_str(), value.data(), needed);
    return Narrow(value.data(), length);
}

void SetEnvironment(const std::string& name, const std::string& value) {
    _putenv_s(name.c_str(), value.c_str());
    SetEnvironmentVariableA(name.c_str(), value.empty() ? nullptr : value.c_str());
}

bool SetEmptyEnvironment(const std::string& /*name*/) {
    return false;
}

}  // namespace platform
