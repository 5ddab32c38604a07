// Reading one record: from the checkpoint file while a restart is replayed, else from the queue.
#pragma once

#include <cstdint>

#include "mqamod.h"

/// Returns the next record.
///   buffer  out  at least BKSZ bytes, receives the record; without one its contents mean nothing
///   length  out  its bytes, 0 when there is none
/// Returns pmrcOK with a record, which may have no bytes when it comes from the checkpoint file;
///   pmrcEOF      the queue stayed empty, an empty message came, MQGET failed without data, the host asked
///                for it, MQ's syncpoint limit was reached or, by TDM, a duplicate came
///   pmrcTimeout  the host's time-out has expired, now or earlier: a message got all the same is dropped
///   pmrcFailure  with an error text: no queue is open, or a message cannot be got, saved, committed or
///                logged. It is backed out only when saving failed
///   or what a pending checkpoint or the replay returned
[[nodiscard]] ReturnCode ReadRecord(void* buffer, std::uint32_t* length);

/// Whether each record returned is kept in the last-record buffer (KeepPreviousFlag). Set or cleared by each
/// Open that opens the queue.
void KeepPrevious(bool keep);
