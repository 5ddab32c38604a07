// SPDX-License-Identifier: Apache-2.0

// Allocates a structure or buffer of an MQI caller. It is on the heap, filled with zeros, and exactly as long
// as its version says, so that the sanitizer sees every access beyond it.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <string>
#include <string_view>

#include "fuzz/harness.h"
#include "mqi/mqi.h"

class MqiBlock {
  public:
    explicit MqiBlock(std::size_t bytes) : memory_(static_cast<char*>(std::calloc(bytes, 1))), bytes_(bytes) {
        Require(memory_ != nullptr, "there is memory for a block");
    }
    /// Allocates a structure; `kind` chooses among the lengths of its versions 1, 2, ...
    MqiBlock(std::string_view strucId, std::initializer_list<std::size_t> lengths, unsigned kind)
        : MqiBlock(*(lengths.begin() + kind % lengths.size())) {
        std::copy(strucId.begin(), strucId.end(), memory_);
        SetField(strucId.size(), static_cast<MQLONG>(kind % lengths.size() + 1));
    }
    ~MqiBlock() { std::free(memory_); }
    MqiBlock(MqiBlock&& other) noexcept : memory_(other.memory_), bytes_(other.bytes_) {
        other.memory_ = nullptr;
    }
    MqiBlock(const MqiBlock&) = delete;
    MqiBlock& operator=(const MqiBlock&) = delete;
    MqiBlock& operator=(MqiBlock&&) = delete;

    template <typename T>
    [[nodiscard]] T* As() const {
        return static_cast<T*>(static_cast<void*>(memory_));
    }
    [[nodiscard]] std::size_t Size() const { return bytes_; }

    template <typename T>
    void SetField(std::size_t offset, T value) {
        SetSome(offset, {reinterpret_cast<const char*>(&value), sizeof value});
    }
    /// Sets a character field, padded with blanks.
    void SetText(std::size_t offset, std::size_t size, std::string text) {
        text.resize(size, ' ');
        SetSome(offset, text);
    }
    /// Fills the block from the offset to its end.
    void SetBytes(std::size_t offset, const char* bytes) { SetSome(offset, {bytes, bytes_ - offset}); }
    /// Copies as many of the bytes as fit between the offset and the end of the block.
    void SetSome(std::size_t offset, std::string_view bytes) {
        if (offset >= bytes_) return;
        std::memcpy(memory_ + offset, bytes.data(), std::min(bytes.size(), bytes_ - offset));
    }

  private:
    char* memory_;
    std::size_t bytes_;
};
