// SPDX-License-Identifier: Apache-2.0

// Reads the fuzzer's bytes from the front. After their end every number is 0 and every text is empty.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

struct ByteReader {
    const std::uint8_t* at;
    std::size_t left;

    [[nodiscard]] bool Empty() const { return left == 0; }

    template <typename T>
    T Number() {
        T number{};
        const std::size_t bytes = std::min(left, sizeof number);
        if (bytes != 0) std::memcpy(&number, at, bytes);
        Skip(bytes);
        return number;
    }

    std::uint8_t Byte() { return Number<std::uint8_t>(); }

    std::string Bytes(std::size_t wanted) {
        const std::size_t bytes = std::min(left, wanted);
        std::string taken(reinterpret_cast<const char*>(at), bytes);
        Skip(bytes);
        return taken;
    }

    std::string Rest() { return Bytes(left); }

  private:
    void Skip(std::size_t bytes) {
        at += bytes;
        left -= bytes;
    }
};
