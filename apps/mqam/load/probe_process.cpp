// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/probe_process.h"

#include <string>

#include "mqam/load/worker_process.h"
#include "mqam/module/error_text.h"
#include "mqi/mqi.h"
#include "platform/process.h"

namespace mqam {

namespace {

constexpr int kProbeMs = 10000;
constexpr int kMessageTooLong = 161;

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
    if (probe == platform::kNoProcess || platform::WaitForProcess(probe, kProbeMs)) return;
    platform::KillProcess(probe);
    platform::WaitForProcess(probe);
}

}  // namespace mqam
