// SPDX-License-Identifier: Apache-2.0
#include "tests/recovery/trails/restarted_load.h"

#include <algorithm>

#include "platform/process.h"
#include "tests/support/c_library.h"

namespace {

std::string NameOf(Verb verb) {
    switch (verb) {
        case Verb::Connx: return "CONNX";
        case Verb::Open: return "OPEN";
        case Verb::Get: return "GET";
        case Verb::Cmit: return "CMIT";
        case Verb::Back: return "BACK";
        case Verb::Close: return "CLOSE";
        case Verb::Disc: return "DISC";
    }
    return "?";
}

bool BeginsWith(const std::string& text, const std::string& beginning) {
    return text.rfind(beginning, 0) == 0;
}

}  // namespace

void RestartedLoad::SetUp() {
    ModuleFixture::SetUp();
    recordBufferBytes = 4096;
    mq.hook = [this](const MqCall& call) {
        Happen("before " + ::NameOf(call.verb));
        queue.Apply(call);
        Happen("after " + ::NameOf(call.verb));
    };
}

void RestartedLoad::TearDown() {
    clock.reset();
    faults.reset();
    mq.hook = nullptr;
    ModuleFixture::TearDown();
}

void RestartedLoad::StartProcess() {
    clock.reset();
    faults.reset();
    RestartFiles files = LookAtRestartFiles();
    if (life > 0) LoadAnotherModule();
    // In this test all attempts share one process, but each has temporary files with a number of its own.
    RestartFiles numbered;
    for (auto& [name, bytes] : files) {
        const bool ours = name == kTemporaryPrefix + std::to_string(platform::CurrentProcessId());
        numbered[ours ? name + std::to_string(life) : name] = bytes;
    }
    PutRestartFiles(numbered);
    faults = std::make_unique<FaultPlan>(module);
    faults->hook = [this](const std::string& call) { Happen(call); };
    clock = std::make_unique<FakeClock>(module);
    mq.onConnx.clear();
    mq.onBack.clear();

    ++life;
    running = true;
    initialized = returned = expectsRepeat = positionDue = false;
    given.reset();
    repeat.clear();
    lastRead = {};
    lastSetPos = {};
}

void RestartedLoad::EndProcess() {
    queue.LoseConnection(noticed);
    running = false;
    noticed = true;
}

void RestartedLoad::DieAt(const std::string& event, const std::string& earlier) {
    dieAt_ = event;
    dieAfter_ = earlier;
}

void RestartedLoad::Happen(const std::string& event) {
    if (!dieAfter_.empty() && BeginsWith(event, dieAfter_)) dieAfter_.clear();
    if (dieAt_.empty() || !dieAfter_.empty() || remains_ || !BeginsWith(event, dieAt_)) return;
    if (leaves != Leaves::Flushed) (void)std::fflush(nullptr);
    remains_ = Remains{LookAtRestartFiles(), queue.messages};
    if (leaves != Leaves::RecordInPart) return;
    std::string& bytes = remains_->files[kCheckpointFile];
    const CheckpointPicture picture = PictureOf(bytes);
    ASSERT_FALSE(picture.offsets.empty()) << "no record to be cut short";
    const std::size_t last = picture.offsets.back();
    bytes.resize(last + sizeof(std::uint64_t) + (bytes.size() - last - sizeof(std::uint64_t)) / 2);
}

bool RestartedLoad::DiedInRequest() {
    if (dieAt_.empty()) return false;
    EXPECT_TRUE(remains_.has_value()) << "the request never came to: " << dieAt_;
    if (remains_) {
        CloseForgottenStreams();
        PutRestartFiles(remains_->files);
        queue.messages = remains_->messages;
    }
    dieAt_.clear();
    leaves = Leaves::All;
    remains_.reset();
    EndProcess();
    return true;
}

void RestartedLoad::InitModule(const std::string& keywords, bool preserve) {
    ASSERT_TRUE(
        Succeeds(Init(std::string(kRequired) + " -BKSZ 4096 -CKFILE " + kCheckpointFile + " " + keywords)));
    if (preserve) {
        ASSERT_TRUE(Succeeds(PutAttribute("PRESERVE_RESTART_INFO", "YES")));
    }
    initialized = true;
}

Outcome RestartedLoad::OpenModule() {
    return Open();
}

void RestartedLoad::TakePosition() {
    const PositionOutcome outcome = GetPos();
    if (!outcome.given) return;
    given = HostPosition{outcome.position, target.size(), returned};
    positionDue = false;
}

void RestartedLoad::StorePosition() {
    ASSERT_TRUE(given.has_value());
    stored = given;
    given.reset();
}

Outcome RestartedLoad::GoBack() {
    lastSetPos = SetPos(stored->data);
    expectsRepeat = lastSetPos.returnCode == pmrcOK && stored->repeat;
    positionDue = lastSetPos.returnCode == pmrcOK;
    return lastSetPos;
}

void RestartedLoad::ReadOne(GetMeets meets, bool slowly) {
    queue.PrepareGet(meets, slowly, *clock);
    const std::int64_t begin = clock->now;
    lastRead = Read();
    lastReadSlow = clock->now - begin >= kReadWaitSeconds;
    if (lastRead.returnCode != pmrcOK || remains_) return;
    if (expectsRepeat) {
        repeat = lastRead.record;
    } else {
        target.push_back(lastRead.record);
    }
    expectsRepeat = false;
    returned = true;
}

Outcome RestartedLoad::CloseModule() {
    Outcome outcome = Close();
    running = false;
    return outcome;
}

std::string RestartedLoad::NameOf(const std::string& record) const {
    for (const auto& [number, message] : queue.messages) {
        if (message.bytes == record && !record.empty()) return std::to_string(number);
    }
    return '"' + record + '"';
}

std::string RestartedLoad::Target() const {
    std::string numbers;
    for (const std::string& record : target) {
        if (!numbers.empty()) numbers += ' ';
        numbers += NameOf(record);
    }
    return numbers;
}
