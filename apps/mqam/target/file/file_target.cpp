#include "mqam/target/file/file_target.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "mqam/target/file/restart_file.h"
#include "platform/durable_file.h"
#include "platform/file.h"

namespace mqam {

namespace {

// What a format puts in front of a record and behind it.
struct Frame {
    std::uint64_t before;
    std::uint64_t behind;
};

Frame FrameOf(RecordFormat format) {
    switch (format) {
        case RecordFormat::kLines: return {0, 1};
        case RecordFormat::kLength: return {4, 0};
        case RecordFormat::kRaw: break;
    }
    return {0, 0};
}

struct CloseStream {
    void operator()(std::FILE* stream) const { (void)std::fclose(stream); }
};

// Reads so many bytes of a file. Returns false with errno set, 0 when the file is too short.
bool ReadBytes(const std::string& path, std::uint64_t offset, std::vector<char>& bytes) {
    const std::unique_ptr<std::FILE, CloseStream> stream(std::fopen(path.c_str(), "rb"));
    errno = stream == nullptr ? errno : 0;
    return stream != nullptr && platform::MoveStreamTo(stream.get(), offset) &&
           std::fread(bytes.data(), 1, bytes.size(), stream.get()) == bytes.size();
}

}  // namespace

FileTarget::FileTarget(FileTargetSettings settings) : settings_(std::move(settings)) {}

std::vector<LoadFile> FileTarget::Files() const {
    static constexpr char kWorkFile[] = "work file of the restart file";
    return {{settings_.path, "target"},
            {settings_.restartFile, "restart file"},
            {ScratchOfRestartFile(settings_.restartFile), kWorkFile},
            {CommandLock(), kWorkFile},
            {AttemptLock(), kWorkFile}};
}

bool FileTarget::LoadState(std::optional<RestartState>& state) {
    std::string reason;
    bool mayPass = false;
    if (ReadRestartFile(settings_.restartFile, state, reason, mayPass)) return true;
    return mayPass ? Fail(reason) : Refuse(reason);
}

bool FileTarget::ReplaceState(const RestartState& state) {
    std::string reason;
    return ReplaceRestartFile(settings_.restartFile, state, reason) || Fail(reason);
}

bool FileTarget::IsOccupied() {
    std::uint64_t bytes = 0;
    const platform::PathKind kind = platform::ProbePath(settings_.path, bytes);
    if (settings_.append || kind == platform::PathKind::kMissing) return false;
    // What cannot be looked at is not free either.
    return kind != platform::PathKind::kFile || bytes > 0;
}

bool FileTarget::Begin(RestartState& state) {
    const std::string& path = settings_.path;
    std::uint64_t bytes = 0;
    const platform::PathKind kind = platform::ProbePath(path, bytes);
    if (kind == platform::PathKind::kUnknown)
        return Fail(path + " cannot be looked at: " + std::strerror(errno));
    if (kind == platform::PathKind::kOther) {
        return Refuse(path + " is not a file: a load that can be restarted needs one that can be cut back");
    }
    if (bytes > 0 && !settings_.append && !settings_.force) {
        return Refuse(path + " holds something; give --force to replace it, or --append to add to it");
    }
    state.targetLength = settings_.append ? bytes : 0;
    return ReplaceState(state);
}

// Another file under the name, or one that was written anew, has other bytes there.
bool FileTarget::EndsWithLastRecord(const RestartState& state) {
    if (state.lastRecordLength == 0) return true;
    const Frame frame = FrameOf(settings_.format);
    const std::uint64_t framed = frame.before + state.lastRecordLength + frame.behind;
    std::vector<char> record(static_cast<std::size_t>(state.lastRecordLength));
    errno = 0;
    if (framed <= state.targetLength &&
        ReadBytes(settings_.path, state.targetLength - frame.behind - state.lastRecordLength, record) &&
        DigestOf(record.data(), record.size()) == state.lastRecordDigest) {
        return true;
    }
    if (errno != 0) return Fail("cannot read " + settings_.path + ": " + std::strerror(errno));
    return Refuse(
        "the first " + std::to_string(state.targetLength) + " bytes of " + settings_.path +
        " do not end with the last record loaded: something else has changed it; give the file back "
        "and run the same command again");
}

bool FileTarget::RollBackTo(const RestartState& state) {
    const std::string& path = settings_.path;
    length_ = state.targetLength;
    std::uint64_t bytes = 0;
    const platform::PathKind kind = platform::ProbePath(path, bytes);
    if (kind == platform::PathKind::kUnknown)
        return Fail(path + " cannot be looked at: " + std::strerror(errno));
    const bool missing = kind == platform::PathKind::kMissing;
    if (bytes < length_) {
        return Refuse(path + (missing ? " is missing" : " has " + std::to_string(bytes) + " bytes") +
                      ", but the load had brought " + std::to_string(length_) +
                      " bytes to the medium: something else has changed it; give the file back and run the "
                      "same command again");
    }
    if (!EndsWithLastRecord(state)) return false;
    std::string reason;
    if (bytes > length_ && !platform::TruncateDurably(path, length_, reason)) {
        return Fail("cannot cut " + path + " to " + std::to_string(length_) + " bytes: " + reason);
    }
    sink_ =
        std::make_unique<FileSink>(FileSinkSettings{path, -1, platform::OpenMode::kAppend, settings_.format});
    if (!sink_->Open()) return Fail(sink_->Failure());
    // A life that made the file may have died, or failed, before its name was on the medium.
    return platform::SyncParentDirectory(path, reason) ||
           Fail("cannot bring the name of " + path + " to the medium: " + reason);
}

bool FileTarget::Put(const char* record, std::size_t length) {
    if (!sink_->Put(record, length)) return Fail(sink_->Failure());
    const Frame frame = FrameOf(settings_.format);
    length_ += frame.before + length + frame.behind;
    return true;
}

bool FileTarget::Store(const RestartState& state) {
    if (!sink_->Save()) return Fail(sink_->Failure());
    // Counted, a foreign byte in the middle would push a record over the length that a restart cuts to.
    if (!sink_->HasLength(length_)) {
        if (errno != 0) return Fail(settings_.path + " cannot be looked at: " + std::strerror(errno));
        return Fail(settings_.path +
                    " was changed by something else while the load wrote to it: what came since the last "
                    "checkpoint is not counted, and comes again");
    }
    return ReplaceState(state);
}

bool FileTarget::StoreEnd(const RestartState& state) {
    return ReplaceState(state);
}

}  // namespace mqam
