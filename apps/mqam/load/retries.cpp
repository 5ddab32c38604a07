// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/retries.h"

#include <algorithm>
#include <string>
#include <thread>

#include "mqam/base/progress.h"
#include "mqam/load/worker_process.h"
#include "platform/interrupts.h"

namespace mqam {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::seconds;

// Sleeps for `duration` unless the user interrupts; returns false if the user does.
bool Pause(seconds duration) {
    const auto end = Clock::now() + duration;
    while (Clock::now() < end && !platform::InterruptForwarded())
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    return !platform::InterruptForwarded();
}

}  // namespace

bool IsEarlierCompletionMarker(const Retries& retries) {
    return IsOver(retries.atBegin) && retries.seen && retries.seen->begun == retries.atBegin->begun;
}

Status ReadFirstState(Target& target, Retries& retries) {
    retries.lastRead = target.LoadState(retries.seen);
    retries.atBegin = retries.seen;
    return retries.lastRead;
}

void NoteProgress(Target& target, Retries& retries, Clock::duration duration) {
    std::optional<RestartState> state;
    retries.lastRead = target.LoadState(state);
    if (!retries.lastRead.IsOk() || !state) return;
    const bool progress = !retries.seen || state->records != retries.seen->records ||
                          state->phase != retries.seen->phase ||
                          (state->attempts != retries.seen->attempts && duration > kLongestPause);
    retries.seen = state;
    if (!progress) return;
    retries.pause = kFirstPause;
    retries.attempts = 0;
}

bool WaitForNextAttempt(std::uint64_t retryForSeconds, Retries& retries) {
    if (retryForSeconds == 0 || platform::InterruptForwarded()) return false;
    const Clock::time_point now = Clock::now();
    if (retries.attempts == 0) retries.failingSince = now;
    const Clock::time_point end = retries.failingSince + seconds(retryForSeconds);
    if (now >= end) {
        PrintMessage("mqam load: no new checkpoint for " + std::to_string(retryForSeconds) +
                     " s (--retry-for): giving up\n");
        return false;
    }
    const seconds pause = std::min(retries.pause, std::chrono::ceil<seconds>(end - now));
    ++retries.attempts;
    const bool isOfThisLoad = retries.seen && !IsEarlierCompletionMarker(retries);
    const std::string loaded =
        retries.lastRead.IsOk()
            ? "; " + FormatRecordsThatAre(isOfThisLoad ? retries.seen->records : 0) + " loaded"
            : "";
    PrintMessage("mqam load: attempt " + std::to_string(retries.attempts) + " in " +
                 std::to_string(pause.count()) + " s" + loaded + "\n");
    if (!Pause(pause)) return false;
    retries.pause = std::min(retries.pause * 2, kLongestPause);
    return true;
}

}  // namespace mqam
