// SPDX-License-Identifier: Apache-2.0

// Splits the contents of files or of standard input into messages.
#pragma once

#include <cstdio>
#include <string>

namespace mqam {

enum class MessageFraming {
    kWhole,   ///< the file is one message
    kLines,   ///< each line, without its line feed (a carriage return before it is kept: it may be data)
    kLength,  ///< each message follows its length, 4 bytes little-endian
};

enum class SourceResult { kMessage, kEnd, kFailed };

inline constexpr std::size_t kMessageBytesMax = 104857600;  ///< the longest message that MQ allows: 100 MB

/// Reads the next message.
///   isFirst  in   whether this is the first message of the file: with kWhole, an empty file is one empty
///                 message
///   error    out  the error message, if the result is kFailed
[[nodiscard]] SourceResult ReadMessage(std::FILE* file, MessageFraming framing, bool isFirst,
                                       std::string& message, std::string& error);

/// Appends a message in the framing of kLength. Returns false if the file cannot be written.
[[nodiscard]] bool WriteFramed(std::FILE* file, const std::string& message);

}  // namespace mqam
