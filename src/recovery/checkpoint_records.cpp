// SPDX-License-Identifier: Apache-2.0
#include "recovery/checkpoint_records.h"

namespace mqamod {

namespace {

PieceRead ReadPiece(std::FILE* stream, void* bytes, std::size_t count) {
    const std::size_t got = std::fread(bytes, 1, count, stream);
    return {got == count, got < count && std::feof(stream) != 0, got};
}

}  // namespace

PieceRead ReadSequence(std::FILE* stream, std::int32_t& sequence) {
    static_assert(sizeof sequence == kSequenceBytes);
    return ReadPiece(stream, &sequence, kSequenceBytes);
}

PieceRead ReadRecordLength(std::FILE* stream, std::uint64_t& length) {
    static_assert(sizeof length == kRecordLengthBytes);
    return ReadPiece(stream, &length, kRecordLengthBytes);
}

PieceRead ReadRecordBody(std::FILE* stream, void* record, std::uint64_t length) {
    return ReadPiece(stream, record, static_cast<std::size_t>(length));
}

}  // namespace mqamod
