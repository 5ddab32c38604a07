// SPDX-License-Identifier: Apache-2.0
#include "entry/module_state.h"

namespace mqamod {

namespace {

struct State {
    // Set by Init, even if it fails; cleared by Shut.
    Phase ModuleState;
    // Set by an Open that opens the queue; cleared by Init, Write, Read, GetPos, a successful SetPos and
    // Close, but not by Shut. Never read.
    bool PositionUnchangedFlag;
    // The first call has shown the identification. Never cleared.
    bool identified;
};
State state;

}  // namespace

Phase ModuleState() {
    return state.ModuleState;
}

void SetModuleState(Phase phase) {
    state.ModuleState = phase;
}

void SetPositionUnchangedFlag(bool unchanged) {
    state.PositionUnchangedFlag = unchanged;
}

bool TakeFirstCall() {
    const bool first = !state.identified;
    state.identified = true;
    return first;
}

}  // namespace mqamod
