// SPDX-License-Identifier: Apache-2.0
#include "mqjournal/journal/reader.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <functional>
#include <vector>

#include "mqjournal/journal/format.h"
#include "mqjournal/journal/stream.h"
#include "platform/file.h"

namespace mqjournal {

namespace {

struct OpenJournal {
    Stream stream;
    std::uint64_t salt = 0;
    FrameHeader frame = {};
    std::vector<char> piece = {};
};

// Reads the next frame. Returns false if no intact frame follows.
bool ReadFrame(OpenJournal& journal) {
    FrameHeader& frame = journal.frame;
    if (std::fread(&frame, 1, sizeof frame, journal.stream.get()) != sizeof frame) return false;
    if (frame.length == 0 || frame.length > kPieceBytesMax) return false;
    journal.piece.resize(frame.length);
    if (std::fread(journal.piece.data(), 1, frame.length, journal.stream.get()) != frame.length) return false;
    return frame.digest == DigestOfFrame(journal.salt, frame, journal.piece.data());
}

// Describes the frames from the beginning of the journal that are intact and follow one another.
struct Chain {
    std::uint64_t journalBytes = sizeof(JournalHeader);
    std::uint64_t pieceBytes = 0;    // bytes of the checkpoint file in all frames
    std::uint64_t contentBytes = 0;  // bytes of the checkpoint file in complete commits
    std::uint64_t commit = 0;        // the number of the last frame's commit
    bool isCommitComplete = true;
};

// Returns whether the frame continues the chain.
bool Follows(const FrameHeader& frame, const Chain& chain) {
    return frame.offset == chain.pieceBytes &&
           frame.commit == chain.commit + (chain.isCommitComplete ? 1 : 0);
}

Chain FollowChain(OpenJournal& journal) {
    Chain chain;
    while (ReadFrame(journal) && Follows(journal.frame, chain)) {
        chain.journalBytes += sizeof(FrameHeader) + journal.frame.length;
        chain.pieceBytes += journal.frame.length;
        chain.commit = journal.frame.commit;
        chain.isCommitComplete = journal.frame.isLast != 0;
        if (chain.isCommitComplete) chain.contentBytes = chain.pieceBytes;
    }
    return chain;
}

// Returns whether an intact frame of a later commit than the one that is incomplete comes after the end of
// the chain. A loss of power leaves no such frame, because a commit begins only after the one before it has
// been synced.
bool HasLaterCommit(OpenJournal& journal, const Chain& chain) {
    const std::uint64_t incomplete = chain.commit + (chain.isCommitComplete ? 1 : 0);
    std::FILE* const stream = journal.stream.get();
    std::vector<char> window(65536 + sizeof(FrameHeader));
    for (std::uint64_t base = chain.journalBytes;; base += window.size() - sizeof(FrameHeader)) {
        if (!platform::MoveStreamTo(stream, base)) return false;
        const std::size_t got = std::fread(window.data(), 1, window.size(), stream);
        if (got < sizeof(FrameHeader)) return false;
        for (std::size_t at = 0; at + sizeof(FrameHeader) <= got; ++at) {
            FrameHeader frame{};
            std::memcpy(&frame, window.data() + at, sizeof frame);
            // These two comparisons leave almost no place for which a digest has to be computed.
            if (frame.commit <= incomplete || frame.commit - incomplete > base + at) continue;
            if (frame.offset <= chain.contentBytes || frame.offset - chain.contentBytes > base + at) continue;
            if (platform::MoveStreamTo(stream, base + at) && ReadFrame(journal)) return true;
        }
        if (got < window.size()) return false;
    }
}

JournalScan Fail(JournalShape shape, const std::string& path, const std::string& what) {
    JournalScan scan;
    scan.shape = shape;
    scan.error = path + ": " + what;
    return scan;
}

bool OpenAt(const std::string& path, OpenJournal& journal, JournalScan& failed) {
    const platform::PathKind kind = platform::ProbePath(path);
    if (kind == platform::PathKind::kMissing) return false;
    if (kind == platform::PathKind::kOther) {
        failed = Fail(JournalShape::kUnreadable, path, "it is not a file");
        return false;
    }
    journal.stream.reset(std::fopen(path.c_str(), "rb"));
    if (journal.stream == nullptr) {
        failed = Fail(JournalShape::kUnreadable, path, std::strerror(errno));
        return false;
    }
    JournalHeader header{};
    errno = 0;
    const bool isRead = std::fread(&header, 1, sizeof header, journal.stream.get()) == sizeof header;
    if (!isRead && std::ferror(journal.stream.get()) != 0) {
        failed = Fail(JournalShape::kUnreadable, path, std::strerror(errno != 0 ? errno : EIO));
        return false;
    }
    if (!isRead || !IsHeaderIntact(header)) {
        failed = Fail(JournalShape::kDamaged, path, "it does not begin like a journal");
        return false;
    }
    journal.salt = header.salt;
    return true;
}

// Passes the content to `take`, piece by piece, until `take` returns false. Returns whether all of the
// content was passed.
bool PassContent(const std::string& checkpointPath, std::uint64_t contentBytes,
                 const std::function<bool(const char*, std::size_t)>& take) {
    OpenJournal journal;
    JournalScan failed;
    if (!OpenAt(JournalPath(checkpointPath), journal, failed)) return false;
    std::uint64_t passed = 0;
    while (passed < contentBytes) {
        errno = EIO;
        if (!ReadFrame(journal) || journal.frame.offset != passed) return false;
        if (!take(journal.piece.data(), journal.piece.size())) return false;
        passed += journal.piece.size();
    }
    return true;
}

}  // namespace

JournalScan ScanJournal(const std::string& checkpointPath) {
    const std::string path = JournalPath(checkpointPath);
    OpenJournal journal;
    JournalScan scan;
    if (!OpenAt(path, journal, scan)) return scan;
    errno = 0;
    const Chain chain = FollowChain(journal);
    if (std::ferror(journal.stream.get()) == 0 && HasLaterCommit(journal, chain)) {
        return Fail(JournalShape::kDamaged, path,
                    "it is damaged at offset " + std::to_string(chain.journalBytes) +
                        ", and records that were saved after that follow");
    }
    if (std::ferror(journal.stream.get()) != 0) {
        return Fail(JournalShape::kUnreadable, path, std::strerror(errno != 0 ? errno : EIO));
    }
    scan.shape = JournalShape::kIntact;
    scan.contentBytes = chain.contentBytes;
    return scan;
}

bool IsContentOfJournal(const std::string& checkpointPath, const JournalScan& journal) {
    std::uint64_t bytes = 0;
    if (platform::ProbePath(checkpointPath, bytes) != platform::PathKind::kFile ||
        bytes != journal.contentBytes) {
        return false;
    }
    const Stream checkpoint(std::fopen(checkpointPath.c_str(), "rb"));
    if (checkpoint == nullptr) return false;
    std::vector<char> own(kPieceBytesMax);
    return PassContent(checkpointPath, journal.contentBytes, [&](const char* piece, std::size_t count) {
        return std::fread(own.data(), 1, count, checkpoint.get()) == count &&
               std::memcmp(own.data(), piece, count) == 0;
    });
}

bool CopyContent(const std::string& checkpointPath, const JournalScan& journal, const std::string& path,
                 std::string& error) {
    if (platform::RemoveFile(path) != platform::FileStatus::kOk) {
        error = path + ": " + platform::LastFileError();
        return false;
    }
    const int descriptor = platform::OpenForWriting(path, platform::OpenMode::kCreate);
    const bool isWritten = descriptor >= 0 && PassContent(checkpointPath, journal.contentBytes,
                                                          [descriptor](const char* piece, std::size_t count) {
                                                              return WriteWhole(descriptor, piece, count);
                                                          });
    const int code = errno;
    const bool isClosed = descriptor < 0 || platform::CloseDescriptor(descriptor) == 0;
    if (isWritten && isClosed) return true;
    error = path + ": " + std::strerror(isWritten ? errno : code);
    return false;
}

}  // namespace mqjournal
