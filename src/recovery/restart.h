// SPDX-License-Identifier: Apache-2.0

// Returns to a checkpoint that the host has stored.
#pragma once

#include <cstdint>

#include "mqamod.h"

namespace mqamod {

/// Serves the SetPos request: positions the checkpoint file at the checkpoint of the position and begins the
/// replay. The first record replayed is the last one that the host had received before the checkpoint.
///   position  in  length bytes, a PositionData if length is right
/// Returns pmrcOK, what a pending checkpoint returned, or pmrcFailure with an error text if: checkpointing is
/// off; length is not 16; the file is not open, has no complete header, cannot be positioned or belongs to a
/// later checkpoint; or, with checkpoints by MQ, MQBACK did not succeed. A failure after the length test
/// leaves MsgCount, the syncpoint choice, CkPtSeq, CkPtOffset and the place in the file partly changed. A
/// replay continues, and a pending checkpoint stays pending unless it was the one that failed.
[[nodiscard]] ReturnCode SetPosition(const void* position, std::uint32_t length);

}  // namespace mqamod
