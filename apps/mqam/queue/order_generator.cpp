// SPDX-License-Identifier: Apache-2.0
#include "mqam/queue/order_generator.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>

namespace mqam {

namespace {

// Generates random numbers with SplitMix64 by Steele, Lea and Flood, which is good, short, and gives the same
// numbers on every system.
struct Randomness {
    std::uint64_t state;

    std::uint64_t Next() {
        state += 0x9E3779B97F4A7C15U;
        std::uint64_t number = (state ^ state >> 30) * 0xBF58476D1CE4E5B9U;
        number = (number ^ number >> 27) * 0x94D049BB133111EBU;
        return number ^ number >> 31;
    }
    std::uint64_t Below(std::uint64_t limit) { return Next() % limit; }
};

constexpr const char* kGoods[] = {"coffee beans, dark roast, 1 kg",
                                  "paper, A4, 80 g, 500 sheets",
                                  "desk lamp \"Helios\"",
                                  "office chair, black",
                                  "network cable, 5 m",
                                  "toner cartridge, cyan",
                                  "mug, white, 0.3 l",
                                  "whiteboard marker, set of 4",
                                  "notebook, squared, A5",
                                  "USB-C hub, 7 ports"};
constexpr const char* kTowns[] = {"Hamburg", "Uppsala", "Galway",  "Porto",
                                  "Utrecht", "Graz",    "Toronto", "Osaka"};
constexpr const char* kStates[] = {"NEW", "CHANGED", "CONFIRMED", "CANCELLED"};

template <std::size_t Count>
const char* Pick(const char* const (&choices)[Count], Randomness& random) {
    return choices[random.Below(Count)];
}

void AppendOrderLine(std::string& order, std::uint64_t line, Randomness& random) {
    char text[200];
    std::snprintf(text, sizeof text, "|%llu;%06llu;%s;%llu;%llu.%02llu",
                  static_cast<unsigned long long>(line),
                  static_cast<unsigned long long>(random.Below(1000000)), Pick(kGoods, random),
                  static_cast<unsigned long long>(1 + random.Below(50)),
                  static_cast<unsigned long long>(1 + random.Below(400)),
                  static_cast<unsigned long long>(random.Below(100)));
    order += text;
}

std::string MakeOrder(std::uint64_t index, Randomness& random) {
    char head[300];
    std::snprintf(
        head, sizeof head, "ORDER|%010llu|%s|2026-%02llu-%02lluT%02llu:%02llu:%02llu|customer %05llu|%s",
        static_cast<unsigned long long>(index + 1), Pick(kStates, random),
        static_cast<unsigned long long>(1 + random.Below(12)),
        static_cast<unsigned long long>(1 + random.Below(28)),
        static_cast<unsigned long long>(random.Below(24)), static_cast<unsigned long long>(random.Below(60)),
        static_cast<unsigned long long>(random.Below(60)),
        static_cast<unsigned long long>(random.Below(100000)), Pick(kTowns, random));
    std::string order = head;
    const std::uint64_t lines = 1 + random.Below(12);
    for (std::uint64_t line = 1; line <= lines; ++line)
        AppendOrderLine(order, line, random);
    return order;
}

std::uint64_t ChooseSize(const GeneratorSettings& settings, std::uint64_t index, std::uint64_t natural,
                         Randomness& random) {
    if (!settings.hasSizes) return natural;
    if (index == 0) return settings.bytesMin;
    if (index == 1) return settings.bytesMax;
    if (random.Below(20) != 0) return std::clamp(natural, settings.bytesMin, settings.bytesMax);
    const double low = std::log(static_cast<double>(settings.bytesMin));
    const double high = std::log(static_cast<double>(settings.bytesMax));
    const double part = static_cast<double>(random.Below(1000000)) / 1e6;
    const auto size = static_cast<std::uint64_t>(std::exp(low + (high - low) * part));
    return std::clamp(size, settings.bytesMin, settings.bytesMax);
}

std::string MakeBytes(std::uint64_t size, Randomness& random) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < bytes.size(); i += 8) {
        const std::uint64_t number = random.Next();
        for (std::size_t k = 0; k < 8 && i + k < bytes.size(); ++k)
            bytes[i + k] = static_cast<char>(number >> (8 * k) & 0xFF);
    }
    // NUL and line end are the bytes that are hard for a reader, and random bytes may happen to lack them.
    if (bytes.size() >= 4) bytes.replace(bytes.size() / 2 - 1, 3, std::string("\0\n\0", 3));
    return bytes;
}

}  // namespace

std::string MakeMessage(const GeneratorSettings& settings, std::uint64_t index) {
    Randomness random{settings.seed * 0x2545F4914F6CDD1DU + index * 0x9E3779B97F4A7C15U};
    random.Next();
    std::string order = MakeOrder(index, random);
    const std::uint64_t size = ChooseSize(settings, index, order.size(), random);
    if (random.Below(100) < settings.binaryPercent) return MakeBytes(size, random);
    for (std::uint64_t line = 13; order.size() < size; ++line)
        AppendOrderLine(order, line, random);
    order.resize(size);
    return order;
}

}  // namespace mqam
