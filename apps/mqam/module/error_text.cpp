// SPDX-License-Identifier: Apache-2.0
#include "mqam/module/error_text.h"

#include <array>
#include <cctype>

namespace mqam {

namespace {

constexpr std::string_view kErrorLabel = "--ERROR: ";
constexpr std::string_view kCallLabel = "--Failing function: ";
constexpr std::string_view kFileLabel = "--Error occured while processing ";
constexpr std::string_view kReasonLabel = "--Reason: ";
constexpr std::array<std::string_view, 4> kFileKinds = {"Parameter", "Log", "Checkpoint", "Temp"};

bool IsDigit(char c) {
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

// Reads up to nine digits, so that the number fits into an int.
int ReadNumber(std::string_view text) {
    int number = 0;
    for (std::size_t i = 0; i < text.size() && i < 9 && IsDigit(text[i]); ++i) {
        number = number * 10 + (text[i] - '0');
    }
    return number;
}

void TakeFileAndReason(std::string_view& rest, ErrorText& parsed) {
    const std::size_t reasonAt = rest.rfind(kReasonLabel);
    if (reasonAt == std::string_view::npos) return;
    const std::string_view before = rest.substr(0, reasonAt);
    for (const std::string_view kind : kFileKinds) {
        const std::string ending = std::string(kFileLabel) + std::string(kind);
        if (before.size() >= ending.size() && before.substr(before.size() - ending.size()) == ending) {
            parsed.fileKind = kind;
            parsed.reason = rest.substr(reasonAt + kReasonLabel.size());
            rest = before.substr(0, before.size() - ending.size());
            return;
        }
    }
}

void TakeFailingCall(std::string_view& rest, ErrorText& parsed) {
    const std::size_t at = rest.rfind(kCallLabel);
    if (at == std::string_view::npos) return;
    parsed.failingCall = rest.substr(at + kCallLabel.size());
    rest = rest.substr(0, at);
}

// Splits "MQA0143: <text>" into the number and the text.
void TakeMessage(std::string_view message, ErrorText& parsed) {
    parsed.message = message;
    constexpr std::string_view kPrefix = "MQA";
    if (message.substr(0, kPrefix.size()) != kPrefix) return;
    const std::size_t bracket = message.find(": <");
    if (bracket == std::string_view::npos || message.back() != '>') return;
    const std::string_view digits = message.substr(kPrefix.size(), bracket - kPrefix.size());
    if (digits.empty() || digits.find_first_not_of("0123456789") != std::string_view::npos) return;
    parsed.messageNumber = ReadNumber(digits);
    parsed.message = message.substr(bracket + 3, message.size() - bracket - 4);
}

int FindMqReason(std::string_view message) {
    for (const std::string_view label : {"MQCONNX : ", "eason code = ", "eason code "}) {
        const std::size_t at = message.rfind(label);
        if (at == std::string_view::npos) continue;
        const int reason = ReadNumber(message.substr(at + label.size()));
        if (reason != 0) return reason;
    }
    return 0;
}

}  // namespace

bool ParseErrorText(std::string_view text, ErrorText& parsed) {
    parsed = ErrorText{};
    const std::size_t errorAt = text.find(kErrorLabel);
    if (errorAt == std::string_view::npos || text.back() != '.') return false;
    const std::string_view head = text.substr(0, errorAt);
    constexpr std::string_view kHeadEnd = ").  ";
    const std::size_t slash = head.rfind('/');
    const std::size_t open = head.rfind('(');
    if (slash == std::string_view::npos || open == std::string_view::npos || open < slash ||
        head.size() < open + 1 + kHeadEnd.size() || head.substr(head.size() - kHeadEnd.size()) != kHeadEnd) {
        return false;
    }
    parsed.module = head.substr(0, slash);
    parsed.function = head.substr(slash + 1, open - slash - 1);
    parsed.severity = head.substr(open + 1, head.size() - kHeadEnd.size() - open - 1);

    std::string_view rest = text.substr(errorAt + kErrorLabel.size());
    rest.remove_suffix(1);
    TakeFileAndReason(rest, parsed);
    TakeFailingCall(rest, parsed);
    TakeMessage(rest, parsed);
    parsed.mqReason = FindMqReason(parsed.message);
    return true;
}

}  // namespace mqam
