// The descriptor of a message as text, one "Field=value" a line under MQMD's own field names, so that a
// person can read it: character fields as they are (without trailing blanks), byte fields as hexadecimal
// digits. A field that has its default value is left out.
#pragma once

#include <string>
#include <string_view>

#include "spoolmq/base/mqi_server.h"

namespace spoolmq {

/// BackoutCount is left out: it is part of the message's file name.
[[nodiscard]] std::string FormatDescriptor(const mqi::MQMD& descriptor);
/// Starts from the defaults; lines that are not understood are passed over, so that a descriptor edited by
/// hand costs the field and not the message.
[[nodiscard]] mqi::MQMD ParseDescriptor(std::string_view text);
/// Copies the text into a fixed field of `size` characters, blank padded or cut.
void FillField(char* field, std::size_t size, std::string_view text);
/// The text of a fixed field: up to its first NUL, without trailing blanks.
[[nodiscard]] std::string_view FieldText(const char* field, std::size_t size);
[[nodiscard]] std::string HexDigits(const unsigned char* bytes, std::size_t count);

}  // namespace spoolmq
