// SPDX-License-Identifier: Apache-2.0

// Writes the position of a checkpoint as 32 hexadecimal digits: its 16 bytes as the module hands them out.
#pragma once

#include <optional>
#include <string>

#include "mqamod.h"

namespace mqam {

/// Returns the position, or nullopt if the text does not consist of 32 hexadecimal digits.
[[nodiscard]] std::optional<PositionData> ParsePosition(const std::string& digits);

[[nodiscard]] std::string FormatPosition(const PositionData& position);

}  // namespace mqam
