// SPDX-License-Identifier: Apache-2.0

// Writes one JSON value as a single line: every answer and log line that `mqam` makes for programs.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace mqam {

/// Returns the text as a JSON string with its quotes. A byte that is not part of valid UTF-8 becomes U+FFFD,
/// so that the result is valid whatever a message or a path contains.
[[nodiscard]] std::string JsonString(std::string_view text);

/// Writes members and elements in the order of the calls, with the commas between them. The caller opens and
/// closes objects and arrays in pairs, and gives a key before each value in an object.
class JsonWriter {
  public:
    JsonWriter& BeginObject();
    JsonWriter& EndObject();
    JsonWriter& BeginArray();
    JsonWriter& EndArray();
    JsonWriter& Key(std::string_view name);

    JsonWriter& Text(std::string_view value);
    JsonWriter& Number(std::uint64_t value);
    JsonWriter& SignedNumber(std::int64_t value);
    /// Writes a number with three decimal places. JSON has neither infinity nor NaN: these become null.
    JsonWriter& Decimal(double value);
    JsonWriter& Bool(bool value);
    JsonWriter& Null();

    /// These write a member: its key and its value.
    JsonWriter& TextMember(std::string_view key, std::string_view value) { return Key(key).Text(value); }
    JsonWriter& NumberMember(std::string_view key, std::uint64_t value) { return Key(key).Number(value); }
    JsonWriter& BoolMember(std::string_view key, bool value) { return Key(key).Bool(value); }

    /// Returns what was written, without a line end.
    [[nodiscard]] const std::string& Line() const { return text_; }

  private:
    JsonWriter& Write(std::string_view value);
    JsonWriter& Begin(char bracket);
    JsonWriter& End(char bracket);

    std::string text_;
    std::vector<bool> hasElement_;  // for each open object or array
    bool followsKey_ = false;
};

}  // namespace mqam
