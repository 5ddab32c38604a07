// SPDX-License-Identifier: Apache-2.0

// Restarts a load with an input that consists of the 16 bytes of a position, two bytes that say how the host
// continues, and a checkpoint file. Compares what the load returns with a simple walk through the file: it
// must return the records in order and no others, and fail exactly where the file is damaged.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include "fuzz/harness.h"
#include "fuzz/host.h"
#include "fuzz/mq_script.h"
#include "fuzz/work_directory.h"

namespace {

constexpr char kFile[] = "ck";
constexpr std::size_t kHeaderBytes = 4;
constexpr std::size_t kLengthBytes = 8;
constexpr int kQueueMessages = 2;
// Above this offset the file system may refuse a seek.
constexpr std::int64_t kFarOffset = std::int64_t{1} << 40;

// How the host continues, as the two bytes of the input say.
struct Plan {
    std::uint64_t blockSize;
    bool traced;
    bool preserve;
    unsigned readsBeforeGetPos;
    unsigned readsBehind;
};

Plan TakePlan(ByteReader& input) {
    constexpr std::uint64_t kBlockSizes[] = {16, 100, 1000, 4096};
    const std::uint8_t kind = input.Byte();
    const std::uint8_t reads = input.Byte();
    return {kBlockSizes[kind & 3U], (kind & 4U) != 0, (kind & 8U) != 0, reads & 15U, reads / 16U};
}

std::string InitString(const Plan& plan) {
    return "QMGR M QNM Q RWAIT 1 CKFILE ck BKSZ " + std::to_string(plan.blockSize) +
           (plan.traced ? " TRCL 4 trace" : "");
}

template <typename T>
T NumberAt(const std::string& bytes, std::size_t offset) {
    T number{};
    std::memcpy(&number, bytes.data() + offset, sizeof number);
    return number;
}

template <typename T>
std::string BytesOf(T number) {
    return {reinterpret_cast<const char*>(&number), sizeof number};
}

// Predicts the replay from the file's bytes and the offset that it has reached.
struct Replay {
    std::string file;
    std::uint64_t at;
    std::uint64_t blockSize;
    std::string lastRecord;
    int queueMessages;  // messages delivered after the file's end
};

enum class Step { Record, End, Damage };

// Returns what is at the offset, and the record if it is one.
Step StepAt(const Replay& replay, std::uint64_t at, std::string& record) {
    if (at >= replay.file.size()) return Step::End;
    const std::uint64_t left = replay.file.size() - at;
    if (left < kLengthBytes) return Step::End;  // a torn length is not a record
    const auto length = NumberAt<std::uint64_t>(replay.file, at);
    if (length > replay.blockSize || length > left - kLengthBytes) return Step::Damage;
    record = replay.file.substr(at + kLengthBytes, length);
    return Step::Record;
}

// Copies the records that were not replayed yet from the file to `remaining`. Returns false if one of them is
// damaged.
bool TakeRemaining(const Replay& replay, std::string& remaining) {
    std::string record;
    std::uint64_t at = replay.at;
    Step step = Step::End;
    while ((step = StepAt(replay, at, record)) == Step::Record)
        at += kLengthBytes + record.size();
    remaining = replay.at < at ? replay.file.substr(replay.at, at - replay.at) : "";
    return step == Step::End;
}

// Finds the offset at which the replay begins. Returns false if SetPos must refuse the position.
bool FindBeginning(const PositionData& position, Replay& replay) {
    if (replay.file.size() < kHeaderBytes) return false;
    const auto sequence = NumberAt<std::int32_t>(replay.file, 0);
    if (position.CkPtSeq < sequence) return false;
    if (position.CkPtSeq > sequence && position.CkPtOffset < 0) return false;
    replay.at = position.CkPtSeq == sequence ? kHeaderBytes : static_cast<std::uint64_t>(position.CkPtOffset);
    return true;
}

// Calls Read without a checkpoint before it. Returns whether the host may continue.
bool ReadOn(Replay& replay) {
    std::string expected;
    const Step step = StepAt(replay, replay.at, expected);
    const Record record = HostRead();
    switch (step) {
        case Step::Damage: Require(record.code == pmrcFailure, "damage is a failure"); return false;
        case Step::Record: replay.at += kLengthBytes + expected.size(); break;
        case Step::End:
            replay.at = replay.file.size();
            if (replay.queueMessages == kQueueMessages) {
                Require(record.code == pmrcEOF, "the queue is empty after the replay");
                return false;
            }
            expected = CalmMessage(++replay.queueMessages);
    }
    Require(record.code == pmrcOK && record.bytes == expected, "the next record is the next of the file");
    replay.lastRecord = expected;
    return true;
}

// Calls GetPos and the Read that carries the checkpoint out. The file then contains the header, the last
// record and the records that were not replayed yet.
bool TakeCheckpointAndRead(Replay& replay) {
    const Position position = HostGetPos();
    Require(position.code == pmrcOK && position.data.has_value(), "a position is given");
    std::string remaining;
    if (!TakeRemaining(replay, remaining)) {
        Require(HostRead().code == pmrcFailure, "a checkpoint in front of damage fails");
        return false;
    }
    replay.file = BytesOf(position.data->CkPtSeq) + BytesOf(std::uint64_t{replay.lastRecord.size()}) +
                  replay.lastRecord + remaining;
    replay.at = replay.file.size() - remaining.size();
    const bool isReplaying = !remaining.empty();
    const bool goesOn = ReadOn(replay);
    if (isReplaying) Require(ReadFile(kFile) == replay.file, "the rewritten file holds what is to come");
    return goesOn;
}

bool Restart(const PositionData& position, const Plan& plan, Replay& replay) {
    Require(HostInit(InitString(plan)) == pmrcOK, "the parameters are good");
    Require(HostOpen() == pmrcOK, "the queue opens");
    if (plan.preserve) (void)HostPutAttribute("PRESERVE_RESTART_INFO", "YES");
    const bool isGood = FindBeginning(position, replay);
    const bool isTaken = HostSetPos(position) == pmrcOK;
    if (position.CkPtOffset > kFarOffset) {
        (void)HostRead();
        return false;
    }
    Require(isTaken == isGood, "a restart is refused exactly when it must be");
    return isGood;
}

}  // namespace

void RunInput(ByteReader input) {
    const auto position = input.Number<PositionData>();
    const Plan plan = TakePlan(input);
    Replay replay{input.Rest(), 0, plan.blockSize, "", 0};
    WriteFile(kFile, replay.file);
    PlayCalmQueue(kQueueMessages);

    bool goesOn = Restart(position, plan, replay);
    for (unsigned i = 0; goesOn && i < plan.readsBeforeGetPos; ++i)
        goesOn = ReadOn(replay);
    if (goesOn) goesOn = TakeCheckpointAndRead(replay);
    for (unsigned i = 0; goesOn && i < plan.readsBehind; ++i)
        goesOn = ReadOn(replay);
    (void)HostClose();
    (void)HostShut(0);
}
