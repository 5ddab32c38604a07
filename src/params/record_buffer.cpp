// SPDX-License-Identifier: Apache-2.0
#include "params/record_buffer.h"

#include <cstdlib>
#include <cstring>

#include "platform/assert.h"

namespace mqamod {

namespace {

// Holds the last record. Only the routines of this file write it.
struct RecordBuffer {
    unsigned char* CkPtRecBuf;  // null when the module is loaded; replaced by Init, freed by Shut
    std::size_t capacity;       // the bytes of CkPtRecBuf: the length word and the largest record
};
RecordBuffer buffer;

// Returns whether the buffer exists and has room for a record of that length. Only assertions call this.
[[maybe_unused]] bool HasRoomFor(std::uint32_t length) {
    return buffer.CkPtRecBuf != nullptr && length + kRecordLengthBytes <= buffer.capacity;
}

unsigned char* Data() {
    return buffer.CkPtRecBuf + kRecordLengthBytes;
}

}  // namespace

bool AllocateRecordBuffer(std::size_t recordBytes) {
    FreeRecordBuffer();
    buffer.CkPtRecBuf = static_cast<unsigned char*>(std::calloc(recordBytes + kRecordLengthBytes, 1));
    if (buffer.CkPtRecBuf == nullptr) return false;
    buffer.capacity = recordBytes + kRecordLengthBytes;
    return true;
}

void FreeRecordBuffer() {
    std::free(buffer.CkPtRecBuf);
    buffer = {};
}

bool RecordBufferExists() {
    return buffer.CkPtRecBuf != nullptr;
}

void ClearRecordBuffer() {
    MQAMOD_ASSERT(RecordBufferExists());
    std::memset(buffer.CkPtRecBuf, 0, buffer.capacity);
}

void KeepRecord(const void* record, std::uint32_t length) {
    MQAMOD_ASSERT(HasRoomFor(length));
    const std::uint64_t lengthWord = length;
    std::memcpy(buffer.CkPtRecBuf, &lengthWord, sizeof lengthWord);
    std::memcpy(Data(), record, length);
}

std::uint64_t KeptRecordLength() {
    MQAMOD_ASSERT(RecordBufferExists());
    std::uint64_t lengthWord = 0;
    std::memcpy(&lengthWord, buffer.CkPtRecBuf, sizeof lengthWord);
    return lengthWord;
}

const void* KeptRecordImage() {
    MQAMOD_ASSERT(RecordBufferExists());
    return buffer.CkPtRecBuf;
}

bool EqualsKeptRecord(const void* record, std::uint32_t length) {
    MQAMOD_ASSERT(HasRoomFor(length));
    return std::memcmp(Data(), record, length) == 0;
}

}  // namespace mqamod
