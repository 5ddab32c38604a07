// SPDX-License-Identifier: Apache-2.0
#include "spoolmq/attributes/attributes.h"

#include <algorithm>
#include <charconv>

namespace spoolmq {

namespace {

Status Refused(std::string error) {
    return {StatusCode::kFailed, std::move(error)};
}

std::string_view Trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

// Returns the index of a word in "first|second|third", or -1.
std::int32_t IndexOfWord(std::string_view words, std::string_view word) {
    for (std::int32_t index = 0;; ++index) {
        const std::size_t end = std::min(words.find('|'), words.size());
        if (words.substr(0, end) == word) {
            return index;
        }
        if (end == words.size()) {
            return -1;
        }
        words.remove_prefix(end + 1);
    }
}

std::string WordAt(std::string_view words, std::int32_t index) {
    for (; index > 0; --index) {
        words.remove_prefix(std::min(words.find('|') + 1, words.size()));
    }
    return std::string(words.substr(0, words.find('|')));
}

std::string ChoicesOf(std::string words) {
    std::replace(words.begin(), words.end(), '|', ' ');
    return words;
}

template <typename Attributes>
Status SetRow(const AttributeRow<Attributes>& row, std::string_view value, Attributes& attributes) {
    if (row.text != nullptr) {
        attributes.*row.text = value;
        return {};
    }
    const std::string given = std::string(row.name) + " is \"" + std::string(value) + "\"";
    if (row.words != nullptr) {
        const std::int32_t index = IndexOfWord(row.words, value);
        if (index < 0) {
            return Refused(given + " but takes one of: " + ChoicesOf(row.words));
        }
        attributes.*row.number = row.minimum + index;
        return {};
    }
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
    if (error != std::errc() || end != value.data() + value.size() || number < row.minimum ||
        number > row.maximum) {
        return Refused(given + " but takes a number from " + std::to_string(row.minimum) + " to " +
                       std::to_string(row.maximum));
    }
    attributes.*row.number = number;
    return {};
}

template <typename Attributes>
Status SetNamed(const std::vector<AttributeRow<Attributes>>& table, std::string_view name,
                std::string_view value, Attributes& attributes) {
    for (const AttributeRow<Attributes>& row : table) {
        if (name == row.name) {
            return SetRow(row, value, attributes);
        }
    }
    std::string error = "there is no attribute \"" + std::string(name) + "\"; there are:";
    for (const AttributeRow<Attributes>& row : table) {
        error += std::string(" ") + row.name;
    }
    return Refused(std::move(error));
}

template <typename Attributes>
Status ParseLine(std::string_view line, Attributes& attributes) {
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) {
        return Refused("no '=' between name and value");
    }
    return SetAttribute(Trimmed(line.substr(0, equals)), Trimmed(line.substr(equals + 1)), attributes);
}

template <typename Attributes>
Status ParseText(std::string_view text, Attributes& attributes) {
    Attributes parsed;
    for (int number = 1; !text.empty(); ++number) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        const std::string_view setting = Trimmed(line.substr(0, line.find('#')));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (setting.empty()) {
            continue;
        }
        const Status status = ParseLine(setting, parsed);
        if (!status.IsOk()) {
            return Refused("line " + std::to_string(number) + ": " + status.error);
        }
    }
    attributes = parsed;
    return {};
}

template <typename Attributes>
std::string TextOfRow(const AttributeRow<Attributes>& row, const Attributes& attributes) {
    if (row.text != nullptr) {
        return attributes.*row.text;
    }
    if (row.words != nullptr) {
        return WordAt(row.words, attributes.*row.number - row.minimum);
    }
    return std::to_string(attributes.*row.number);
}

template <typename Attributes>
std::string FormatTable(const std::vector<AttributeRow<Attributes>>& table, const Attributes& attributes) {
    std::string text;
    for (const AttributeRow<Attributes>& row : table) {
        text += std::string("# ") + row.help;
        if (row.words != nullptr) {
            text += " One of: " + ChoicesOf(row.words) + ".";
        }
        text += std::string("\n") + row.name + " = " + TextOfRow(row, attributes) + "\n\n";
    }
    return text;
}

}  // namespace

Status SetAttribute(std::string_view name, std::string_view value, QmgrAttributes& attributes) {
    return SetNamed(QmgrAttributeTable(), name, value, attributes);
}
Status SetAttribute(std::string_view name, std::string_view value, QueueAttributes& attributes) {
    return SetNamed(QueueAttributeTable(), name, value, attributes);
}

Status ParseAttributes(std::string_view text, QmgrAttributes& attributes) {
    return ParseText(text, attributes);
}
Status ParseAttributes(std::string_view text, QueueAttributes& attributes) {
    return ParseText(text, attributes);
}

std::string FormatAttributes(const QmgrAttributes& attributes) {
    return FormatTable(QmgrAttributeTable(), attributes);
}
std::string FormatAttributes(const QueueAttributes& attributes) {
    return FormatTable(QueueAttributeTable(), attributes);
}

std::string AttributeText(const AttributeRow<QmgrAttributes>& row, const QmgrAttributes& attributes) {
    return TextOfRow(row, attributes);
}
std::string AttributeText(const AttributeRow<QueueAttributes>& row, const QueueAttributes& attributes) {
    return TextOfRow(row, attributes);
}

}  // namespace spoolmq
