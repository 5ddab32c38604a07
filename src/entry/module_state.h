// SPDX-License-Identifier: Apache-2.0

// The phase of the module as the dispatcher sees it.
#pragma once

namespace mqamod {

/// What Init and Shut make of the module. The values index the words of a refusal.
enum class Phase {
    kLoaded = 0,       ///< loaded, or shut: waits for an Init
    kInitialized = 1,  ///< an Init has been made, whatever its outcome
};

[[nodiscard]] Phase ModuleState();
void SetModuleState(Phase phase);

/// Sets PositionUnchangedFlag: nothing has been asked of the queue since Open. Set by an Open that opens the
/// queue; cleared by Init, Write, Read, GetPos, a successful SetPos and Close. The flag is written but never
/// read: no request acts on it. It is kept as a part of the documented state.
void SetPositionUnchangedFlag(bool unchanged);

/// Returns true on the first call in the process and false on every later one.
[[nodiscard]] bool TakeFirstCall();

}  // namespace mqamod
