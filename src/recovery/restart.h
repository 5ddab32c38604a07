// SPDX-License-Identifier: Apache-2.0

// Returns to a checkpoint that the host has stored.
#pragma once

#include <cstdint>

#include "mqamod.h"

namespace mqamod {

/// Serves the SetPos request: positions the checkpoint file at the checkpoint of the position and begins the
/// replay. The first record replayed is the last one that the host had received before the checkpoint.
///   position  in  length bytes, a PositionData if length is right
/// Returns pmrcOK; or pmrcFailure, with an error text, without checkpointing, for a length other than 16,
/// when the file is not open, has no complete header, cannot be positioned or belongs to a later checkpoint,
/// or, with checkpoints by MQ, when MQBACK did not end OK; or what a pending checkpoint returned. When it
/// fails after the length test, MsgCount, the syncpoint choice, CkPtSeq, CkPtOffset and the place in the file
/// have changed as far as it got. A replay continues, and a pending checkpoint stays pending unless it was
/// the one that failed.
[[nodiscard]] ReturnCode SetPosition(const void* position, std::uint32_t length);

}  // namespace mqamod
