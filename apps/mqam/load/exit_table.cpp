// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/exit_table.h"

#include <algorithm>
#include <iterator>

namespace mqam {

namespace {

using enum AttemptEnd;
using enum AfterAttempt;
using enum NextHint;

constexpr AttemptEndRow kAttemptEnds[] = {
    {kLoadDone, kExitDone, kExitDone, kEndCommand, kNone},
    {kNothingToDo, kExitNothingToDo, kExitNothingToDo, kEndCommand, kNone},
    {kInputEnded, kWorkerInputEnded, kExitEndedEarly, kContinue, kNone},
    // The command continues until this has happened too many times in a row.
    {kNoProgress, kWorkerNoProgress, kExitEndedEarly, kContinue, kNone},
    {kInterrupted, kExitInterrupted, kExitInterrupted, kEndCommand, kRunAgain},
    {kTimeout, kExitTimeout, kExitTimeout, kEndCommand, kRunAgain},
    {kStoppedImmediately, kExitStoppedImmediately, kExitStoppedImmediately, kEndCommand, kRunAgain},
    {kRefused, kWorkerRefused, kExitNotStarted, kEndCommand, kNone},
    {kModuleFailed, kExitRestart, kExitRestart, kRetry, kRunAgain},
    {kModuleRefuses, kExitModuleFailed, kExitModuleFailed, kEndCommand, kFixAndRunAgain},
    {kTargetFailed, kExitTargetFailed, kExitTargetFailed, kRetry, kFixAndRunAgain},
    {kModuleMissing, kExitModuleMissing, kExitModuleMissing, kEndCommand, kNone},
    {kWorkerKilled, kNoWorkerCode, kExitRestart, kRetry, kRunAgain},
    {kWorkerNotStarted, kNoWorkerCode, kExitRestart, kRetry, kRunAgain},
};

struct PlainLoadEndRow {
    PlainLoadEnd end;
    ExitCode exitCode;
    ExitCode exitCodeIfModuleFailed;
};

constexpr PlainLoadEndRow kPlainLoadEnds[] = {
    {PlainLoadEnd::kEndOfInput, kExitDone, kExitModuleFailed},
    {PlainLoadEnd::kEndedEarly, kExitEndedEarly, kExitModuleFailed},
    {PlainLoadEnd::kInterrupted, kExitInterrupted, kExitModuleFailed},
    {PlainLoadEnd::kTimeout, kExitTimeout, kExitModuleFailed},
    {PlainLoadEnd::kNotStarted, kExitNotStarted, kExitNotStarted},
    {PlainLoadEnd::kModuleFailed, kExitModuleFailed, kExitModuleFailed},
    {PlainLoadEnd::kTargetFailed, kExitTargetFailed, kExitTargetFailed},
};

}  // namespace

std::span<const AttemptEndRow> AllAttemptEnds() {
    return kAttemptEnds;
}

const AttemptEndRow& FindAttemptEnd(AttemptEnd end) {
    return kAttemptEnds[static_cast<std::size_t>(end)];
}

AttemptEnd AttemptEndOf(const WorkerEnd& worker) {
    if (!worker.started) return kWorkerNotStarted;
    if (worker.killed || worker.code == kNoWorkerCode) return kWorkerKilled;
    const auto* const row = std::ranges::find(kAttemptEnds, worker.code, &AttemptEndRow::workerCode);
    return row == std::end(kAttemptEnds) ? kWorkerKilled : row->end;
}

ExitCode ExitCodeOf(PlainLoadEnd end, bool moduleFailed) {
    const PlainLoadEndRow& row = kPlainLoadEnds[static_cast<std::size_t>(end)];
    return moduleFailed ? row.exitCodeIfModuleFailed : row.exitCode;
}

}  // namespace mqam
