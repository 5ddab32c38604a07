// SPDX-License-Identifier: Apache-2.0

// Releases what Open acquired.
#pragma once

#include <cstdint>

#include "mqamod.h"

namespace mqamod {

/// Closes the log, the queue, the connection and the checkpoint file, in this order, and keeps or deletes the
/// two files depending on PreserveRestartInfo. What is not open is skipped, but a file that an earlier
/// CloseAll kept is deleted if PreserveRestartInfo has been cleared since. A handle is cleared even if MQ
/// reports a failure.
///   mode  in  MQAMOD_STOP_AT_FIRST_FAILURE, or any other value to continue through every step
/// Returns pmrcOK. With any mode but MQAMOD_STOP_AT_FIRST_FAILURE it does so even if a step failed, and the
/// error text describes the failure. With MQAMOD_STOP_AT_FIRST_FAILURE it returns pmrcFailure, with an error
/// text, when MQCLOSE or MQDISC warned or failed; the steps after that one are then not taken.
[[nodiscard]] ReturnCode CloseAll(std::uint16_t mode);

}  // namespace mqamod
