#include "apps/mqam/restartable_file.h"

#include <utility>

#include "apps/mqam/disk_changes.h"
#include "apps/mqam/load_lock.h"
#include "apps/mqam/restart_file.h"

namespace {

constexpr int kLockPatienceSeconds = 10;

std::string LockPath(const RestartableFileSettings& settings) {
    return settings.restartFile + ".lock";
}

std::uint64_t StoredBytes(std::size_t recordLength, RecordFormat format) {
    switch (format) {
        case RecordFormat::kLines: return recordLength + 1;
        case RecordFormat::kLength: return recordLength + 4;
        case RecordFormat::kRaw: break;
    }
    return recordLength;
}

}  // namespace

RestartableFile::RestartableFile(RestartableFileSettings settings) : settings_(std::move(settings)) {}

bool RestartableFile::Fail(const std::string& words) {
    failure_ = words;
    return false;
}

bool RestartableFile::Lock() {
    return TakeLoadLock(LockPath(settings_), kLockPatienceSeconds, failure_);
}

void RestartableFile::Unlock() {
    GiveBackLoadLock(LockPath(settings_));
}

bool RestartableFile::LoadState(std::optional<RestartState>& state) {
    return ReadRestartFile(settings_.restartFile, state, failure_);
}

bool RestartableFile::IsOccupied() {
    if (settings_.append || ProbePath(settings_.path) == PathKind::kMissing) return false;
    return ProbePath(settings_.path) == PathKind::kOther || FileBytes(settings_.path) > 0;
}

bool RestartableFile::Begin(RestartState& state) {
    const std::string& path = settings_.path;
    const PathKind kind = ProbePath(path);
    if (kind == PathKind::kOther) {
        return Fail(path + " is not a file: a load that can be restarted needs one that can be cut back");
    }
    if (IsOccupied() && !settings_.force) {
        return Fail(path + " holds something; give --force to replace it, or --append to add to it");
    }
    state.targetLength = kind == PathKind::kFile && settings_.append ? FileBytes(path) : 0;
    return ReplaceRestartFile(settings_.restartFile, state, failure_);
}

bool RestartableFile::CutBack(const RestartState& state) {
    const std::string& path = settings_.path;
    length_ = state.targetLength;
    const bool missing = ProbePath(path) == PathKind::kMissing;
    const std::uint64_t bytes = FileBytes(path);
    if (bytes < length_) {
        return Fail(path + (missing ? " is missing" : " has " + std::to_string(bytes) + " bytes") +
                    ", but the load had brought " + std::to_string(length_) +
                    " to the medium: something else has changed it; give the file back and run the same "
                    "command again");
    }
    std::string reason;
    if (bytes > length_ && !CutDurably(path, length_, reason)) {
        return Fail("cannot cut " + path + " to " + std::to_string(length_) + " bytes: " + reason);
    }
    sink_ = std::make_unique<FileSink>(FileTarget{path, -1, OpenMode::kAppend, settings_.format});
    if (!sink_->Open()) return Fail(sink_->Failure());
    return !missing || SyncNameOf(path, reason) ||
           Fail("cannot bring the name of " + path + " to the medium: " + reason);
}

bool RestartableFile::Put(const char* record, std::size_t length) {
    if (!sink_->Put(record, length)) return Fail(sink_->Failure());
    length_ += StoredBytes(length, settings_.format);
    return true;
}

bool RestartableFile::Store(const RestartState& state) {
    if (!sink_->Save()) return Fail(sink_->Failure());
    return ReplaceRestartFile(settings_.restartFile, state, failure_);
}

bool RestartableFile::StoreEnd(const RestartState& state) {
    return ReplaceRestartFile(settings_.restartFile, state, failure_);
}
