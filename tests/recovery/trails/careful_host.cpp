// SPDX-License-Identifier: Apache-2.0

// Implements the host that keeps every rule of model/README.md. Finish continues a load with it after a trail
// was played.
#include <filesystem>

#include "tests/recovery/trails/restarted_load.h"

namespace {

constexpr int kMostLives = 20;
constexpr int kFailuresToGiveUp = 3;

}  // namespace

std::string RestartedLoad::Finish() {
    queue.NoticeDeaths();
    std::optional<std::size_t> recordsOfCleanLife;
    int failures = 0;
    for (int lives = 0; lives < kMostLives; ++lives) {
        const bool ended =
            (running || StartCarefulLife()) && ReadToTheEnd() && CloseModule().returnCode == pmrcOK;
        if (!ended) {
            recordsOfCleanLife.reset();
            EndProcess();
            if (++failures == kFailuresToGiveUp) return failure_;
            continue;
        }
        if (lastReadSlow && recordsOfCleanLife == target.size()) {
            EXPECT_EQ(queue.Waiting(), "");
            return "";
        }
        recordsOfCleanLife = target.size();
    }
    return "one attempt after another, and none is the last";
}

/// Repairs the files before Open: restores a missing checkpoint file from the temporary one if a position is
/// stored, deletes temporary files, and cuts off an incomplete record. Returns false and sets failure_ if a
/// position is stored but neither file exists. Sets `goBack` if a position is stored and the file has a
/// record.
bool RestartedLoad::PrepareFiles(bool& goBack) {
    RestartFiles files = LookAtRestartFiles();
    const std::vector<std::string> temporary = TemporaryFiles(files);
    if (!files.contains(kCheckpointFile) && stored) {
        if (temporary.empty()) {
            failure_ = "a position is stored, and no checkpoint file is there";
            return false;
        }
        files[kCheckpointFile] = files[temporary.front()];
    }
    for (const std::string& name : temporary)
        files.erase(name);
    goBack = false;
    if (files.contains(kCheckpointFile)) {
        std::string& bytes = files[kCheckpointFile];
        const CheckpointPicture picture = PictureOf(bytes);
        bytes.resize(picture.wholeBytes);
        goBack = stored && !picture.offsets.empty();
    }
    PutRestartFiles(files);
    return true;
}

bool RestartedLoad::StartCarefulLife() {
    StartProcess();
    if (HasFatalFailure()) return false;
    if (stored && stored->records < target.size()) target.resize(stored->records);
    if (!stored) target.clear();
    durable = target.size();

    bool goBack = false;
    if (!PrepareFiles(goBack)) return false;
    InitModule("-MQEX -TDM YES", true);
    const Outcome open = OpenModule();
    failure_ = open.errorText;
    if (open.returnCode != pmrcOK) return false;
    if (goBack) {
        failure_ = GoBack().errorText;
        return lastSetPos.returnCode == pmrcOK;
    }
    TakePosition();
    StorePosition();
    return true;
}

bool RestartedLoad::ReadToTheEnd() {
    while (true) {
        if (positionDue && returned) TakePosition();
        if (given) StorePosition();
        ReadOne();
        failure_ = lastRead.errorText;
        if (lastRead.returnCode == pmrcEOF) return true;
        if (lastRead.returnCode != pmrcOK) return false;
    }
}
