#include "recovery/position.h"

namespace {

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
    position.MsgCount += 1;
}

std::int64_t CkPtOffset() {
    return position.CkPtOffset;
}

void SetCkPtOffset(std::int64_t offset) {
    position.CkPtOffset = offset;
}

const PositionData* NextPosition() {
    position.handedOut.CkPtSeq += 1;
    position.handedOut.CkPtMsgCount = position.MsgCount;
    position.handedOut.CkPtOffset = position.CkPtOffset;
    return &position.handedOut;
}
