// SPDX-License-Identifier: Apache-2.0

// Takes checkpoints. GetPos hands out a position immediately and marks a checkpoint as pending. The
// checkpoint is carried out one step later: by the next Read, by a SetPos to the same position, or by a
// repeated GetPos. From the first checkpoint on, every message is saved in the checkpoint file before it is
// committed.
#pragma once

#include "mqamod.h"

namespace mqamod {

/// Serves the GetPos request.
///   position  out  the module's own block, which the host must copy before its next request; null if no
///                  position is handed out
/// Returns pmrcOK with a position; or without one, when a checkpoint was pending and has now been carried out
/// (an error text warns of the redundant request);
///   pmrcFailure, with an error text, without checkpointing or when the pending checkpoint failed;
///   pmrcNotSupported when the pending checkpoint is not to a file
[[nodiscard]] ReturnCode GetPosition(const PositionData*& position);

/// Carries out the pending checkpoint: rewrites the checkpoint file and puts all further gets under
/// syncpoint. Whatever the outcome, no checkpoint is pending afterwards and one counts as taken, so later
/// messages are saved and committed. Returns pmrcOK; pmrcFailure, with an error text, when no file is open or
/// the rewrite failed; pmrcNotSupported when checkpoints are not in a file: the syncpoint choice is then
/// unchanged.
[[nodiscard]] ReturnCode DoGetPos();

/// Returns whether a position has been handed out whose checkpoint has not been carried out. DoGetPos, a
/// successful SetPos and Init clear this; Close, Open and Shut do not.
[[nodiscard]] bool CkPtPending();
void ClearCkPtPending();

/// Returns whether a checkpoint has been carried out, or has failed, since the module was loaded.
[[nodiscard]] bool CkPtTaken();

}  // namespace mqamod
