// SPDX-License-Identifier: Apache-2.0

// The page docs/messages.md, made from the tables.
#pragma once

#include <string>

namespace mqam {

/// Returns the whole page in Markdown, with lines of at most 120 characters but for long texts of messages.
[[nodiscard]] std::string FormatReferencePage();

}  // namespace mqam
