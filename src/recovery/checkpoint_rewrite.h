// SPDX-License-Identifier: Apache-2.0

// Rewrites the checkpoint file for a new checkpoint.
#pragma once

#include "mqamod.h"

namespace mqamod {

/// Truncates the checkpoint file and writes the new sequence number and the last record returned. During a
/// replay the records not yet replayed follow; they are copied through the temporary checkpoint file, and
/// afterwards the stream is just before the first of them. Returns pmrcOK; outside a replay the new contents
/// may still be in the buffer of the stream (see DoGetPos). Returns pmrcFailure, with an error text, if no
/// file is open, if memory for a record runs out, if a call on either file fails, or if one of the records to
/// copy is incomplete or longer than BKSZ. The checkpoint file may then be truncated or closed. In a replay
/// the temporary file is kept, since it may be the only file that contains the records.
[[nodiscard]] ReturnCode ResetCkptFile();

}  // namespace mqamod
