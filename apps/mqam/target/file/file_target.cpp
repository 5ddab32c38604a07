// SPDX-License-Identifier: Apache-2.0
#include "mqam/target/file/file_target.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "mqam/target/file/restart_file.h"
#include "platform/durable_file.h"
#include "platform/file.h"
#include "platform/stream.h"

namespace mqam {

namespace {

// Fills `bytes` from the file. Returns false with errno set, which is 0 if the file is too short.
bool ReadBytes(const std::string& path, std::uint64_t offset, std::vector<char>& bytes) {
    const platform::Stream stream(std::fopen(path.c_str(), "rb"));
    errno = stream == nullptr ? errno : 0;
    return stream != nullptr && platform::MoveStreamTo(stream.get(), offset) &&
           std::fread(bytes.data(), 1, bytes.size(), stream.get()) == bytes.size();
}

Status FailExamining(const std::string& path) {
    return Status::Transient(path + " cannot be examined: " + std::strerror(errno));
}

}  // namespace

FileTarget::FileTarget(FileTargetSettings settings) : settings_(std::move(settings)) {}

std::vector<LoadFile> FileTarget::Files() const {
    static constexpr char kWorkFile[] = "work file of the restart file";
    std::vector<LoadFile> files = {{settings_.path, "target"},
                                   {RestartFile(), "restart file"},
                                   {ScratchOfRestartFile(RestartFile()), kWorkFile}};
    for (const LoadFile& lock : LockFilesOf(settings_.places))
        files.push_back(lock);
    return files;
}

Status FileTarget::LoadState(std::optional<RestartState>& state) {
    return ReadRestartFile(RestartFile(), state);
}

bool FileTarget::IsOccupied() {
    std::uint64_t bytes = 0;
    const platform::PathKind kind = platform::ProbePath(settings_.path, bytes);
    if (settings_.append || kind == platform::PathKind::kMissing) return false;
    // A path that cannot be examined counts as occupied.
    return kind != platform::PathKind::kFile || bytes > 0;
}

// Refuses a file that a new load cannot use. `bytes` is its length, 0 if it is missing.
Status FileTarget::CheckNewFile(std::uint64_t& bytes) const {
    const std::string& path = settings_.path;
    const platform::PathKind kind = platform::ProbePath(path, bytes);
    if (kind == platform::PathKind::kUnknown) return FailExamining(path);
    if (kind == platform::PathKind::kOther) {
        return Status::Refused(
            path + " is not a file: a load that can be restarted needs one that can be truncated");
    }
    if (bytes > 0 && !settings_.append && !settings_.force) {
        return Status::Refused(path + " is not empty; give --force to replace it, or --append to add to it");
    }
    return {};
}

Status FileTarget::CheckNew() {
    std::uint64_t bytes = 0;
    return CheckNewFile(bytes);
}

Status FileTarget::Begin(RestartState& state) {
    std::uint64_t bytes = 0;
    Status checked = CheckNewFile(bytes);
    if (!checked.IsOk()) return checked;
    state.targetLength = settings_.append ? bytes : 0;
    Status stored = ReplaceRestartFile(RestartFile(), state);
    return stored.IsOk() ? RollBackTo(state) : stored;
}

// Refuses a file that was replaced or rewritten: it has other bytes where the last record should be.
Status FileTarget::ReadLastRecord(const RestartState& state, std::vector<char>& record) {
    const RecordLayout layout = {settings_.format, settings_.newlines};
    const std::uint64_t bytes = std::min(TailBytes(layout, state.lastRecordLength), state.targetLength);
    std::vector<char> tail(static_cast<std::size_t>(bytes));
    std::string decoded;
    errno = 0;
    if (ReadBytes(settings_.path, state.targetLength - bytes, tail) &&
        DecodeLastRecord(layout, {tail.data(), tail.size()}, state.lastRecordLength, decoded) &&
        DigestOf(decoded.data(), decoded.size()) == state.lastRecordDigest) {
        record.assign(decoded.begin(), decoded.end());
        return {};
    }
    if (errno != 0) {
        return Status::Transient("cannot read " + settings_.path + ": " + std::strerror(errno));
    }
    return Status::Refused(
        "the first " + std::to_string(state.targetLength) + " bytes of " + settings_.path +
        " do not end with the last record loaded: something else has changed the file; restore "
        "it and run the same command again");
}

Status FileTarget::RollBackTo(const RestartState& state) {
    const std::string& path = settings_.path;
    length_ = state.targetLength;
    std::uint64_t bytes = 0;
    const platform::PathKind kind = platform::ProbePath(path, bytes);
    if (kind == platform::PathKind::kUnknown) return FailExamining(path);
    const bool isMissing = kind == platform::PathKind::kMissing;
    if (bytes < length_) {
        return Status::Refused(
            path + (isMissing ? " is missing" : " has " + std::to_string(bytes) + " bytes") +
            ", but the load had written " + std::to_string(length_) +
            " bytes to disk: something else has changed the file; restore it and run the same "
            "command again");
    }
    std::vector<char> last;
    Status checked = state.lastRecordLength == 0 ? Status() : ReadLastRecord(state, last);
    if (!checked.IsOk()) return checked;
    std::string error;
    if (bytes > length_ && !platform::TruncateDurably(path, length_, error)) {
        return Status::Transient("cannot truncate " + path + " to " + std::to_string(length_) +
                                 " bytes: " + error);
    }
    sink_ = std::make_unique<FileSink>(FileSinkSettings{path, -1, platform::OpenMode::kAppend,
                                                        settings_.format, settings_.newlines, state.records});
    Status opened = sink_->Open();
    if (!opened.IsOk()) return opened;
    // An attempt that created the file may have died, or failed, before its name was on disk.
    if (platform::SyncParentDirectory(path, error)) return {};
    return Status::Transient("cannot sync the directory of " + path + ": " + error);
}

Status FileTarget::Put(const char* record, std::size_t length) {
    return sink_->Put(record, length);
}

Status FileTarget::Store(const RestartState& state) {
    Status saved = sink_->Save();
    if (!saved.IsOk()) return saved;
    // If a foreign byte in the middle were counted, a restart would cut off the end of a record.
    if (!sink_->HasLength(Length())) {
        if (errno != 0) return FailExamining(settings_.path);
        return Status::Transient(
            settings_.path +
            " was changed by something else while the load wrote to it: the records since the "
            "last checkpoint are not counted, and will be loaded again");
    }
    return ReplaceRestartFile(RestartFile(), state);
}

Status FileTarget::ForgetState() {
    std::string error;
    if (platform::ProbePath(RestartFile()) == platform::PathKind::kMissing) return {};
    if (platform::DeleteDurably(RestartFile(), error)) return {};
    return Status::Transient("cannot delete restart file " + RestartFile() + ": " + error);
}

Status FileTarget::StoreEnd(const RestartState& state) {
    return ReplaceRestartFile(RestartFile(), state);
}

}  // namespace mqam
