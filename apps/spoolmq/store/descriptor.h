// SPDX-License-Identifier: Apache-2.0

// Writes and reads the descriptor of a message as text that a person can read. Each line is one "Field=value"
// with MQMD's own field names. Character fields are written as they are, without trailing blanks; byte fields
// as hexadecimal digits. A field that has its default value is omitted.
#pragma once

#include <string>
#include <string_view>

#include "spoolmq/base/mqi_server.h"

namespace spoolmq {

/// Returns the descriptor as text. It does not contain BackoutCount, which is part of the message's file
/// name.
[[nodiscard]] std::string FormatDescriptor(const mqi::MQMD& descriptor);
/// Returns the descriptor that the text describes. A field that the text does not name has its default. A
/// line that is not understood is skipped, so that a mistake made while editing a descriptor loses one field
/// and not the message.
[[nodiscard]] mqi::MQMD ParseDescriptor(std::string_view text);

/// Copies the text into a fixed field of `size` characters, padded with blanks or truncated.
void FillField(char* field, std::size_t size, std::string_view text);
/// Returns the text of a fixed field: up to its first NUL, without trailing blanks.
[[nodiscard]] std::string_view FieldText(const char* field, std::size_t size);
[[nodiscard]] std::string HexDigits(const unsigned char* bytes, std::size_t count);

}  // namespace spoolmq
