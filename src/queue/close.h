// SPDX-License-Identifier: Apache-2.0

// Releases what Open acquired.
#pragma once

#include <cstdint>

#include "mqamod.h"

namespace mqamod {

/// Closes the log, the queue, the connection and the checkpoint file, in this order, and keeps or deletes the
/// two files depending on PreserveRestartInfo. What is not open is skipped, but a file that an earlier
/// CloseAll kept is deleted if PreserveRestartInfo has been cleared since. The handles are cleared even if MQ
/// reports a failure.
///   mode  in  MQAMOD_STOP_AT_FIRST_FAILURE, or any other value to continue through every step
/// Returns pmrcOK; with any other mode also if a step failed (the error text says so). With
/// MQAMOD_STOP_AT_FIRST_FAILURE returns pmrcFailure, with an error text, when MQCLOSE or MQDISC did not end
/// OK; the steps after it have then not been taken.
[[nodiscard]] ReturnCode CloseAll(std::uint16_t mode);

}  // namespace mqamod
