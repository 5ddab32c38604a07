// SPDX-License-Identifier: Apache-2.0
#include "queue/get_message.h"

#include <cstring>
#include <ctime>

#include "diag/trace.h"
#include "mqi/session.h"
#include "params/host_attributes.h"
#include "params/settings.h"
#include "platform/assert.h"

namespace mqamod {

namespace {

constexpr MQLONG kUnlimitedSlice = 15000;  // milliseconds: unlimited waiting is done in slices of this length

struct GetState {
    // This contains IBM's defaults at first. MQGET updates it, and without CONVERT the next MQGET gets the
    // encoding and character set of the last message. Nothing resets it.
    MQMD descriptor;
    // This contains IBM's defaults at first. Each MQGET sets two fields; nothing resets them.
    MQGMO options;
    // These are the outputs of the last MQGET. Nothing clears them: a Read that makes no MQGET acts on them.
    GetOutcome outcome;
    // Says whether the host's time-out has expired, in this Read or an earlier one. Nothing clears this.
    bool TimedOutFlag;
};
GetState state = {MqmdDefault(), MqgmoDefault(), {}, false};

// Returns the milliseconds that the next MQGET waits. If the host has set a time-out, they are divided by its
// number of seconds. The mixed units are deliberate: hosts are tuned to these slices. A number of seconds
// that is not positive, or larger than the number of milliseconds, is ignored.
MQLONG WaitInterval() {
    const std::int32_t rwait = Setting().RWAIT;
    const MQLONG interval = rwait == kUnlimitedWait ? kUnlimitedSlice : rwait;
    if (!TimeoutEnabled()) return interval;
    const std::int32_t seconds = TimeoutSeconds();
    return seconds > 0 && seconds <= interval ? interval / seconds : interval;
}

void PrepareGet() {
    state.options.Options = TakeNextGetSync() + MQGMO_WAIT;
    state.options.WaitInterval = WaitInterval();
    // The last MQGET has put the identifiers of its message here. Unless they are cleared, the next one would
    // wait for a message with the same identifiers.
    std::memset(state.descriptor.MsgId, 0, sizeof state.descriptor.MsgId);
    std::memset(state.descriptor.CorrelId, 0, sizeof state.descriptor.CorrelId);
    const std::int32_t convert = Setting().CONVERT;
    if (convert == 0) return;
    state.options.Options += MQGMO_CONVERT;
    state.descriptor.Encoding = MQENC_NATIVE;
    state.descriptor.CodedCharSetId = convert > 1 ? convert : MQCCSI_Q_MGR;
}

bool IsOver(std::time_t elapsed) {
    return Setting().RWAIT != kUnlimitedWait && elapsed > Setting().RWAIT / 1000;
}

}  // namespace

GetResult GetMessage(void* buffer) {
    MQAMOD_ASSERT(QueueHandle() != MQHO_NONE);
    const std::time_t ReadStartTime = std::time(nullptr);
    GetEnd end = GetEnd::kMqOutcome;
    while (true) {
        const std::time_t elapsed = std::time(nullptr) - ReadStartTime;
        if (IsOver(elapsed)) {
            end = GetEnd::kReadWaitOver;
            break;
        }
        if (TimeoutEnabled() && elapsed > TimeoutSeconds()) {
            state.TimedOutFlag = true;
            break;
        }
        PrepareGet();
        if (GenEofFlag()) {
            TraceLine(TraceLevel::kJobEvents, Severity::kInfo, "PIDMMain",
                      "returning EOF as requested via attribute 'GEN_EOF'");
            end = GetEnd::kEofRequested;
            break;
        }
        GetOutcome& outcome = state.outcome;
        MQGET(ConnectionHandle(), QueueHandle(), &state.descriptor, &state.options, Setting().BKSZ, buffer,
              &outcome.dataLength, &outcome.compCode, &outcome.reason);
        if (outcome.compCode == MQCC_OK || outcome.reason != MQRC_NO_MSG_AVAILABLE) break;
    }
    if (TimeoutEnabled() && state.TimedOutFlag) end = GetEnd::kTimedOut;
    return {end, state.outcome, state.descriptor.BackoutCount};
}

}  // namespace mqamod
