// SPDX-License-Identifier: Apache-2.0

// Generates messages for trials: orders as a shop would send them, and binary ones. The same seed generates
// the same messages on every system.
#pragma once

#include <cstdint>
#include <string>

namespace mqam {

struct GeneratorSettings {
    std::uint64_t seed = 1;
    bool hasSizes = false;  ///< if false, an order is as long as its text
    std::uint64_t bytesMin = 1;
    std::uint64_t bytesMax = 1;
    /// The percentage of messages made of random bytes, including NULs and line ends.
    unsigned binaryPercent = 0;
};

/// Generates message number `index`, counted from 0. With sizes, the first message has the smallest size and
/// the second the largest. Of the others, nineteen in twenty are as long as an order, as far as the range
/// allows; the twentieth has any size in the range, more often a small one.
[[nodiscard]] std::string MakeMessage(const GeneratorSettings& settings, std::uint64_t index);

}  // namespace mqam
