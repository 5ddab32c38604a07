// SPDX-License-Identifier: Apache-2.0

// The replay: the records of the checkpoint file, read back after a restart before the queue is read again.
#pragma once

#include <cstdint>

#include "mqamod.h"

namespace mqamod {

/// How an attempt to read a record of the replay ended.
enum class ReplayRead {
    kRecord,        ///< a record was returned
    kEndOfReplay,   ///< the file has no more records, and the replay has ended: the queue comes next
    kFailed,        ///< see the error text
    kNotSupported,  ///< checkpoints are not in a file; no error text
};

/// Returns whether records come from the checkpoint file. Set by BeginReplay. Cleared at the end of the file,
/// by Open and, with checkpoints by MQ, by each Read that returns a record.
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
/// Fails when no file is open, when the file cannot be read, when it ends within a record and when a record
/// length is above BKSZ. The stream is then after the bytes that were read.
[[nodiscard]] ReplayRead ReadFromChkPt(void* buffer, std::uint32_t& length);

}  // namespace mqamod
