// SPDX-License-Identifier: Apache-2.0
#include "mqam/queue/message_source.h"

#include <cerrno>
#include <cstdint>
#include <cstring>

namespace mqam {

namespace {

SourceResult FailRead(const char* what, std::string& error) {
    error = what;
    return SourceResult::kFailed;
}

SourceResult ReadWhole(std::FILE* file, std::string& message, std::string& error) {
    char part[65536];
    for (std::size_t got = 0; (got = std::fread(part, 1, sizeof part, file)) > 0;) {
        message.append(part, got);
        if (message.size() > kMessageBytesMax)
            return FailRead(
                "longer than 100 MB, the longest message that MQ allows; is --lines or --length missing?",
                error);
    }
    return std::ferror(file) != 0 ? FailRead(std::strerror(errno), error) : SourceResult::kMessage;
}

SourceResult ReadLine(std::FILE* file, std::string& message, std::string& error) {
    int c = 0;
    while ((c = std::getc(file)) != EOF && c != '\n') {
        message += static_cast<char>(c);
        if (message.size() > kMessageBytesMax)
            return FailRead("a line is longer than 100 MB, the longest message that MQ allows", error);
    }
    if (std::ferror(file) != 0) return FailRead(std::strerror(errno), error);
    return c == EOF && message.empty() ? SourceResult::kEnd : SourceResult::kMessage;
}

SourceResult ReadFramed(std::FILE* file, std::string& message, std::string& error) {
    unsigned char head[4];
    const std::size_t got = std::fread(head, 1, sizeof head, file);
    if (got == 0 && std::ferror(file) == 0) return SourceResult::kEnd;
    if (got < sizeof head) return FailRead("it ends within a length; is it in the --length framing?", error);
    const std::uint32_t length = head[0] | static_cast<std::uint32_t>(head[1]) << 8 |
                                 static_cast<std::uint32_t>(head[2]) << 16 |
                                 static_cast<std::uint32_t>(head[3]) << 24;
    if (length > kMessageBytesMax)
        return FailRead("a length is above 100 MB; is it in the --length framing?", error);
    message.resize(length);
    if (std::fread(message.data(), 1, length, file) < length)
        return FailRead("it ends within a message; is it complete?", error);
    return SourceResult::kMessage;
}

}  // namespace

SourceResult ReadMessage(std::FILE* file, MessageFraming framing, bool isFirst, std::string& message,
                         std::string& error) {
    message.clear();
    switch (framing) {
        case MessageFraming::kWhole: return isFirst ? ReadWhole(file, message, error) : SourceResult::kEnd;
        case MessageFraming::kLines: return ReadLine(file, message, error);
        case MessageFraming::kLength: break;
    }
    return ReadFramed(file, message, error);
}

bool WriteFramed(std::FILE* file, const std::string& message) {
    const auto length = static_cast<std::uint32_t>(message.size());
    const unsigned char head[4] = {
        static_cast<unsigned char>(length), static_cast<unsigned char>(length >> 8),
        static_cast<unsigned char>(length >> 16), static_cast<unsigned char>(length >> 24)};
    return std::fwrite(head, 1, sizeof head, file) == sizeof head &&
           std::fwrite(message.data(), 1, message.size(), file) == message.size();
}

}  // namespace mqam
