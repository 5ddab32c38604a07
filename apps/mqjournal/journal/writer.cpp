// SPDX-License-Identifier: Apache-2.0
#include "mqjournal/journal/writer.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <random>
#include <utility>

#include "mqjournal/journal/format.h"
#include "mqjournal/journal/stream.h"
#include "platform/durable_file.h"
#include "platform/file.h"

namespace mqjournal {

namespace {

bool Fail(const std::string& path, const std::string& reason, std::string& error) {
    error = path + ": " + reason;
    return false;
}

bool FailWithErrno(const std::string& path, std::string& error) {
    return Fail(path, std::strerror(errno), error);
}

// A new journal under the scratch name, which then replaces the old one. If that does not happen, it is
// deleted.
class NewJournal {
  public:
    explicit NewJournal(const std::string& checkpointPath)
        : path_(JournalPath(checkpointPath)), scratch_(JournalScratchPath(checkpointPath)) {}
    NewJournal(const NewJournal&) = delete;
    NewJournal& operator=(const NewJournal&) = delete;
    ~NewJournal() {
        if (descriptor_ >= 0) (void)platform::CloseDescriptor(descriptor_);
        if (!isInPlace_) (void)platform::RemoveFile(scratch_);
    }

    // Creates the file and writes the header. A scratch file that a killed process left behind is deleted
    // first.
    bool Create(std::uint64_t salt, std::string& error) {
        if (platform::RemoveFile(scratch_) != platform::FileStatus::kOk) {
            return Fail(scratch_, platform::LastFileError(), error);
        }
        descriptor_ = platform::OpenForWriting(scratch_, platform::OpenMode::kCreate);
        const JournalHeader header = MakeHeader(salt);
        return (descriptor_ >= 0 && WriteWhole(descriptor_, &header, sizeof header)) ||
               FailWithErrno(scratch_, error);
    }

    // Syncs what was written and replaces the journal with it.
    bool Replace(std::string& error) {
        if (platform::SyncFile(descriptor_) != 0) return FailWithErrno(scratch_, error);
        if (platform::CloseDescriptor(std::exchange(descriptor_, -1)) != 0)
            return FailWithErrno(scratch_, error);
        std::string reason;
        isInPlace_ = platform::MoveOverDurably(scratch_, path_, reason);
        return isInPlace_ || Fail(path_, reason, error);
    }

    [[nodiscard]] int Descriptor() const { return descriptor_; }

