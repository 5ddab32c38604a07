#include "queue/get_message.h"

#include <cstring>
#include <ctime>

#include "diag/trace.h"
#include "mqi/session.h"
#include "params/host_attributes.h"
#include "params/settings.h"

namespace {

constexpr MQLONG kUnlimitedSlice = 15000;  // milliseconds: unlimited waiting is done in slices of this length

struct GetState {
    MQMD descriptor;  // IBM's defaults when loaded; MQGET updates it
    MQGMO options;    // IBM's defaults when loaded
    GetOutcome outcome;
    bool TimedOutFlag;  // the time-out has fired; never cleared
};
GetState state = {MqmdDefault(), MqgmoDefault(), {}, false};

// The interval mixes units, milliseconds divided by the seconds of the time-out; hosts are tuned to the
// slices that come of it. A time-out of 0 seconds divides nothing.
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
    // MQGET left the last message's identifiers here; it would wait for another message with the same ones.
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

GetEnd GetMessage(void* buffer) {
    const std::time_t ReadStartTime = std::time(nullptr);
    GetEnd end = GetEnd::Outcome;
    while (true) {
        const std::time_t elapsed = std::time(nullptr) - ReadStartTime;
        if (IsOver(elapsed)) {
            end = GetEnd::ReadWaitOver;
            break;
        }
        if (TimeoutEnabled() && elapsed > TimeoutSeconds()) {
            state.TimedOutFlag = true;
            break;
        }
        PrepareGet();
        if (GenEofFlag()) {
            TraceLine(TraceLevel::JobEvents, Severity::Info, "PIDMMain",
                      "returning EOF as requested via attribute 'GEN_EOF'");
            end = GetEnd::EofRequested;
            break;
        }
        GetOutcome& outcome = state.outcome;
        MQGET(ConnectionHandle(), QueueHandle(), &state.descriptor, &state.options, Setting().BKSZ, buffer,
              &outcome.dataLength, &outcome.compCode, &outcome.reason);
        if (outcome.compCode == MQCC_OK || outcome.reason != MQRC_NO_MSG_AVAILABLE) break;
    }
    return TimeoutEnabled() && state.TimedOutFlag ? GetEnd::TimedOut : end;
}

const GetOutcome& LastGet() {
    return state.outcome;
}

MQLONG LastBackoutCount() {
    return state.descriptor.BackoutCount;
}
