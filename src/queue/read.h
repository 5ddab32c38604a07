// Reading one record: from the checkpoint file while a restart is replayed, else from the queue.
#pragma once

#include <cstdint>

#include "diag/return_codes.h"

/// Returns the next record.
///   buffer  out  at least BKSZ bytes, receives the record
///   length  out  its bytes, 0 when there is none
/// Returns pmrcOK with a record; pmrcEOF when the queue stayed empty, an empty message came, the host asked
/// for the end,
///   MQ's syncpoint limit was reached or, by TDM, a duplicate came; pmrcTimeout when the host's time-out has
///   expired; pmrcFailure, with an error text, when no queue is open or a message cannot be got, saved,
///   committed or logged; or what a pending checkpoint or the replay returned.
[[nodiscard]] ReturnCode ReadRecord(void* buffer, std::uint32_t* length);

/// Whether each record returned is kept in the last-record buffer (KeepPreviousFlag). Set by Open.
void KeepPrevious(bool keep);
