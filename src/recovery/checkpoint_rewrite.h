// Rewriting the checkpoint file for a new checkpoint.
#pragma once

#include "diag/return_codes.h"

/// Starts the checkpoint file again: the new sequence number, then the last record returned. While a restart
/// is being replayed the records not yet replayed follow, copied through the temporary checkpoint file, and
/// the stream is left in front of the first of them. Returns pmrcOK; or pmrcFailure, with an error text. The
/// checkpoint file may then be truncated; in a replay, the temporary file, which may be the only one that
/// holds the records, is kept.
[[nodiscard]] ReturnCode ResetCkptFile();
