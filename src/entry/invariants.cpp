// SPDX-License-Identifier: Apache-2.0
#include "entry/invariants.h"

#ifdef MQAMOD_CHECK_INVARIANTS

#include <cstdio>
#include <cstdlib>

#include "diag/error_text.h"
#include "entry/module_state.h"
#include "mqi/session.h"
#include "params/record_buffer.h"
#include "params/settings.h"
#include "recovery/checkpoint.h"
#include "recovery/checkpoint_file.h"
#include "recovery/replay.h"

namespace mqamod {
namespace {

void Require(int number, bool holds) {
    if (holds) return;
    (void)std::fprintf(stderr, "mqamod: invariant %d does not hold\n", number);
    std::abort();
}

}  // namespace

void CheckInvariants() {
    const bool initialized = ModuleState() == Phase::kInitialized;
    const bool queueOpen = QueueHandle() != MQHO_NONE;
    const bool checkpointing = Setting().CKFILE || Setting().MqCheckpointMode;
    Require(1, (ErrorText() != nullptr) == (ErrorTextLength() != 0));
    Require(2, ModuleState() == Phase::kLoaded || initialized);
    Require(3, initialized || (!queueOpen && !RecordBufferExists()));
    Require(4, !CkPtPending() || checkpointing);
    Require(5, !queueOpen || !ReplayFromCkPt() || checkpointing);
    Require(6, !queueOpen || CkPtFileStream() == nullptr || RecordBufferExists());
}

}  // namespace mqamod

#else

void mqamod::CheckInvariants() {}

#endif
