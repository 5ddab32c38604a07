// SPDX-License-Identifier: Apache-2.0

// Reads one record: from the checkpoint file while a restart is replayed, otherwise from the queue.
#pragma once

#include <cstdint>

#include "mqamod.h"

namespace mqamod {

/// Returns the next record.
///   buffer  out  at least BKSZ bytes, receives the record; undefined if none is returned
///   length  out  bytes of the record, 0 if none is returned
/// Returns pmrcOK with a record; a record from the checkpoint file may have no bytes.
///   pmrcEOF      no message came, the message is empty, MQGET failed without data, the host asked for the
///                end, MQ's limit for a unit of work is reached or, with TDM, the message is a duplicate
///   pmrcTimeout  the host's time-out has expired, now or earlier; a message received in this Read is dropped
///   pmrcFailure  with an error text: no queue is open, or a message cannot be received, saved, committed or
///                logged. The message is backed out only if it could not be saved
///   or what a pending checkpoint or the replay returned
[[nodiscard]] ReturnCode ReadRecord(void* buffer, std::uint32_t& length);

/// Sets KeepPreviousFlag: whether each record returned is kept in the last-record buffer. Each Open that
/// opens the queue calls it.
void SetKeepPrevious(bool keep);

}  // namespace mqamod
