// What an operator does next, as data: by the module's message number, by MQ's reason code, and by the text
// of the messages that have no number.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "mqam/module/error_text.h"

namespace mqam {

/// What a failure needs before another attempt can succeed.
enum class Remedy : std::uint8_t {
    kTime,    ///< it may pass by itself
    kChange,  ///< somebody has to change something
};

struct MessageAdvice {
    std::uint16_t number;  ///< as in MQA0143
    Remedy remedy;
    const char* next;
};

struct ReasonAdvice {
    std::uint16_t reason;
    Remedy remedy;
    const char* name;     ///< MQ's name
    const char* meaning;  ///< in a few words
    const char* next;
};

struct TextAdvice {
    const char* beginning;    ///< of the message; a lone blank means a message of blanks
    const char* failingCall;  ///< that must be named with it, or null for any
    const char* next;
};

[[nodiscard]] std::span<const MessageAdvice> AllMessageAdvice();
[[nodiscard]] std::span<const ReasonAdvice> AllReasonAdvice();
[[nodiscard]] std::span<const TextAdvice> AllTextAdvice();

/// Returns the row of a reason code, or null.
[[nodiscard]] const ReasonAdvice* FindReasonAdvice(int reason);

/// Whether the failure stays until somebody changes something, by its message's number or its reason.
[[nodiscard]] bool StaysSo(const ErrorText& error);

/// Returns what to do next, a line each: what fits the message (by number, else by text), then what fits the
/// MQ reason. Empty when no table knows either.
[[nodiscard]] std::vector<std::string> FindAdvice(const ErrorText& error);

}  // namespace mqam
