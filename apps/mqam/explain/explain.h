// SPDX-License-Identifier: Apache-2.0

// Explains a code that a load reported: what it means, how it usually comes about and what to do.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace mqam {

/// One reading of a code.
struct Explanation {
    struct Paragraph {
        /// The label, such as "meaning" or "causes".
        const char* label;
        /// One or more sentences.
        std::string text;
    };

    /// The heading, for example "2085 MQRC_UNKNOWN_OBJECT_NAME".
    std::string title;
    /// The kind of code and where it comes from, for example "MQ reason of MQOPEN".
    std::string kind;
    std::vector<Paragraph> paragraphs;
};

/// Returns every reading of a code. Upper and lower case are treated alike. A code is
///   MQA0151, 151           a message of the module; also the text of a message without a number
///   2085, MQRC_..., ...    an MQ reason; the name without MQRC_, too
///   9, pmrcEOF             a return code of the module
///   exit 3, 3              an exit code of `mqam`
///   H6, T2, G1, L5         a rule, a guarantee or a limit
/// A number can have several readings; "exit", "return", "message" or "reason" before it selects one. The
/// result is empty if there is no such code.
[[nodiscard]] std::vector<Explanation> Explain(std::string_view code);

/// Returns up to five codes that are most similar to a code that does not exist, the most similar first.
[[nodiscard]] std::vector<std::string> FindNearMatches(std::string_view code);

/// Selects one of the lists that `mqam explain --list` prints.
enum class CodeList { kMessages, kReasons, kReturnCodes, kExitCodes, kRules };

/// One row of a list.
struct ListedCode {
    std::string code;  ///< empty for a message without a number
    std::string meaning;
};

/// Returns the rows of a list.
[[nodiscard]] std::vector<ListedCode> CodesOf(CodeList list);

/// Returns one line for each code of a list, each with its line end.
[[nodiscard]] std::string ListCodes(CodeList list);

/// Returns an explanation as text for a terminal, each line with its line end.
[[nodiscard]] std::string FormatExplanation(const Explanation& explanation);

}  // namespace mqam
