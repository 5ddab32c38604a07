// Rewriting the checkpoint file for a new checkpoint.
#pragma once

#include "mqamod.h"

/// Starts the checkpoint file again: the new sequence number, then the last record returned. While a restart
/// is being replayed the records not yet replayed follow, copied through the temporary checkpoint file, and
/// the stream is left in front of the first of them.
/// Returns pmrcOK, which does not say that the new file has reached the disk (NoteLostBytes); or pmrcFailure,
/// with an error text, when no file is open, without memory for a record, and when a call on either file
/// failed or one of the records to copy is torn or longer than BKSZ. The checkpoint file may then be
/// truncated, or closed; in a replay the temporary file is kept, which may be the only one that holds the
/// records.
[[nodiscard]] ReturnCode ResetCkptFile();
