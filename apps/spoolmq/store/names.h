// SPDX-License-Identifier: Apache-2.0

// Forms and parses the names on disk: those of the directories of queues and queue managers, and those of
// message files.
//
// Once the store has handled a message, its file is called
//     YYYYMMDD-HHMMSS-NNNNNNNNN[~B].REST
// The first part is the time of arrival in UTC, down to the nanosecond. B is the number of back-outs, left
// out while it is 0. REST is "msg" for a message that a program put, or the name of the file that was copied
// in. Names therefore sort in order of arrival, and the rename that returns a message to its queue also
// raises its back-out count: there is no moment at which one has happened without the other.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace spoolmq {

/// The last nanosecond of 2261, the last whole year that 64 bits can express. A later stamp is not valid.
inline constexpr std::int64_t kLatestStampNs = 9214646399999999999;

/// The largest back-out count. It is never raised further, and a larger number in a file name is read as
/// this.
inline constexpr std::int32_t kMaxBackoutCount = 999999999;

struct MessageName {
    std::int64_t stampNs = 0;  ///< arrival, nanoseconds since 1970 UTC
    std::int32_t backoutCount = 0;
    std::string rest;  ///< never empty
};

[[nodiscard]] std::string FormatMessageName(const MessageName& name);

/// Returns false if the text does not have the form of a message name. The file is then one that someone
/// copied in, and `name` is undefined.
[[nodiscard]] bool ParseMessageName(std::string_view text, MessageName& name);

/// Returns the name of the message's descriptor, which does not depend on the back-out count.
[[nodiscard]] std::string DescriptorName(const MessageName& name);

/// Returns the name under which the store handles a copied-in file. A file name that is too long loses its
/// beginning.
[[nodiscard]] MessageName CopiedInName(std::int64_t stampNs, std::string_view fileName);

/// Returns whether a file is never a message: it is hidden or still being copied (*.tmp, *.part and the
/// like).
[[nodiscard]] bool IsIgnoredFile(std::string_view fileName);

/// Writes "20260131" and "23595912" (with hundredths) as in PutDate and PutTime: 8 characters each.
void FormatPutDateTime(std::int64_t stampNs, char* date, char* time);

/// Returns whether the text can be the name of a queue or queue manager: 1 to 48 of the characters A-Z a-z
/// 0-9 . / _ %.
[[nodiscard]] bool IsObjectName(std::string_view name);
/// Returns the name of an object's directory: the object's name, with '/', '%' and a dot at either end
/// written as %XX.
[[nodiscard]] std::string DirectoryOfObject(std::string_view name);
/// Returns the name of the object whose directory this is, or an empty string when it is not the directory of
/// an object.
[[nodiscard]] std::string ObjectOfDirectory(std::string_view directory);

}  // namespace spoolmq
