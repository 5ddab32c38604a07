// Releasing what Open acquired.
#pragma once

#include <cstdint>

#include "mqamod.h"

/// Closes the log, the queue, the connection and the checkpoint file, in this order, and keeps or deletes the
/// two files by PreserveRestartInfo. What is not open is passed over, but a file that an earlier CloseAll
/// kept is deleted once PreserveRestartInfo has been cleared. The handles are forgotten even when MQ fails to
/// release them.
///   mode  in  MQAMOD_STOP_AT_FIRST_FAILURE, or any other value to carry on through every step
/// Returns pmrcOK, with any other mode also when a step failed (the error text says so);
///   pmrcFailure, with MQAMOD_STOP_AT_FIRST_FAILURE and an error text, when MQCLOSE or MQDISC did not end OK: the
///   steps behind it have then not been taken
[[nodiscard]] ReturnCode CloseAll(std::uint16_t mode);
