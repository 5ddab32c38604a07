#include "recovery/position.h"

namespace {

// Positions come back from the host and sequence numbers from the file: any 32 bits may stand there.
std::int32_t WrapAround(std::int32_t number, std::uint32_t step) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(number) + step);
}

struct Position {
    PositionData handedOut;  // its first field is CkPtSeq
    std::int32_t MsgCount;
    std::int64_t CkPtOffset;
};
Position position;

}  // namespace

std::int32_t CkPtSeq() {
    return position.handedOut.CkPtSeq;
}

void SetCkPtSeq(std::int32_t sequence) {
    position.handedOut.CkPtSeq = sequence;
}

std::int32_t MsgCount() {
    return position.MsgCount;
}

void SetMsgCount(std::int32_t count) {
    position.MsgCount = count;
}

void CountMessage() {
    position.MsgCount = WrapAround(position.MsgCount, 1);
}

void UncountMessage() {
    position.MsgCount = WrapAround(position.MsgCount, ~0U);
}

std::int64_t CkPtOffset() {
    return position.CkPtOffset;
}

void SetCkPtOffset(std::int64_t offset) {
    position.CkPtOffset = offset;
}

const PositionData* NextPosition() {
    position.handedOut.CkPtSeq = WrapAround(position.handedOut.CkPtSeq, 1);
    position.handedOut.CkPtMsgCount = position.MsgCount;
    position.handedOut.CkPtOffset = position.CkPtOffset;
    return &position.handedOut;
}
