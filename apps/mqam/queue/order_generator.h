// Made-up messages for trials: orders as a shop would send them, and binary ones. The same seed makes the
// same messages on every system.
#pragma once

#include <cstdint>
#include <string>

namespace mqam {

struct GeneratorSettings {
    std::uint64_t seed = 1;
    bool hasSizes = false;  ///< else an order is as long as its text
    std::uint64_t bytesMin = 1;
    std::uint64_t bytesMax = 1;
    unsigned binaryPercent = 0;  ///< of the messages are random bytes, NULs and line ends among them
};

/// Makes message number `index`, from 0. With sizes, the first message has the smallest and the second the
/// greatest; of the others nineteen in twenty are as long as orders are and one is of any size of the range,
/// small ones more often.
[[nodiscard]] std::string MakeMessage(const GeneratorSettings& settings, std::uint64_t index);

}  // namespace mqam
