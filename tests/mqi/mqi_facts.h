// SPDX-License-Identifier: Apache-2.0

// Declares the facts that are compared between our MQI subset and IBM's headers. The list (mqi_facts.inc) is
// compiled once with each of them, in separate files, because both declare the same names.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

struct MqiFact {
    std::string name;   ///< for example "size of MQMD", "MQMD.MsgId", "MQCC_OK", "MQMD_DEFAULT" or "MQGET"
    std::string value;  ///< numbers as text, default values as hexadecimal bytes
};

std::vector<MqiFact> OurMqiFacts();
std::vector<MqiFact> IbmMqiFacts();

inline std::string FieldFact(std::size_t offset, std::size_t bytes) {
    return "offset " + std::to_string(offset) + ", " + std::to_string(bytes) + " bytes";
}

/// Returns the bytes of a structure as hexadecimal digits, in groups of eight bytes.
inline std::string BytesFact(const void* structure, std::size_t bytes) {
    const auto* byte = static_cast<const std::uint8_t*>(structure);
    std::string digits;
    for (std::size_t i = 0; i < bytes; ++i) {
        if (i % 8 == 0) digits += ' ';
        digits += "0123456789abcdef"[byte[i] >> 4];
        digits += "0123456789abcdef"[byte[i] & 15];
    }
    return digits;
}

template <typename T>
inline std::string ParameterFact() {
    if constexpr (std::is_pointer_v<T>) {
        return " pointer";
    } else {
        return " " + std::to_string(sizeof(T)) + "-byte integer";
    }
}

/// Describes the parameters of a verb as the calling convention sees them.
template <typename Result, typename... Parameters>
std::string SignatureFact(Result (*)(Parameters...)) {
    static_assert(std::is_void_v<Result>);
    return (ParameterFact<Parameters>() + ...);
}
