// SPDX-License-Identifier: Apache-2.0
#include "mqjournal/journal/format.h"

#include <cstring>

namespace mqjournal {

namespace {

constexpr char kMagic[] = "MQAMjnl1";
constexpr std::uint64_t kDigestStart = 0xcbf29ce484222325U;

// FNV-1a with 64 bits, continued.
std::uint64_t Digest(std::uint64_t digest, const void* bytes, std::size_t count) {
    const auto* at = static_cast<const unsigned char*>(bytes);
    for (std::size_t i = 0; i < count; ++i)
        digest = (digest ^ at[i]) * 0x100000001b3U;
    return digest;
}

std::uint64_t DigestOfHeader(const JournalHeader& header) {
    return Digest(kDigestStart, &header, offsetof(JournalHeader, digest));
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
    const std::uint64_t ofSalt = Digest(kDigestStart, &salt, sizeof salt);
    return Digest(Digest(ofSalt, &frame, offsetof(FrameHeader, digest)), piece, frame.length);
}

}  // namespace mqjournal
