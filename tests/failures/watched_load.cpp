// SPDX-License-Identifier: Apache-2.0
#include "tests/failures/watched_load.h"

#include "tests/failures/file_failure_cases.h"

WatchedLoad::WatchedLoad(bool tlf) : load(FileFailurePlan(tlf)), tlf_(tlf) {
    load.queueManager.Add(LostCommit());
    load.host.afterRequest = [this](const std::string& request, const Outcome& outcome) {
        CheckReturn(request, outcome);
    };
}

void WatchedLoad::Watch(ModuleProcess& process) {
    files_ = &process.Files();
    struck_.reset();
    requestBegins_ = 0;
}

void WatchedLoad::NoteStrike(FileCall call, const Fault& fault) {
    ++strikes_;
    if (fault.file != kTraceFile) lastFault_ = fault;
    // The first failure that the module notices decides the outcome. The module notices neither a failure of
    // the trace nor one in a flush of all streams.
    if (struck_ && struck_->call != FileCall::FlushAll && struck_->fault.file != kTraceFile) return;
    const auto& calls = load.queueManager.calls;
    const bool gotMessage = calls.size() > callsBefore_ && calls.back().gotMessage;
    const auto begin = files_->log.begin() + static_cast<std::ptrdiff_t>(requestBegins_);
    struck_ = FileStrike{call, {begin, files_->log.end()}, fault, tlf_, gotMessage};
}

void WatchedLoad::CheckReturn(const std::string& request, const Outcome& outcome) {
    if (struck_) {
        EXPECT_TRUE(ReturnsAsPromised(request, outcome, *struck_));
    } else {
        EXPECT_TRUE(IsUnaffected(request, outcome, lastFault_));
    }
    struck_.reset();
    requestBegins_ = files_->log.size();
    callsBefore_ = load.queueManager.calls.size();
}
