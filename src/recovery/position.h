// SPDX-License-Identifier: Apache-2.0

// Tracks how far the load has come: the sequence number of the checkpoint, the count of records and the place
// in the checkpoint file.
#pragma once

#include <cstdint>

#include "mqamod.h"

namespace mqamod {

/// Sets CkPtSeq and MsgCount to 0 for a queue that was just opened. CkPtOffset keeps its value.
void ResetPosition();

/// Returns the sequence number of the last checkpoint: 0 after Open, one more after each position handed out.
/// A SetPos that reads the header of the checkpoint file sets it to the file's own, even if it then fails.
[[nodiscard]] std::int32_t CkPtSeq();
void SetCkPtSeq(std::int32_t sequence);

/// Returns the number of records returned since Open. After SetPos it continues from the count of the
/// position. Close does not change it. Like the sequence number it wraps around at 32 bits, since a host may
/// pass any position.
[[nodiscard]] std::int32_t MsgCount();

/// Counts a record that is being returned.
void CountMessage();

/// Continues from the count of a position. The last record before the checkpoint comes again, so it is not
/// counted yet.
void ResumeMsgCount(std::int32_t positionCount);

/// Returns the stream position of the last record written to the checkpoint file or read back from it. At the
/// end of a replay it is the end of the file, and after SetPos the place that SetPos moved to. A rewrite of
/// the file does not change it. It is 0 when the module is loaded and survives Open, Close and Shut.
[[nodiscard]] std::int64_t CkPtOffset();
void SetCkPtOffset(std::int64_t offset);

/// Advances to the next sequence number and returns the position as it is now. The module owns the block, and
/// its sequence number changes with CkPtSeq.
[[nodiscard]] const PositionData* NextPosition();

}  // namespace mqamod
