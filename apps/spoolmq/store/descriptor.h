// SPDX-License-Identifier: Apache-2.0

// The descriptor of a message as text that a person can read, one "Field=value" a line with MQMD's own field
// names. Character fields are written as they are, without trailing blanks; byte fields as hexadecimal digits.
// A field that has its default value is left out.
#pragma once

#include <string>
#include <string_view>

#include "spoolmq/base/mqi_server.h"

namespace spoolmq {

/// BackoutCount is left out because the message's file name holds it.
[[nodiscard]] std::string FormatDescriptor(const mqi::MQMD& descriptor);
/// Returns the defaults, changed by the text. A line that is not understood is skipped, so that a mistake made
/// while editing a descriptor loses one field and not the message.
[[nodiscard]] mqi::MQMD ParseDescriptor(std::string_view text);

/// Copies the text into a fixed field of `size` characters, padded with blanks or truncated.
void FillField(char* field, std::size_t size, std::string_view text);
/// Returns the text of a fixed field: up to its first NUL, without trailing blanks.
[[nodiscard]] std::string_view FieldText(const char* field, std::size_t size);
[[nodiscard]] std::string HexDigits(const unsigned char* bytes, std::size_t count);

}  // namespace spoolmq
