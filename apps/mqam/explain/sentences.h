// SPDX-License-Identifier: Apache-2.0

// Converts the sentences and clauses of the tables into the form in which they are printed.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace mqam {

/// Returns a clause such as "the queue is empty" as a sentence: with a capital letter and a full stop.
[[nodiscard]] std::string MakeSentence(std::string_view clause);

/// Returns a sentence as a clause that can follow "mqam load: ": without the full stop, and with a lower-case
/// letter at the beginning unless the first word is a name such as "MQ".
[[nodiscard]] std::string MakeClause(std::string_view sentence);

/// Breaks text at blanks like WrapText, but never inside a command in backquotes, unless the command alone is
/// longer than a line: a command is to be copied as one.
[[nodiscard]] std::string WrapSentences(std::string_view text, std::size_t width);

/// Returns the first of several sentences, with its full stop.
[[nodiscard]] std::string FirstSentence(std::string_view sentences);

}  // namespace mqam
