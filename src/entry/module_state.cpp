#include "entry/module_state.h"

namespace {

struct State {
    int ModuleState;
    bool PositionUnchangedFlag;
    bool identified;  // the first call has shown the identification; never cleared
};
State state;

}  // namespace

int ModuleState() {
    return state.ModuleState;
}

void SetModuleState(int moduleState) {
    state.ModuleState = moduleState;
}

void SetPositionUnchangedFlag(bool unchanged) {
    state.PositionUnchangedFlag = unchanged;
}

bool TakeFirstCall() {
    const bool first = !state.identified;
    state.identified = true;
    return first;
}
