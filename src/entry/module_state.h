// SPDX-License-Identifier: Apache-2.0

// Keeps the phase of the module as the dispatcher sees it.
#pragma once

namespace mqamod {

/// Init and Shut determine the phase. Its values are the indexes of the words with which a request is
/// refused.
enum class Phase {
    kLoaded = 0,       ///< loaded, or shut: waits for an Init
    kInitialized = 1,  ///< an Init with the right version was made, even if it failed
};

[[nodiscard]] Phase ModuleState();
void SetModuleState(Phase phase);

/// Sets PositionUnchangedFlag, which means that nothing has been asked of the queue since Open. An Open that
/// opens the queue sets it; Init, Write, Read, GetPos, a successful SetPos and Close clear it. No request
/// reads the flag or acts on it. It is kept as a part of the documented state.
void SetPositionUnchangedFlag(bool unchanged);

/// Returns true on the first call in the process and false on every later one.
[[nodiscard]] bool TakeFirstCall();

}  // namespace mqamod
