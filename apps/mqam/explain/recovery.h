// SPDX-License-Identifier: Apache-2.0

// What another attempt would bring after a failure, with nothing changed.
#pragma once

#include <cstdint>

namespace mqam {

/// The names are those of the column `recovery` in diag/messages.inc.
enum class Recovery : std::uint8_t {
    /// The same failure again: someone has to change something first.
    kPermanent,
    /// Possibly success.
    kTransient,
    /// The message does not decide it; the reason that it names does.
    kByReason,
    /// Nothing failed.
    kWarning,
};

}  // namespace mqam
