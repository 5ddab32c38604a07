// SPDX-License-Identifier: Apache-2.0

// Defines the layout of a journal, the synced copy of a checkpoint file. docs/formats.md describes it.
//
// A journal consists of a header and frames. Each frame holds a piece of the checkpoint file; the pieces are
// in order and have no gaps. The frames of one commit are written together and then synced; the last of them
// is marked. After a loss of power, the frames of at most one commit are incomplete, and their digests show
// it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace mqjournal {

struct JournalHeader {
    char magic[8];
    /// Differs in every journal and is part of every digest, so that no record can look like a frame.
    std::uint64_t salt;
    std::uint64_t digest;  ///< the digest of the two fields above
};
static_assert(sizeof(JournalHeader) == 24);

struct FrameHeader {
    std::uint64_t offset;  ///< the place of the piece in the checkpoint file
    std::uint64_t commit;  ///< the number of the commit, from 1
    std::uint32_t length;  ///< the bytes of the piece, at most kPieceBytesMax
    std::uint32_t isLast;  ///< 1 in the last frame of a commit, otherwise 0
    std::uint64_t digest;  ///< the digest of the salt, the fields above and the piece
};
static_assert(sizeof(FrameHeader) == 32);

inline constexpr std::uint32_t kPieceBytesMax = 1U << 20;

/// These return the path of a checkpoint file's journal, and that of the file to which a new journal is first
/// written.
[[nodiscard]] std::string JournalPath(const std::string& checkpointPath);
[[nodiscard]] std::string JournalScratchPath(const std::string& checkpointPath);

[[nodiscard]] JournalHeader MakeHeader(std::uint64_t salt);
[[nodiscard]] bool IsHeaderIntact(const JournalHeader& header);

/// Returns the digest that the frame should have.
[[nodiscard]] std::uint64_t DigestOfFrame(std::uint64_t salt, const FrameHeader& frame, const char* piece);

}  // namespace mqjournal
