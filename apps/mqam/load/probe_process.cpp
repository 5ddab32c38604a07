// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/probe_process.h"

#include <chrono>
#include <string>

#include "mqam/load/worker_process.h"
#include "mqam/module/error_text.h"
#include "mqi/mqi.h"
#include "platform/interrupts.h"
#include "platform/process.h"

namespace mqam {

namespace {

constexpr std::chrono::seconds kProbeTime{10};
constexpr int kMessageTooLong = 161;

// Returns false if the probe is still running after its time, or the user asks the load to stop.
bool WaitForProbe(platform::ProcessHandle probe) {
    constexpr std::int64_t kStepMs = 50;
    const auto end = std::chrono::steady_clock::now() + kProbeTime;
    while (std::chrono::steady_clock::now() < end && !platform::InterruptRequested()) {
        if (platform::WaitForProcess(probe, kStepMs)) return true;
    }
    return false;
}

}  // namespace

ProbeKind ProbeKindOf(const ModuleFailure& failure) {
    ErrorText error;
    if (!ParseErrorText(failure.text, error)) return ProbeKind::kNone;
    // This is the last text that the module had, which is not about the failure.
    if (failure.request == "Open" && error.message == "Queue Manager open") return ProbeKind::kOpen;
    if (error.mqReason == MQRC_MODULE_NOT_FOUND || error.mqReason == MQRC_MODULE_ENTRY_NOT_FOUND) {
        return ProbeKind::kLibrary;
    }
    return error.messageNumber == kMessageTooLong ? ProbeKind::kLongMessage : ProbeKind::kNone;
}

void RunProbeProcess(ProbeKind kind) {
    if (kind == ProbeKind::kNone) return;
    platform::ProcessOptions options;
    options.endsWithParent = true;
    std::string error;
    const platform::ProcessHandle probe = platform::StartProcess(
        platform::RunningProgramPath(),
        ComposeWorkerArguments(KeptArguments(), {kProbeOption, std::to_string(static_cast<int>(kind))}),
        options, error);
    // Without a probe the failure is reported as the module reports it.
    if (probe == platform::kNoProcess || WaitForProbe(probe)) return;
    platform::KillProcess(probe);
    platform::WaitForProcess(probe);
}

}  // namespace mqam