  private:
    std::string path_;
    std::string scratch_;
    int descriptor_ = -1;
    bool isInPlace_ = false;
};

std::uint64_t MakeSalt() {
    std::random_device device;
    return std::uint64_t{device()} << 32 | device();
}

std::string DirectoryOf(const std::string& path) {
    const std::size_t delimiter = path.find_last_of("/\\");
    return delimiter == std::string::npos ? "" : path.substr(0, delimiter);
}

}  // namespace

JournalWriter::JournalWriter(std::string checkpointPath)
    : checkpointPath_(std::move(checkpointPath)), journalPath_(JournalPath(checkpointPath_)) {}

JournalWriter::~JournalWriter() {
    Release();
}

void JournalWriter::Release() {
    if (descriptor_ >= 0) (void)platform::CloseDescriptor(descriptor_);
    descriptor_ = -1;
}

// Returns whether the checkpoint file is that of the last Save and has only grown, and the journal is still
// in its place.
bool JournalWriter::IsContinued(std::uint64_t identity, std::uint32_t sequence, std::uint64_t bytes) const {
    return descriptor_ >= 0 && identity == identity_ && sequence == sequence_ && bytes >= savedBytes_ &&
           platform::IsFileAt(descriptor_, journalPath_, journalBytes_);
}

bool JournalWriter::Save(std::string& error) {
    platform::FileInfo info;
    if (platform::StatPath(checkpointPath_, info) != platform::FileStatus::kOk) {
        return Fail(checkpointPath_, platform::LastFileError(), error);
    }
    const Stream checkpoint(std::fopen(checkpointPath_.c_str(), "rb"));
    if (checkpoint == nullptr) return FailWithErrno(checkpointPath_, error);
    std::uint32_t sequence = 0;
    if (std::fread(&sequence, 1, sizeof sequence, checkpoint.get()) != sizeof sequence) {
        return Fail(checkpointPath_, "it has no sequence number", error);
    }
    const auto bytes = static_cast<std::uint64_t>(info.bytes);
    bool saved = true;
    if (!IsContinued(info.identity, sequence, bytes)) {
        Release();
        saved = SaveWholeFile(checkpoint.get(), bytes, error);
    } else if (bytes > savedBytes_) {
        saved = AppendCommit(descriptor_, checkpoint.get(), bytes, error);
    }
    // After a failed write or sync nothing is known about the end of the journal, so the next Save begins a
    // new one.
    if (!saved) Release();
    identity_ = info.identity;
    sequence_ = sequence;
    return saved;
}

bool JournalWriter::SaveWholeFile(std::FILE* checkpoint, std::uint64_t bytes, std::string& error) {
    salt_ = MakeSalt();
    commit_ = 0;
    savedBytes_ = 0;
    journalBytes_ = sizeof(JournalHeader);
    NewJournal created(checkpointPath_);
    if (!created.Create(salt_, error) || !AppendCommit(created.Descriptor(), checkpoint, bytes, error) ||
        !created.Replace(error)) {
        return false;
    }
    descriptor_ = platform::OpenForWriting(journalPath_, platform::OpenMode::kAppend);
    return descriptor_ >= 0 || FailWithErrno(journalPath_, error);
}

// Appends the bytes of the checkpoint file from savedBytes_ to `bytes` as one commit, and syncs.
bool JournalWriter::AppendCommit(int descriptor, std::FILE* checkpoint, std::uint64_t bytes,
                                 std::string& error) {
    ++commit_;
    if (!platform::MoveStreamTo(checkpoint, savedBytes_)) return FailWithErrno(checkpointPath_, error);
    while (savedBytes_ < bytes) {
        FrameHeader frame{};
        frame.offset = savedBytes_;
        frame.commit = commit_;
        frame.length =
            static_cast<std::uint32_t>(std::min<std::uint64_t>(bytes - savedBytes_, kPieceBytesMax));
        frame.isLast = savedBytes_ + frame.length == bytes ? 1 : 0;
        piece_.resize(sizeof frame + frame.length);
        char* const piece = piece_.data() + sizeof frame;
        errno = EIO;
        if (std::fread(piece, 1, frame.length, checkpoint) != frame.length) {
            return FailWithErrno(checkpointPath_, error);
        }
        frame.digest = DigestOfFrame(salt_, frame, piece);
        std::memcpy(piece_.data(), &frame, sizeof frame);
        if (!WriteWhole(descriptor, piece_.data(), piece_.size())) return FailWithErrno(journalPath_, error);
        savedBytes_ += frame.length;
        journalBytes_ += piece_.size();
    }
    return platform::SyncFile(descriptor) == 0 || FailWithErrno(journalPath_, error);
}

bool ResetJournal(const std::string& checkpointPath, std::string& error) {
    NewJournal created(checkpointPath);
    if (!created.Create(MakeSalt(), error) || !created.Replace(error)) return false;
    const std::string directory = DirectoryOf(JournalPath(checkpointPath));
    if (directory.empty()) return true;
    std::string reason;
    return platform::SyncParentDirectory(directory, reason) || Fail(directory, reason, error);
}

bool RemoveJournal(const std::string& checkpointPath, std::string& error) {
    const std::string path = JournalPath(checkpointPath);
    if (platform::ProbePath(path) == platform::PathKind::kMissing) return true;
    std::string reason;
    return platform::DeleteDurably(path, reason) || Fail(path, reason, error);
}

}  // namespace mqjournal
