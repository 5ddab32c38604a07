// SPDX-License-Identifier: Apache-2.0
#include "tests/recovery/recovery_fixture.h"

#include <algorithm>
#include <cstring>

#include "platform/process.h"

namespace {

std::string Line(const std::string& function, const std::string& severity, const std::string& text) {
    return function + "(" + severity + "): " + text;
}

template <typename T>
std::string BytesOf(T value) {
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

}  // namespace

std::string Info(const std::string& function, const std::string& text) {
    return Line(function, "info", text);
}

std::string Warning(const std::string& function, const std::string& text) {
    return Line(function, "!warning!", text);
}

std::string Error(const std::string& function, const std::string& text) {
    return Line(function, "!ERROR!", text);
}

Lines Chain(std::initializer_list<Lines> parts) {
    Lines all;
    for (const Lines& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

Lines Traced(const std::string& option, ReturnCode returnCode, std::initializer_list<Lines> between) {
    return Chain({{Info("PIDMMain", "entered for option '" + option + "'")},
                  Chain(between),
                  {Info("PIDMMain", "Returning to Hostlink, rc=" + std::to_string(returnCode))}});
}

std::string ShortWrite(std::int64_t expected, std::int64_t wrote) {
    return "MQA0146: <!ERROR! expected " + std::to_string(expected) + " bytes, wrote " +
           std::to_string(wrote) + ">";
}

std::string ShortRead(std::int64_t expected, std::int64_t read) {
    return "MQA0147: <!ERROR! expected " + std::to_string(expected) + " bytes, read " + std::to_string(read) +
           ">";
}

std::string CkRecord(const std::string& bytes) {
    return BytesOf(static_cast<std::uint64_t>(bytes.size())) + bytes;
}

std::string CkRecords(const std::vector<std::string>& records) {
    std::string bytes;
    for (const std::string& record : records)
        bytes += CkRecord(record);
    return bytes;
}

std::string CkBytes(std::int32_t sequence, const std::vector<std::string>& records) {
    return BytesOf(sequence) + CkRecords(records);
}

testing::AssertionResult Gives(const ReadOutcome& outcome, const std::string& record) {
    if (outcome.returnCode != pmrcOK) {
        return testing::AssertionFailure()
               << "return code " << outcome.returnCode << ", error text: " << outcome.errorText;
    }
    if (outcome.record != record) {
        return testing::AssertionFailure()
               << "record of " << outcome.recordLength
               << " bytes: " << testing::PrintToString(outcome.record.substr(0, 60)) << "\n  expected "
               << record.size() << " bytes: " << testing::PrintToString(record.substr(0, 60));
    }
    return testing::AssertionSuccess();
}

testing::AssertionResult Is(const PositionData& position, std::int32_t sequence, std::int32_t count,
                            std::int64_t offset) {
    const PositionData expected{sequence, count, offset};
    if (std::memcmp(&position, &expected, sizeof expected) == 0) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "position {" << position.CkPtSeq << ", " << position.CkPtMsgCount << ", " << position.CkPtOffset
           << "}, expected {" << sequence << ", " << count << ", " << offset << "}";
}

void RecoveryFixture::SetUp() {
    ModuleFixture::SetUp();
    if (HasFatalFailure()) return;
    recordBufferBytes = 65536;
    // An empty message ends the input immediately; on an empty queue the module would wait.
    mq.emptyQueue = MqGetOutcome{};
    faults = std::make_unique<FaultPlan>(module);
}

void RecoveryFixture::TearDown() {
    faults.reset();
    ModuleFixture::TearDown();
}

void RecoveryFixture::StartNewProcess() {
    faults.reset();
    LoadAnotherModule();
    faults = std::make_unique<FaultPlan>(module);
}

void RecoveryFixture::Begin(const std::string& keywords, int traceLevel) {
    InitAndOpen("-BKSZ 65536 -TRCL " + std::to_string(traceLevel) + " trace.txt " + keywords);
    PassOver();
}

void RecoveryFixture::BeginCheckpointing(const std::string& keywords, int traceLevel) {
    Begin(std::string("-CKFILE ") + kCkFile + " " + keywords, traceLevel);
}

void RecoveryFixture::BeginReplay(std::int32_t sequence, const std::vector<std::string>& records,
                                  const std::string& keywords) {
    WriteFile(kCkFile, CkBytes(sequence, records));
    BeginCheckpointing(keywords);
    ASSERT_TRUE(Succeeds(SetPos({sequence, 0, 0})));
    PassOver();
}

void RecoveryFixture::Deliver(const std::vector<std::string>& records) {
    for (const std::string& record : records) {
        mq.PutMessage(record);
        EXPECT_TRUE(Gives(Read(), record));
    }
}

PositionData RecoveryFixture::TakePosition() {
    const PositionOutcome outcome = GetPos();
    EXPECT_EQ(outcome.returnCode, pmrcOK) << outcome.errorText;
    EXPECT_TRUE(outcome.given) << "no position handed out";
    EXPECT_EQ(outcome.positionLength, 16U);
    return outcome.position;
}

PositionData RecoveryFixture::TakeCheckpoint() {
    const PositionData position = TakePosition();
    const PositionOutcome redundant = GetPos();
    EXPECT_EQ(redundant.returnCode, pmrcOK) << redundant.errorText;
    EXPECT_FALSE(redundant.given);
    return position;
}

void RecoveryFixture::PassOver() {
    trace.Skip();
    faults->log.clear();
    mq.Forget();
}

void RecoveryFixture::PreserveRestartInfo(const std::string& yesOrNo) {
    EXPECT_EQ(PutAttribute("PRESERVE_RESTART_INFO", yesOrNo).returnCode, pmrcOK);
    trace.Skip();
}

void RecoveryFixture::FailDeletion(const std::string& path, int error) {
    faults->Add({.call = FileCall::Remove, .file = path, .error = error});
    faults->Add({.call = FileCall::Command, .file = "del " + path, .error = error});
}

std::size_t RecoveryFixture::Deletions(const std::string& path) const {
    const auto deletes = [&](const std::string& call) {
        return call == "remove " + path || call == "command del " + path;
    };
    return static_cast<std::size_t>(std::count_if(faults->log.begin(), faults->log.end(), deletes));
}

Lines RecoveryFixture::CallsOn(const std::string& path) const {
    Lines calls;
    std::copy_if(faults->log.begin(), faults->log.end(), std::back_inserter(calls),
                 [&](const std::string& call) { return call.find(path) != std::string::npos; });
    return calls;
}

std::string RecoveryFixture::TempFile() {
    return "MQAMtmp." + std::to_string(platform::CurrentProcessId());
}
