// The attributes of queue managers and queues: small text files, "name = value" a line, '#' starts a comment.
// They can be edited at any time; every call looks at them.
//
//     ROOT/QM1/qmgr.ini              of the queue manager QM1
//     ROOT/QM1/ORDERS/.queue.ini     of its queue ORDERS
//
// Neither file has to exist. Each attribute is a row of a table (QmgrAttributeTable, QueueAttributeTable)
// that the reader, the writer of fresh files, `mqam queue show` and the tests walk.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "spoolmq/os/os.h"

namespace spoolmq {

enum class QmgrState : std::int32_t { Running, Quiescing, Stopping, Ended };

struct QmgrAttributes {
    std::int32_t state = 0;  ///< a QmgrState
    std::int32_t isDefault = 0;
    std::int32_t ccsid = 1208;
    std::int32_t maxUncommitted = 10000;
    std::int32_t maxMessageLength = 104857600;
    std::int32_t channelMaxMessageLength = 104857600;
    std::string channel;
    std::string listener;
    std::int32_t sync = 0;
};

struct QueueAttributes {
    std::int32_t getInhibited = 0;
    std::int32_t putInhibited = 0;
    std::int32_t shareable = 1;
    std::int32_t defaultOpenExclusive = 0;
    std::int32_t maxDepth = 999999999;
    std::int32_t maxMessageLength = 104857600;
    std::int32_t defaultPersistence = 1;
    std::int32_t defaultPriority = 0;
    std::int32_t backoutThreshold = 0;
    std::string backoutQueue;
    std::string fileFormat;
    std::int32_t fileCcsid = 0;
    std::int32_t settleMs = 250;
};

template <typename Attributes>
struct AttributeRow {
    const char* name;
    std::int32_t Attributes::*number;  ///< null for a text
    std::string Attributes::*text;     ///< null for a number
    std::int32_t minimum;
    std::int32_t maximum;
    const char*
        words;  ///< "first|second": words that stand for minimum, minimum + 1, ...; null for plain numbers
    const char* help;
};

[[nodiscard]] const std::vector<AttributeRow<QmgrAttributes>>& QmgrAttributeTable();
[[nodiscard]] const std::vector<AttributeRow<QueueAttributes>>& QueueAttributeTable();

/// Sets one attribute from its text. False with the reason in *why when the name is unknown or the value not
/// valid.
[[nodiscard]] bool SetAttribute(std::string_view name, std::string_view value, QmgrAttributes* to,
                                std::string* why);
[[nodiscard]] bool SetAttribute(std::string_view name, std::string_view value, QueueAttributes* to,
                                std::string* why);
/// Reads a whole file over the defaults; false as above, the reason names the line.
[[nodiscard]] bool ParseAttributes(std::string_view content, QmgrAttributes* to, std::string* why);
[[nodiscard]] bool ParseAttributes(std::string_view content, QueueAttributes* to, std::string* why);
/// The text of a file that holds these values, with a comment on every attribute.
[[nodiscard]] std::string FormatAttributes(const QmgrAttributes& from);
[[nodiscard]] std::string FormatAttributes(const QueueAttributes& from);
/// The value of one attribute as it is written in the file.
[[nodiscard]] std::string AttributeText(const AttributeRow<QmgrAttributes>& row, const QmgrAttributes& from);
[[nodiscard]] std::string AttributeText(const AttributeRow<QueueAttributes>& row,
                                        const QueueAttributes& from);

/// An attribute file as it was last read. Asking for the values costs one look at the file's times.
template <typename Attributes>
struct WatchedAttributes {
    std::string path;
    Attributes values;
    FileInfo seen;              ///< of the file that the values are from; identity 0: no file
    std::int64_t readAtNs = 0;  ///< FileClockNs when it was read
    bool isRead = false;
};

/// Brings the values up to date. False when the file has become unreadable or wrong: the last good values
/// stay, and *why names file, line and reason.
[[nodiscard]] bool RefreshAttributes(WatchedAttributes<QmgrAttributes>* watched, std::string* why);
[[nodiscard]] bool RefreshAttributes(WatchedAttributes<QueueAttributes>* watched, std::string* why);

}  // namespace spoolmq
