// Connecting to the queue manager and opening the queue.
#pragma once

#include <cstdint>

#include "mqamod.h"
#include "mqi/mqi.h"

/// Connects, as a client when a channel and a server were given, opens the queue, retrying for a while,
/// resets the read state and opens the log and the checkpoint file.
///   openMode        in  1 for reading; anything else is refused
///   pathNameLength  in  above 0 only draws a warning
/// Returns pmrcOK, with an error text when MQOPEN warned;
///   pmrcFailure, with an error text, when a queue is open already, for another mode, and when log,
///   connection, queue or checkpoint file cannot be opened. A connection made stays until CloseAll; after a
///   failed open of the checkpoint file so does the queue (QueueHandle tells).
[[nodiscard]] ReturnCode OpenQueue(std::int16_t openMode, std::uint16_t pathNameLength);

/// The completion code of the most recent MQOPEN, MQCC_OK before any.
[[nodiscard]] MQLONG OpenCompletionCode();

/// The 48 characters of the object descriptor's name; not terminated when full.
[[nodiscard]] const MQCHAR* OpenedObjectName();
