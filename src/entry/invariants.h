// SPDX-License-Identifier: Apache-2.0

// Checks the invariants of the module at the beginning and the end of each request, in sanitizer builds.
//
//   1  There is an error text exactly when its length is not 0.
//   2  ModuleState is one of the two phases.
//   3  A module that is not initialized has no open queue and no last-record buffer.
//   4  A checkpoint is pending only if the Init in effect asked for checkpointing.
//   5  With a queue open, records are replayed only if the Init in effect asked for checkpointing.
//   6  With a queue open, an open checkpoint file has a last-record buffer.
#pragma once

namespace mqamod {

/// Ends the process if an invariant does not hold, after a line on standard error that gives its number. Does
/// nothing in other builds.
void CheckInvariants();

}  // namespace mqamod
