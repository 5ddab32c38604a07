// SPDX-License-Identifier: Apache-2.0

// Returns uncommitted messages to the queue.
#pragma once

#include "mqamod.h"

namespace mqamod {

/// Backs out the unit of work with MQBACK. Returns pmrcOK, or pmrcFailure with an error text when MQBACK
/// ended with a warning or failed.
[[nodiscard]] ReturnCode BackOutMQ();

}  // namespace mqamod
