// SPDX-License-Identifier: Apache-2.0

// Makes checkpoint files and positions byte by byte, without the module.
#pragma once

#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "mqamod.h"

inline std::string HeaderBytes(std::int32_t sequence) {
    std::string bytes(4, '\0');
    std::memcpy(bytes.data(), &sequence, 4);
    return bytes;
}

inline std::string LengthBytes(std::uint64_t length) {
    std::string bytes(8, '\0');
    std::memcpy(bytes.data(), &length, 8);
    return bytes;
}

inline std::string CheckpointBytes(std::int32_t sequence, const std::vector<std::string>& records) {
    std::string bytes = HeaderBytes(sequence);
    for (const std::string& record : records)
        bytes += LengthBytes(record.size()) + record;
    return bytes;
}

inline void WriteBytesTo(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

inline PositionData MakePosition(std::int32_t sequence, std::int32_t count, std::int64_t offset) {
    return {sequence, count, offset};
}
