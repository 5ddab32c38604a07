// SPDX-License-Identifier: Apache-2.0
#include "mqam/explain/module_messages.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace mqam {

namespace {

constexpr Shown kErrorText = Shown::kErrorText;
constexpr Shown kTrace = Shown::kTrace;
constexpr Shown kNowhere = Shown::kNowhere;
constexpr Shown kReserved = Shown::kReserved;
constexpr Recovery kPermanent = Recovery::kPermanent;
constexpr Recovery kTransient = Recovery::kTransient;
constexpr Recovery kByReason = Recovery::kByReason;
constexpr Recovery kWarning = Recovery::kWarning;

constexpr auto kTableOrder = std::to_array<ModuleMessage>({
#define MESSAGE(name, number, format, shown, recovery, request, emitter, cause, action) \
    {number, format, nullptr, shown, recovery, request, emitter, cause, action},
#define UNNUMBERED(text, call, shown, recovery, request, emitter, cause, action)
#include "diag/messages.inc"
});

constexpr auto kNumbered = [] {
    auto rows = kTableOrder;
    std::ranges::sort(rows, {}, &ModuleMessage::number);
    return rows;
}();

constexpr auto kUnnumbered = std::to_array<ModuleMessage>({
#define MESSAGE(name, number, format, shown, recovery, request, emitter, cause, action)
#define UNNUMBERED(text, call, shown, recovery, request, emitter, cause, action) \
    {0, text, call, shown, recovery, request, emitter, cause, action},
#include "diag/messages.inc"
});

bool Fits(const ModuleMessage& row, const ErrorText& error) {
    if (row.failingCall != nullptr && error.failingCall != row.failingCall) return false;
    const std::string_view text = row.format;
    const std::size_t variable = text.find('%');
    if (variable == std::string_view::npos) return error.message == text;
    return error.message.starts_with(text.substr(0, variable));
}

}  // namespace

std::span<const ModuleMessage> NumberedMessages() {
    return kNumbered;
}

std::span<const ModuleMessage> UnnumberedMessages() {
    return kUnnumbered;
}

const ModuleMessage* FindModuleMessage(int number) {
    const auto* const row = std::ranges::find(kNumbered, number, &ModuleMessage::number);
    return row == kNumbered.end() ? nullptr : row;
}

const ModuleMessage* FindModuleMessage(const ErrorText& error) {
    if (error.messageNumber != 0) return FindModuleMessage(error.messageNumber);
    const auto* const row =
        std::ranges::find_if(kUnnumbered, [&error](const ModuleMessage& one) { return Fits(one, error); });
    return row == kUnnumbered.end() ? nullptr : row;
}

std::string MessageTextOf(const ModuleMessage& message) {
    std::string_view text = message.format;
    if (message.number != 0 && text.starts_with('<') && text.ends_with('>')) {
        text.remove_prefix(1);
        text.remove_suffix(1);
    }
    return std::string(text);
}

std::string MessageCodeOf(const ModuleMessage& message) {
    if (message.number == 0) return "";
    char code[16];
    std::snprintf(code, sizeof code, "MQA%04d", message.number);
    return code;
}

}  // namespace mqam
