// SPDX-License-Identifier: Apache-2.0

// Connects to the queue manager and opens the queue.
#pragma once

#include <cstdint>

#include "mqamod.h"
#include "mqi/mqi.h"

namespace mqamod {

/// Opens the log, connects (as a client if a channel and a server were given), opens the queue with retries,
/// resets the read state and opens the checkpoint file.
///   openMode        in  1 for reading; anything else is refused
///   pathNameLength  in  a number above 0 only draws a warning
/// Returns pmrcOK, with an error text if MQOPEN warned;
///   pmrcFailure, with an error text, if a queue is already open, if openMode is not 1, or if the log, the
///   connection, the queue or the checkpoint file cannot be opened. A connection, once made, stays until
///   CloseAll. After a failed open of the checkpoint file the queue stays open as well (see QueueHandle).
[[nodiscard]] ReturnCode OpenQueue(std::int16_t openMode, std::uint16_t pathNameLength);

/// Returns the completion code of the most recent MQOPEN, or MQCC_OK before any.
[[nodiscard]] MQLONG OpenCompletionCode();

/// Returns the 48 characters of the queue's name in the object descriptor. A full name has no NUL.
[[nodiscard]] const MQCHAR* OpenedObjectName();

}  // namespace mqamod
