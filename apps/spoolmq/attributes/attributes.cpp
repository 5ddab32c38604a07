#include "spoolmq/attributes/attributes.h"

#include <algorithm>
#include <charconv>

namespace spoolmq {

namespace {

// Two changes within one tick of the file clock look alike; so close to a change the file is read again.
constexpr std::int64_t kClockTickNs = 20000000;

std::string_view Trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

/// The index of a word in "first|second|third", -1 if it is not among them.
std::int32_t IndexOfWord(std::string_view words, std::string_view word) {
    for (std::int32_t index = 0;; ++index) {
        const std::size_t end = std::min(words.find('|'), words.size());
        if (words.substr(0, end) == word) return index;
        if (end == words.size()) return -1;
        words.remove_prefix(end + 1);
    }
}

std::string WordAt(std::string_view words, std::int32_t index) {
    for (; index > 0; --index)
        words.remove_prefix(std::min(words.find('|') + 1, words.size()));
    return std::string(words.substr(0, words.find('|')));
}

template <typename Attributes>
bool SetRow(const AttributeRow<Attributes>& row, std::string_view value, Attributes* to, std::string* why) {
    if (row.text != nullptr) {
        to->*row.text = value;
        return true;
    }
    if (row.words != nullptr) {
        const std::int32_t index = IndexOfWord(row.words, value);
        if (index < 0) {
            std::string choices = row.words;
            std::replace(choices.begin(), choices.end(), '|', ' ');
            *why = std::string(row.name) + " is \"" + std::string(value) + "\" but takes one of: " + choices;
            return false;
        }
        to->*row.number = row.minimum + index;
        return true;
    }
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
    if (error != std::errc() || end != value.data() + value.size() || number < row.minimum ||
        number > row.maximum) {
        *why = std::string(row.name) + " is \"" + std::string(value) + "\" but takes a number from " +
               std::to_string(row.minimum) + " to " + std::to_string(row.maximum);
        return false;
    }
    to->*row.number = number;
    return true;
}

template <typename Attributes>
bool SetNamed(const std::vector<AttributeRow<Attributes>>& table, std::string_view name,
              std::string_view value, Attributes* to, std::string* why) {
    for (const AttributeRow<Attributes>& row : table) {
        if (name == row.name) return SetRow(row, value, to, why);
    }
    *why = "there is no attribute \"" + std::string(name) + "\"; there are:";
    for (const AttributeRow<Attributes>& row : table)
        *why += std::string(" ") + row.name;
    return false;
}

template <typename Attributes>
bool ParseFile(std::string_view content, Attributes* to, std::string* why) {
    Attributes parsed;
    for (int line = 1; !content.empty(); ++line) {
        const std::size_t end = std::min(content.find('\n'), content.size());
        const std::string_view text =
            Trimmed(content.substr(0, std::min(end, content.substr(0, end).find('#'))));
        content.remove_prefix(std::min(end + 1, content.size()));
        if (text.empty()) continue;
        const std::size_t equals = text.find('=');
        std::string reason = "no '=' between name and value";
        if (equals == std::string_view::npos ||
            !SetAttribute(Trimmed(text.substr(0, equals)), Trimmed(text.substr(equals + 1)), &parsed,
                          &reason)) {
            *why = "line " + std::to_string(line) + ": " + reason;
            return false;
        }
    }
    *to = parsed;
    return true;
}

template <typename Attributes>
std::string RowText(const AttributeRow<Attributes>& row, const Attributes& from) {
    if (row.text != nullptr) return from.*row.text;
    if (row.words != nullptr) return WordAt(row.words, from.*row.number - row.minimum);
    return std::to_string(from.*row.number);
}

template <typename Attributes>
std::string FormatFile(const std::vector<AttributeRow<Attributes>>& table, const Attributes& from) {
    std::string content;
    for (const AttributeRow<Attributes>& row : table) {
        content += std::string("# ") + row.help;
        if (row.words != nullptr) {
            std::string choices = row.words;
            std::replace(choices.begin(), choices.end(), '|', ' ');
            content += " One of: " + choices + ".";
        }
        content += std::string("\n") + row.name + " = " + RowText(row, from) + "\n\n";
    }
    return content;
}

bool IsSameFile(const FileInfo& a, const FileInfo& b) {
    return a.identity == b.identity && a.bytes == b.bytes && a.writeTimeNs == b.writeTimeNs &&
           a.changeTimeNs == b.changeTimeNs;
}

template <typename Attributes>
bool Refresh(WatchedAttributes<Attributes>* watched, std::string* why) {
    FileInfo now;
    const OsStatus status = StatPath(watched->path, &now);
    if (status == OsStatus::NotFound) {
        if (!watched->isRead || watched->seen.identity != 0) watched->values = Attributes();
        watched->seen = FileInfo();
        watched->isRead = true;
        return true;
    }
    if (status != OsStatus::Ok) {
        *why = watched->path + ": " + LastOsErrorText();
        return false;
    }
    const bool settled = watched->readAtNs - now.changeTimeNs > kClockTickNs;
    if (watched->isRead && settled && IsSameFile(now, watched->seen)) return true;
    std::string content;
    const std::int64_t readAtNs = FileClockNs();
    if (ReadWholeFile(watched->path, &content) != OsStatus::Ok) {
        *why = watched->path + ": " + LastOsErrorText();
        return false;
    }
    std::string reason;
    if (!ParseAttributes(content, &watched->values, &reason)) {
        *why = watched->path + ", " + reason;
        return false;
    }
    watched->seen = now;
    watched->readAtNs = readAtNs;
    watched->isRead = true;
    return true;
}

}  // namespace

const std::vector<AttributeRow<QmgrAttributes>>& QmgrAttributeTable() {
    using A = QmgrAttributes;
    static const std::vector<AttributeRow<A>> table = {
        {"state", &A::state, nullptr, 0, 3, "running|quiescing|stopping|ended",
         "What programs meet: quiescing is 2161, stopping 2162, ended 2059 on connect and 2009 afterwards."},
        {"default", &A::isDefault, nullptr, 0, 1, "no|yes",
         "The queue manager that a blank name means, when there are several."},
        {"ccsid", &A::ccsid, nullptr, 1, 65535, nullptr,
         "Character set of messages that name none (1208 is UTF-8)."},
        {"max_uncommitted", &A::maxUncommitted, nullptr, 1, 999999999, nullptr,
         "Messages one unit of work may hold; the next one is refused with 2024."},
        {"max_message_length", &A::maxMessageLength, nullptr, 0, 104857600, nullptr,
         "Longest message in bytes; longer ones are refused with 2031."},
        {"channel_max_message_length", &A::channelMaxMessageLength, nullptr, 0, 104857600, nullptr,
         "The server's end of a client's message limit; a longer get buffer is refused with 2010."},
        {"channel", nullptr, &A::channel, 0, 0, nullptr,
         "Channel that clients must name, else 2540; empty: any."},
        {"listener", nullptr, &A::listener, 0, 0, nullptr,
         "Connection name, host(port), that clients must give, else 2538; empty: any."},
        {"sync", &A::sync, nullptr, 0, 1, "no|yes",
         "Force messages and commits to the disk: survives a loss of power, at a price."},
    };
    return table;
}

const std::vector<AttributeRow<QueueAttributes>>& QueueAttributeTable() {
    using A = QueueAttributes;
    static const std::vector<AttributeRow<A>> table = {
        {"get", &A::getInhibited, nullptr, 0, 1, "enabled|disabled", "Gets, when disabled, fail with 2016."},
        {"put", &A::putInhibited, nullptr, 0, 1, "enabled|disabled", "Puts, when disabled, fail with 2051."},
        {"shareable", &A::shareable, nullptr, 0, 1, "no|yes", "Whether several programs may read; no: 2042."},
        {"default_open", &A::defaultOpenExclusive, nullptr, 0, 1, "shared|exclusive",
         "What an open \"as the queue defines\" means."},
        {"max_depth", &A::maxDepth, nullptr, 0, 999999999, nullptr,
         "Messages the queue takes; the next put fails with 2053."},
        {"max_message_length", &A::maxMessageLength, nullptr, 0, 104857600, nullptr,
         "Longest message in bytes; longer ones are refused with 2030."},
        {"default_persistence", &A::defaultPersistence, nullptr, 0, 1, "no|yes",
         "Persistence reported for messages that leave it to the queue."},
        {"default_priority", &A::defaultPriority, nullptr, 0, 9, nullptr,
         "Priority reported for messages that leave it to the queue; the order is by arrival whatever it "
         "is."},
        {"backout_threshold", &A::backoutThreshold, nullptr, 0, 999999999, nullptr,
         "Reported to programs that inquire; not acted on."},
        {"backout_queue", nullptr, &A::backoutQueue, 0, 0, nullptr,
         "Reported to programs that inquire; not acted on."},
        {"file_format", nullptr, &A::fileFormat, 0, 0, nullptr,
         "Format of files that were copied in: empty for bytes left as they are, MQSTR for text that may be "
         "converted."},
        {"file_ccsid", &A::fileCcsid, nullptr, 0, 65535, nullptr,
         "Character set of files that were copied in; 0: the queue manager's."},
        {"settle_ms", &A::settleMs, nullptr, 0, 3600000, nullptr,
         "A copied-in file is taken when its last write is this long ago; renamed into place it is taken at "
         "once."},
    };
    return table;
}

bool SetAttribute(std::string_view name, std::string_view value, QmgrAttributes* to, std::string* why) {
    return SetNamed(QmgrAttributeTable(), name, value, to, why);
}
bool SetAttribute(std::string_view name, std::string_view value, QueueAttributes* to, std::string* why) {
    return SetNamed(QueueAttributeTable(), name, value, to, why);
}
bool ParseAttributes(std::string_view content, QmgrAttributes* to, std::string* why) {
    return ParseFile(content, to, why);
}
bool ParseAttributes(std::string_view content, QueueAttributes* to, std::string* why) {
    return ParseFile(content, to, why);
}
std::string FormatAttributes(const QmgrAttributes& from) {
    return FormatFile(QmgrAttributeTable(), from);
}
std::string FormatAttributes(const QueueAttributes& from) {
    return FormatFile(QueueAttributeTable(), from);
}
std::string AttributeText(const AttributeRow<QmgrAttributes>& row, const QmgrAttributes& from) {
    return RowText(row, from);
}
std::string AttributeText(const AttributeRow<QueueAttributes>& row, const QueueAttributes& from) {
    return RowText(row, from);
}
bool RefreshAttributes(WatchedAttributes<QmgrAttributes>* watched, std::string* why) {
    return Refresh(watched, why);
}
bool RefreshAttributes(WatchedAttributes<QueueAttributes>* watched, std::string* why) {
    return Refresh(watched, why);
}

}  // namespace spoolmq
