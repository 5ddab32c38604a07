// SPDX-License-Identifier: Apache-2.0

// Lists the messages of the module with cause and action: the rows of diag/messages.inc.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "mqam/explain/recovery.h"
#include "mqam/module/error_text.h"

namespace mqam {

/// Says where a message appears.
enum class Shown : std::uint8_t {
    kErrorText,
    /// It appears in the trace file only.
    kTrace,
    /// It is formatted, but another text is reported in its place.
    kNowhere,
    /// It is never made; the row keeps its number from being given to another message.
    kReserved,
};

struct ModuleMessage {
    /// The number is 143 in "MQA0143"; it is 0 for a message without a number.
    int number;
    /// For a numbered message this is the printf format in angle brackets; for a message without a number it
    /// is the text, up to the first '%' if it has one.
    const char* format;
    /// For a message without a number: the failing call that it is recognised with, or null if the call does
    /// not matter.
    const char* failingCall;
    Shown shown;
    Recovery recovery;
    /// The requests of the host during which the message is made.
    const char* request;
    /// The routines that make the message, each as "ROUTINE in FILE", with "; " between them.
    const char* emitter;
    const char* cause;
    const char* action;
};

/// Returns the numbered messages, ordered by number.
[[nodiscard]] std::span<const ModuleMessage> NumberedMessages();

/// Returns the messages without a number.
[[nodiscard]] std::span<const ModuleMessage> UnnumberedMessages();

/// Returns the row with this number, or null.
[[nodiscard]] const ModuleMessage* FindModuleMessage(int number);

/// Returns the row of an error text, or null if there is no such message. The row is found by the number of
/// the message or, without a number, by its text and the failing call.
[[nodiscard]] const ModuleMessage* FindModuleMessage(const ErrorText& error);

/// Returns the text of a message as the module prints it, with its placeholders: without the angle brackets
/// of a numbered one.
[[nodiscard]] std::string MessageTextOf(const ModuleMessage& message);

/// Returns "MQA0143", or "" for a message without a number.
[[nodiscard]] std::string MessageCodeOf(const ModuleMessage& message);

}  // namespace mqam
