// SPDX-License-Identifier: Apache-2.0
#include "platform/environment.h"

#include <cstdlib>

namespace platform {

std::string ReadEnvironment(const std::string& name) {
    const char* value =
        std::getenv(name.c_str());  // NOLINT(concurrency-mt-unsafe): there is no other way to ask
    return value == nullptr ? std::string() : std::string(value);
}

void SetEnvironment(const std::string& name, const std::string& value) {
    if (value.empty()) {
        unsetenv(name.c_str());
    } else {
        setenv(name.c_str(), value.c_str(), 1);
    }
}

bool SetEmptyEnvironment(const std::string& name) {
    return setenv(name.c_str(), "", 1) == 0;
}

}  // namespace platform
