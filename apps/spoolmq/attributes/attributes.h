// SPDX-License-Identifier: Apache-2.0

// Defines the attributes of queue managers and queues. They are kept in small text files with one "name =
// value" a line, in which '#' starts a comment:
//
//     ROOT/QM1/qmgr.ini              attributes of the queue manager QM1
//     ROOT/QM1/ORDERS/.queue.ini     attributes of its queue ORDERS
//
// A file may be edited at any time, because every MQI call checks whether it has changed. If the file does
// not exist, the defaults apply. Each attribute is one row of a table (QmgrAttributeTable,
// QueueAttributeTable), which drives reading, writing, `mqam queue show` and the tests.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "spoolmq/base/status.h"

namespace spoolmq {

enum class QmgrState : std::int32_t { kRunning, kQuiescing, kStopping, kEnded };

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
    std::int32_t Attributes::*number;  ///< null for a text attribute
    std::string Attributes::*text;     ///< null for a number
    std::int32_t minimum;
    std::int32_t maximum;
    /// These are the words for minimum, minimum + 1 and so on, as "first|second|...". It is null for a text
    /// and for a number that is written in digits.
    const char* words;
    const char* help;
};

[[nodiscard]] const std::vector<AttributeRow<QmgrAttributes>>& QmgrAttributeTable();
[[nodiscard]] const std::vector<AttributeRow<QueueAttributes>>& QueueAttributeTable();

/// Sets one attribute from its text. Returns kFailed if the name is unknown or the value is not valid;
/// `attributes` is then unchanged.
Status SetAttribute(std::string_view name, std::string_view value, QmgrAttributes& attributes);
Status SetAttribute(std::string_view name, std::string_view value, QueueAttributes& attributes);

/// Parses the text of a file. An attribute that the text does not set gets its default. Returns kFailed if a
/// line is not valid: the error names the line, and `attributes` is unchanged.
Status ParseAttributes(std::string_view text, QmgrAttributes& attributes);
Status ParseAttributes(std::string_view text, QueueAttributes& attributes);

/// Returns the text of a file with these values, and with a comment on every attribute.
[[nodiscard]] std::string FormatAttributes(const QmgrAttributes& attributes);
[[nodiscard]] std::string FormatAttributes(const QueueAttributes& attributes);

/// Returns the value of one attribute as a file spells it.
[[nodiscard]] std::string AttributeText(const AttributeRow<QmgrAttributes>& row,
                                        const QmgrAttributes& attributes);
[[nodiscard]] std::string AttributeText(const AttributeRow<QueueAttributes>& row,
                                        const QueueAttributes& attributes);

}  // namespace spoolmq
