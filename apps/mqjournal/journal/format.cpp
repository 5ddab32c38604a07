// SPDX-License-Identifier: Apache-2.0
#include "mqjournal/journal/format.h"

#include <cstring>

#include "platform/digest.h"

namespace mqjournal {

namespace {

constexpr char kMagic[] = "MQAMjnl1";

std::uint64_t Digest(std::uint64_t digest, const void* bytes, std::size_t count) {
    return platform::ContinueDigest(digest, {static_cast<const char*>(bytes), count});
}

std::uint64_t DigestOfHeader(const JournalHeader& header) {
    return Digest(platform::kDigestStart, &header, offsetof(JournalHeader, digest));
}

}  // namespace

std::string JournalPath(const std::string& checkpointPath) {
    return checkpointPath + ".journal";
}

std::string JournalScratchPath(const std::string& checkpointPath) {
    return checkpointPath + ".journal.new";
}

JournalHeader MakeHeader(std::uint64_t salt) {
    JournalHeader header{};
    std::memcpy(header.magic, kMagic, sizeof header.magic);
    header.salt = salt;
    header.digest = DigestOfHeader(header);
    return header;
}

bool IsHeaderIntact(const JournalHeader& header) {
    return std::memcmp(header.magic, kMagic, sizeof header.magic) == 0 &&
           header.digest == DigestOfHeader(header);
}

std::uint64_t DigestOfFrame(std::uint64_t salt, const FrameHeader& frame, const char* piece) {
    const std::uint64_t ofSalt = Digest(platform::kDigestStart, &salt, sizeof salt);
    return Digest(Digest(ofSalt, &frame, offsetof(FrameHeader, digest)), piece, frame.length);
}

}  // namespace mqjournal
