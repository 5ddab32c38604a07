// SPDX-License-Identifier: Apache-2.0
#include "mqam/base/utc_time.h"

#include <ctime>

namespace mqam {

std::string UtcNow() {
    const std::time_t now = std::time(nullptr);
    char text[64];
    const std::tm* const parts = std::gmtime(&now);
    if (parts == nullptr) return "";
    return std::string(text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S UTC", parts));
}

}  // namespace mqam
