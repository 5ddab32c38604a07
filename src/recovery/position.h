// Where the load stands: the sequence number of the checkpoint, the count of records and the place in the
// checkpoint file.
#pragma once

#include <cstdint>

#include "mqamod.h"

/// The sequence number of the last checkpoint: 0 from Open, one more with each position handed out, the
/// file's own after a SetPos that came as far as its header, also one that failed then.
[[nodiscard]] std::int32_t CkPtSeq();
void SetCkPtSeq(std::int32_t sequence);

/// Records returned since Open; after SetPos, those that its position counts less the one that comes again,
/// and those returned since. Close leaves it. It wraps around where 32 bits end, as the sequence number does:
/// a host may hand in any position.
[[nodiscard]] std::int32_t MsgCount();
void SetMsgCount(std::int32_t count);
void CountMessage();
void UncountMessage();

/// The stream position of the last record written to the checkpoint file or read back from it, of the end of
/// the file when a replay has ended, or the one that SetPos moved the stream to. A rewrite leaves it. 0 when
/// loaded; it survives Open, Close and Shut.
[[nodiscard]] std::int64_t CkPtOffset();
void SetCkPtOffset(std::int64_t offset);

/// Moves on to the next sequence number and returns the position as it is now. The block is the module's own;
/// its sequence number changes with CkPtSeq.
[[nodiscard]] const PositionData* NextPosition();
