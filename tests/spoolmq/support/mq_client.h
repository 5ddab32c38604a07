// SPDX-License-Identifier: Apache-2.0

// Wraps the verbs with the parameters that tests vary. All other parameters are those of a well-behaved
// client.
#pragma once

#include <string>

#include "tests/spoolmq/support/mq_library.h"

struct Codes {
    MQLONG compCode = -1;
    MQLONG reason = -1;
    bool operator==(const Codes&) const = default;
};
inline constexpr Codes kDone{0, 0};
inline Codes FailedWith(MQLONG reason) {
    return {2, reason};
}
inline Codes WarnedWith(MQLONG reason) {
    return {1, reason};
}
std::ostream& operator<<(std::ostream& out, const Codes& codes);

// These return structures of the given version with IBM's initial values.
[[nodiscard]] mqi::MQCNO NewCno(MQLONG version = 1);
[[nodiscard]] mqi::MQOD NewOd(const std::string& queue, MQLONG version = 1);
[[nodiscard]] mqi::MQMD NewMd(MQLONG version = 1);
[[nodiscard]] mqi::MQGMO NewGmo(MQLONG options, MQLONG version = 1);
[[nodiscard]] mqi::MQPMO NewPmo(MQLONG options, MQLONG version = 1);

inline constexpr MQLONG kInputShared = 2;
inline constexpr MQLONG kInputExclusive = 4;
inline constexpr MQLONG kBrowse = 8;
inline constexpr MQLONG kOutput = 16;
inline constexpr MQLONG kInquire = 32;
inline constexpr MQLONG kSync = 2;
inline constexpr MQLONG kNoSync = 4;
inline constexpr MQLONG kWait = 1;

[[nodiscard]] Codes Connect(const std::string& name, MQHCONN* connection);
/// Connects with a handle that all threads share, so that one thread can have several connections.
[[nodiscard]] Codes ConnectShared(const std::string& name, MQHCONN* connection);
[[nodiscard]] Codes Disconnect(MQHCONN* connection);
[[nodiscard]] Codes Open(MQHCONN connection, const std::string& queue, MQLONG options, MQHOBJ* object);
[[nodiscard]] Codes Close(MQHCONN connection, MQHOBJ* object);
[[nodiscard]] Codes Commit(MQHCONN connection);
[[nodiscard]] Codes BackOut(MQHCONN connection);
[[nodiscard]] Codes Put(MQHCONN connection, MQHOBJ object, const std::string& body, MQLONG options = kNoSync);
[[nodiscard]] Codes PutWith(MQHCONN connection, MQHOBJ object, const std::string& body, mqi::MQMD* md,
                            MQLONG options = kNoSync);

struct Got {
    Codes codes;
    std::string body;  ///< the bytes that the buffer received
    MQLONG dataLength = -1;
    mqi::MQMD md{};
    mqi::MQGMO gmo{};
};
/// Calls MQGET with a buffer of `bufferBytes`. The descriptor contains the identifiers to select, and the
/// character set and encoding to convert to.
[[nodiscard]] Got GetWith(MQHCONN connection, MQHOBJ object, mqi::MQMD md, mqi::MQGMO gmo,
                          std::size_t bufferBytes = 100000);
[[nodiscard]] Got Get(MQHCONN connection, MQHOBJ object, MQLONG options, std::size_t bufferBytes = 100000);

/// Returns the integer attribute, or -1 if MQINQ fails.
[[nodiscard]] MQLONG Inquire(MQHCONN connection, MQHOBJ object, MQLONG selector);
