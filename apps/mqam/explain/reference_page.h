// SPDX-License-Identifier: Apache-2.0

// Makes the page docs/messages.md from the tables.
#pragma once

#include <string>

namespace mqam {

/// Returns the whole page in Markdown. Only the long texts of some messages make lines of more than 120
/// characters.
[[nodiscard]] std::string FormatReferencePage();

}  // namespace mqam
