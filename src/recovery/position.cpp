// SPDX-License-Identifier: Apache-2.0
#include "recovery/position.h"

namespace mqamod {

namespace {

// Adds two numbers and wraps around at 32 bits. Positions come back from the host and sequence numbers from
// the file, so both may have any 32-bit value.
std::int32_t WrapAround(std::int32_t number, std::uint32_t step) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(number) + step);
}

struct Position {
    // This is the block that GetPos hands out. CkPtSeq is its first field: it is 0 after each Open, each
    // position handed out adds 1, SetPos sets it, and neither Close nor Shut clears it. Each GetPos sets the
    // other fields; nothing clears them.
    PositionData handedOut;
    // This is 0 after each Open, and SetPos sets it. Neither Close, which reports it, nor Shut clears it.
    std::int32_t MsgCount;
    // This is 0 when the module is loaded. Nothing clears it.
    std::int64_t CkPtOffset;
};
Position position;

}  // namespace

void ResetPosition() {
    position.handedOut.CkPtSeq = 0;
    position.MsgCount = 0;
}

std::int32_t CkPtSeq() {
    return position.handedOut.CkPtSeq;
}

void SetCkPtSeq(std::int32_t sequence) {
    position.handedOut.CkPtSeq = sequence;
}

std::int32_t MsgCount() {
    return position.MsgCount;
}

void CountMessage() {
    position.MsgCount = WrapAround(position.MsgCount, 1);
}

void ResumeMsgCount(std::int32_t positionCount) {
    position.MsgCount = positionCount == 0 ? 0 : WrapAround(positionCount, ~0U);
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

}  // namespace mqamod
