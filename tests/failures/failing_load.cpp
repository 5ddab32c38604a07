// SPDX-License-Identifier: Apache-2.0
#include "tests/failures/failing_load.h"

#include <algorithm>

#include "platform/environment.h"
#include "tests/support/module_fixture.h"

namespace {

constexpr int kMessages = 9;
constexpr int kMostAttempts = 16;

/// No message begins with the bytes of the one before, because a duplicate is recognised by them. Messages
/// that are the last record at a checkpoint begin with NUL bytes: if a header is missing, such bytes can pass
/// for a record.
std::string MessageText(int number) {
    const std::string nuls(number % 3 == 2 ? 4 : 0, '\0');
    const auto letter = static_cast<char>('a' + number);
    return nuls + letter + "-message" + std::string(static_cast<std::size_t>(number * 7 % 5), '.');
}

bool Contains(const std::vector<std::string>& records, const std::string& record) {
    return std::find(records.begin(), records.end(), record) != records.end();
}

}  // namespace

FailingLoad::FailingLoad(const LoadPlan& plan) : host(queueManager, plan) {
    platform::SetEnvironment("MQAMOD_MQ_LIBRARY", MqDoublePath());
    for (int number = 0; number < kMessages; ++number) {
        messages_.push_back(MessageText(number));
        queueManager.Put(messages_.back());
    }
    host.atStart = [this](ModuleProcess& process) { process_ = &process; };
}

void FailingLoad::RunAttempt() {
    host.RunAttempt();
    process_ = nullptr;
    CheckNothingIsLost();
}

void FailingLoad::RunToTheEnd() {
    while (!host.Done() && host.Attempts() < kMostAttempts && !testing::Test::HasFailure())
        RunAttempt();
    EXPECT_TRUE(host.Done()) << "not done after " << host.Attempts() << " attempts";
    EXPECT_EQ(host.Stored(), messages_);
    EXPECT_TRUE(queueManager.Left().empty());
}

// The record that was saved last may be on the queue as well, because it is committed only in the next step.
void FailingLoad::CheckNothingIsLost() {
    const std::vector<std::string> stored = host.Stored();
    const std::vector<std::string> queued = queueManager.Left();
    const std::string temporary = LeftTemporaryFile();
    const std::string file = FileExists(kCheckpointFile) || temporary.empty() ? kCheckpointFile : temporary;
    const std::vector<std::string> saved = LookAtCheckpoint(file).records;
    int twice = 0;
    for (const std::string& message : messages_) {
        const bool kept = Contains(stored, message) || Contains(saved, message);
        const bool left = Contains(queued, message);
        EXPECT_TRUE(kept || left) << message << " is lost after attempt " << host.Attempts();
        twice += kept && left ? 1 : 0;
    }
    EXPECT_LE(twice, 1) << "after attempt " << host.Attempts();
}
