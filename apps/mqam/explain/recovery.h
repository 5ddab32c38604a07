// SPDX-License-Identifier: Apache-2.0

// Says what another attempt would bring after a failure if nothing changed.
#pragma once

#include <cstdint>

namespace mqam {

/// The names are those of the column `recovery` in diag/messages.inc.
enum class Recovery : std::uint8_t {
    /// The same failure comes again: someone has to change something first.
    kPermanent,
    /// Another attempt may succeed.
    kTransient,
    /// The message does not decide it; the reason that it names does.
    kByReason,
    /// Nothing failed.
    kWarning,
};

}  // namespace mqam
