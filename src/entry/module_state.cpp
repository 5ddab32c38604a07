// SPDX-License-Identifier: Apache-2.0
#include "entry/module_state.h"

namespace mqamod {

namespace {

struct State {
    // Init sets this, even if the parameters are refused; an Init with a wrong version does not. Shut clears
    // it.
    Phase ModuleState;
    // An Open that opens the queue sets this; Init, Write, Read, GetPos, a successful SetPos and Close clear
    // it, but not Shut. Nothing reads it.
    bool PositionUnchangedFlag;
    // Says whether the first call, which shows the identification, has been made. Nothing clears this.
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
