// SPDX-License-Identifier: Apache-2.0

// Replays the records of the checkpoint file after a restart, before the queue is read again.
#pragma once

#include <cstdint>

#include "mqamod.h"

namespace mqamod {

/// Says how an attempt to read a record of the replay ended.
enum class ReplayRead {
    kRecord,        ///< a record was returned
    kEndOfReplay,   ///< the file has no more records, and the replay has ended: the queue comes next
    kFailed,        ///< no record could be read; the error text says why
    kNotSupported,  ///< checkpoints are not in a file; no error text
};

/// Returns whether records come from the checkpoint file. BeginReplay sets this. The end of the file, Open
/// and, with checkpoints by MQ, each Read that returns a record clear it.
[[nodiscard]] bool ReplayFromCkPt();
void BeginReplay();
void EndReplay();

/// Rewinds the checkpoint file and takes CkPtSeq from its header. The stream is then just after the header.
/// Returns pmrcOK; or pmrcFailure, with an error text, when no file is open and when the header is missing or
/// incomplete. The bytes that were read are then the first bytes of CkPtSeq.
[[nodiscard]] ReturnCode RepositionFile();

/// Reads the next record of the replay. CkPtOffset becomes its position.
///   buffer  out  at least BKSZ bytes, receives the record; after a failure it may contain part of one
///   length  out  bytes of the record, unchanged if there is none
/// Fails if no file is open, if the file cannot be read or ends within a record, or if a record length is
/// above BKSZ. The stream is then after the bytes that were read.
[[nodiscard]] ReplayRead ReadFromChkPt(void* buffer, std::uint32_t& length);

}  // namespace mqamod
