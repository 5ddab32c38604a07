// SPDX-License-Identifier: Apache-2.0
#include "tests/failures/load_host.h"

#include <gtest/gtest.h>

#include <utility>

#include "tests/failures/checkpoint_look.h"

namespace {

constexpr std::int64_t kClockStart = 1700000000;
constexpr std::int64_t kReadWaitMs = 1000;
constexpr std::size_t kTooManyRecords = 100;

}  // namespace

LoadHost::LoadHost(QueueManagerDouble& queueManager, LoadPlan plan)
    : queueManager_(queueManager), plan_(std::move(plan)) {}

std::vector<std::string> LoadHost::Stored() const {
    const std::size_t count = done_ ? target_.size() : restartFile_ ? restartFile_->records : 0;
    return {target_.begin(), target_.begin() + static_cast<std::ptrdiff_t>(count)};
}

// Returns whether the request returned 0.
bool LoadHost::Send(const char* request, const Outcome& outcome) {
    lastReturn_ = outcome.returnCode;
    if (afterRequest) afterRequest(request, outcome);
    return outcome.returnCode == pmrcOK;
}

// T1: the target is cut back to the records that the position counts.
void LoadHost::RunAttempt() {
    ++attempts_;
    target_ = Stored();
    const bool restart = PrepareCheckpoint(restartFile_.has_value());
    returned_ = false;
    repeatExpected_ = false;
    sincePosition_ = 0;
    const std::optional<std::size_t> cleanBefore = std::exchange(cleanCount_, std::nullopt);
    {
        ModuleProcess process;
        process_ = &process;
        process.Clock().now = kClockStart + waitedMs_ / 1000;
        queueManager_.onWait = [&](int milliseconds) {
            waitedMs_ += milliseconds;
            process.Clock().now = kClockStart + waitedMs_ / 1000;
        };
        if (atStart) atStart(process);
        // H9, H10, H11, H17: whatever fails ends the process, without Close.
        if (Start(restart) && Load() && Close() && cleanCount_) {
            done_ = cleanBefore == cleanCount_ && lastReadMs_ >= kReadWaitMs;
            if (done_) DeleteFiles();
        }
        if (atEnd) atEnd(process);
        process_ = nullptr;
    }
    queueManager_.EndProcess();
}

bool LoadHost::Start(bool restart) {
    const std::string keywords =
        std::string("-QMGR QM1 -QNM Q1 -MQEX -TDM YES -BKSZ 1024 -RWAIT 1 -CKFILE ") + kCheckpointFile + " " +
        plan_.keywords;
    if (!Send("Init", process_->Init(keywords))) return false;
    if (!Send("Preserve", process_->PutAttribute("PRESERVE_RESTART_INFO", "YES"))) return false;
    if (!Send("Open", process_->Open())) return false;
    if (!restart) return TakePosition();  // H1
    if (!Send("SetPos", process_->SetPos(restartFile_->position))) return false;
    repeatExpected_ = restartFile_->repeatComes;
    do {
        if (!ReadOne()) return false;
    } while (sincePosition_ == 0);
    return TakePosition();  // H5
}

// H2: the position is stored only after the target is durable.
bool LoadHost::TakePosition() {
    const PositionOutcome outcome = process_->GetPos();
    if (!Send("GetPos", outcome)) return false;
    if (outcome.given) restartFile_ = RestartFile{outcome.position, target_.size(), returned_};
    sincePosition_ = 0;
    return true;
}

// Returns whether the load may continue. It may not after an end of input, a failure or too many records.
bool LoadHost::ReadOne() {
    const std::int64_t before = waitedMs_;
    const ReadOutcome outcome = process_->Read();
    lastReadMs_ = waitedMs_ - before;
    if (!Send("Read", outcome)) return false;
    if (outcome.recordLength == 0) return true;  // H15
    if (repeatExpected_) {
        EXPECT_EQ(outcome.record, target_.empty() ? "" : target_.back()) << "the repeat was expected";
    } else {
        target_.push_back(outcome.record);
    }
    repeatExpected_ = false;
    returned_ = true;
    ++sincePosition_;
    EXPECT_LT(target_.size(), kTooManyRecords);
    return target_.size() < kTooManyRecords;
}

// Returns whether the attempt must be closed: at the end of input, or because the operator stops it.
bool LoadHost::Load() {
    while (true) {
        if (attempts_ == 1 && plan_.stopAfter != 0 &&
            target_.size() >= static_cast<std::size_t>(plan_.stopAfter)) {
            return !plan_.carryOut || sincePosition_ == 0 || (TakePosition() && TakePosition());
        }
        if (!ReadOne()) break;
        if (sincePosition_ >= plan_.checkpointEvery && !TakePosition()) return false;  // H4
    }
    if (lastReturn_ != pmrcEOF) return false;
    cleanCount_ = target_.size();  // H25: no position at the end of input
    return true;
}

bool LoadHost::Close() {
    const bool closed = Send("Close", process_->Close());
    if (!closed) cleanCount_.reset();  // H23
    return closed;
}

// H24: the load is stored as done before its files are deleted.
void LoadHost::DeleteFiles() {
    (void)Send("Preserve", process_->PutAttribute("PRESERVE_RESTART_INFO", "NO"));
    (void)Send("Close", process_->Close());
}
