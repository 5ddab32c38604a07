// SPDX-License-Identifier: Apache-2.0

// Lists the numbered rules, guarantees and limits of a load that can be restarted. docs/hosts.md has the same
// items; a test compares them.
#pragma once

#include <span>
#include <string_view>

namespace mqam {

struct LoadRule {
    /// The id, for example "H6", "T1", "G5" or "L12".
    const char* id;
    /// The name of a guarantee or a limit, such as "identical messages"; it is empty for a rule.
    const char* name;
    /// The first sentence, which can be understood alone.
    const char* statement;
    /// The rest: the reason, and what happens otherwise. It may be empty.
    const char* detail;
    /// What an operator does about it. It is empty for a rule, which `mqam` follows by itself.
    const char* action;
};

/// Returns the items in the order H, T, G, L.
[[nodiscard]] std::span<const LoadRule> AllLoadRules();

/// Returns the item with this id, or null. Upper and lower case are treated alike.
[[nodiscard]] const LoadRule* FindLoadRule(std::string_view id);

}  // namespace mqam
