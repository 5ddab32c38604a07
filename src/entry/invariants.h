// The module's invariants, checked at the entry and the exit of each request in sanitizer builds.
//
//   1  There is an error text exactly when its length is not 0.
//   2  ModuleState is 0 or 1.
//   3  A module that is not initialized has no open queue and no last-record buffer.
//   4  A position is pending only when the Init in effect asked for checkpointing.
//   5  With a queue open, records are replayed only when the Init in effect asked for checkpointing.
//   6  With a queue open, an open checkpoint file has a last-record buffer.
#pragma once

/// Ends the process with a line that numbers the invariant that does not hold; does nothing in other builds.
void CheckInvariants();
