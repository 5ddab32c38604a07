// Restart: going back to a checkpoint and replaying the records that the checkpoint file holds, before
// reading from the queue again.
#pragma once

#include <cstdint>

#include "diag/return_codes.h"

/// The SetPos request: positions the checkpoint file at the checkpoint of the position and begins the replay.
/// The first record replayed is the last one that the host had received before the checkpoint.
///   position  in  length bytes, a PositionData when length is right
/// Returns pmrcOK; or pmrcFailure, with an error text, without checkpointing, with a length other than 16,
/// when the
///   file is empty, cannot be positioned or has moved past the checkpoint; or what a pending checkpoint
///   returned.
/// Counters and syncpoint choice have changed already when it fails behind the length test.
[[nodiscard]] ReturnCode SetPosition(const void* position, std::uint32_t length);

/// Rewinds the checkpoint file and takes CkPtSeq from its header; the stream is left behind the header.
/// Returns pmrcOK; or pmrcFailure, with an error text, when there is no file, or none that holds a header.
[[nodiscard]] ReturnCode RepositionFile();

/// Reads the next record of the replay; CkPtOffset becomes its position.
///   buffer  out  at least BKSZ bytes, receives the record
///   length  out  its bytes
/// Returns pmrcOK, also at the end of the file, where nothing is read and ReplayFromCkPt is cleared;
///   pmrcFailure, with an error text, when the file cannot be read or holds a length above BKSZ;
///   pmrcNotSupported without a checkpoint file
[[nodiscard]] ReturnCode ReadFromChkPt(void* buffer, std::uint32_t* length);

/// Whether records come from the checkpoint file. Set by SetPosition, cleared at the end of the file and by
/// Open.
[[nodiscard]] bool ReplayFromCkPt();
void ClearReplayFromCkPt();
