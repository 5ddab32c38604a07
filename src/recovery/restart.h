// Restart: going back to a checkpoint and replaying the records that the checkpoint file holds, before
// reading from the queue again.
#pragma once

#include <cstdint>

#include "mqamod.h"

/// The SetPos request: positions the checkpoint file at the checkpoint of the position and begins the replay.
/// The first record replayed is the last one that the host had received before the checkpoint.
///   position  in  length bytes, a PositionData when length is right
/// Returns pmrcOK; or pmrcFailure, with an error text, without checkpointing, with a length other than 16,
/// when the file is not open, holds no whole header, cannot be positioned or has moved past the checkpoint,
/// or, with checkpoints by MQ, when MQBACK did not end OK; or what a pending checkpoint returned.
/// When it fails behind the length test MsgCount, the syncpoint choice, CkPtSeq, CkPtOffset and the place in
/// the file are as far changed as it came; a replay goes on, and a checkpoint stays pending unless it was the
/// one that failed.
[[nodiscard]] ReturnCode SetPosition(const void* position, std::uint32_t length);

/// Rewinds the checkpoint file and takes CkPtSeq from its header; the stream is left behind the header.
/// Returns pmrcOK; or pmrcFailure, with an error text, when no file is open, and when its header is missing
/// or not whole: the bytes that came are then the first ones of CkPtSeq.
[[nodiscard]] ReturnCode RepositionFile();

/// Reads the next record of the replay; CkPtOffset becomes its position.
///   buffer  out  at least BKSZ bytes, receives the record
///   length  out  its bytes
/// Returns pmrcOK, also at the end of the file, where ReplayFromCkPt is cleared and nothing returned;
///   pmrcFailure, with an error text, when no file is open, when it cannot be read, ends within a record or
///     holds a length above BKSZ: the stream then stands behind what came, and buffer may hold part of it;
///   pmrcNotSupported when checkpoints are not in a file.
/// *length is unchanged but when a record is returned.
[[nodiscard]] ReturnCode ReadFromChkPt(void* buffer, std::uint32_t* length);

/// Whether records come from the checkpoint file. Set by SetPosition; cleared at the end of the file, by Open
/// and, with checkpoints by MQ, by each Read that returns a record.
[[nodiscard]] bool ReplayFromCkPt();
void ClearReplayFromCkPt();
