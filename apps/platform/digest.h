// SPDX-License-Identifier: Apache-2.0

// Computes a digest of bytes that is the same on every system and in every release, so it may be stored in
// files.
#pragma once

#include <cstdint>
#include <string_view>

namespace platform {

/// The digest of no bytes, with which every digest begins.
inline constexpr std::uint64_t kDigestStart = 0xcbf29ce484222325U;

/// Continues the digest of some bytes with the bytes that follow them.
constexpr std::uint64_t ContinueDigest(std::uint64_t digest, std::string_view bytes) {
    for (const char byte : bytes) {
        digest = (digest ^ static_cast<unsigned char>(byte)) * 0x100000001b3U;
    }
    return digest;
}

/// Returns the 64-bit FNV-1a hash of the bytes: it detects an accidental change, but not an intentional one.
constexpr std::uint64_t DigestOf(std::string_view bytes) {
    return ContinueDigest(kDigestStart, bytes);
}

}  // namespace platform
