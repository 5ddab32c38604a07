// Names on disk: of the folder of a queue or queue manager, and of a message file.
//
// A message that the store has handled is called
//     YYYYMMDD-HHMMSS-NNNNNNNNN[~B].REST
// the UTC time of its arrival down to the nanosecond, how often it was backed out (left out when never), and
// "msg" for a message put through the interface or the name that a copied-in file came with. Names therefore
// sort in arrival order, and the back-out count changes in the very rename that puts a message back: there is
// no moment at which one has happened without the other.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace spoolmq {

/// The last nanosecond of 2261: 64 bits hold no whole year after it. A later stamp is none.
inline constexpr std::int64_t kLatestStampNs = 9214646399999999999;

/// The largest back-out count: it is no more raised, and a name with a larger one means this.
inline constexpr std::int32_t kMostBackouts = 999999999;

struct MessageName {
    std::int64_t stampNs = 0;  ///< arrival, nanoseconds since 1970 UTC
    std::int32_t backoutCount = 0;
    std::string rest;  ///< never empty
};

[[nodiscard]] std::string FormatMessageName(const MessageName& name);
/// False when the text is not of that form: a file that somebody put there. *name is then undefined.
[[nodiscard]] bool ParseMessageName(std::string_view text, MessageName* name);
/// What stays the same however often the message is backed out: the name of its descriptor.
[[nodiscard]] std::string DescriptorName(const MessageName& name);
/// A name for a copied-in file that the store is about to handle; too long a name is cut at its front.
[[nodiscard]] MessageName AdoptedName(std::int64_t stampNs, std::string_view fileName);
/// Files that are never messages: hidden ones and those still being copied, *.tmp, *.part and the like.
[[nodiscard]] bool IsIgnoredFile(std::string_view fileName);

/// "20260131" and "23595912" (hundredths) as in PutDate and PutTime; each pointer receives 8 characters.
void FormatPutDateTime(std::int64_t stampNs, char* date, char* time);

/// Whether the text is a queue or queue manager name: 1 to 48 of A-Z a-z 0-9 . / _ %
[[nodiscard]] bool IsObjectName(std::string_view name);
/// The folder of an object: its name, with '/', '%' and a dot at either end written as %XX.
[[nodiscard]] std::string FolderOfObject(std::string_view name);
/// The inverse; empty when no object has this folder.
[[nodiscard]] std::string ObjectOfFolder(std::string_view folder);

}  // namespace spoolmq
