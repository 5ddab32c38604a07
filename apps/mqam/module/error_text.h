// SPDX-License-Identifier: Apache-2.0

// Splits the module's error text into its parts, so that an operator can read each on a line of its own.
//
// The text is "<module>/<function>(<severity>).  --ERROR: <message>--Failing function: <call>--Error
// occured while processing <file kind>--Reason: <reason>." It may lack the failing call, and it may lack the
// file kind together with the reason. There are no other separators, and messages quote names and paths that
// users choose, so the labels after the message are searched for from the end of the text.
#pragma once

#include <string>
#include <string_view>

namespace mqam {

struct ErrorText {
    std::string module;
    std::string function;     ///< the routine that the module names
    std::string severity;     ///< "!ERROR!", "!warning!" or "info"
    std::string message;      ///< without its number and brackets
    int messageNumber = 0;    ///< 143 for "MQA0143: <...>", 0 for a message without a number
    std::string failingCall;  ///< empty if the text names no call
    std::string fileKind;     ///< "Parameter", "Log", "Checkpoint", "Temp", or empty
    std::string reason;       ///< the system's message, or empty
    int mqReason = 0;         ///< the MQ reason code that the message quotes, or 0
};

/// Parses an error text. Returns false if the text has another form; then every field is empty or 0.
[[nodiscard]] bool ParseErrorText(std::string_view text, ErrorText& parsed);

}  // namespace mqam
