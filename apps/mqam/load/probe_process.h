// SPDX-License-Identifier: Apache-2.0

// Looks for the reason of a failure that the module does not report. The process that loads cannot: its connection has to
// stay as it is until it ends. So this very program runs once more, as a probe, and prints what it finds.
#pragma once

#include <cstdint>

#include "mqam/module/module_failure.h"

namespace mqam {

/// The hidden option of `mqam load` that makes it a probe; its value is a ProbeKind in digits.
inline constexpr const char* kProbeOption = "--probe-queue";

enum class ProbeKind : std::uint8_t {
    kNone,
    kOpen,         ///< the queue could not be opened, and the module does not say for which reason
    kLongMessage,  ///< a message is longer than the buffer, and the module does not say how long it is
    kLibrary,  ///< no MQ library could be loaded, and the module reports the loader's reasons only in its trace
    kEarlyEnd,  ///< the input ended early, and the module does not say why
};

/// Returns what a probe could add to the failure.
[[nodiscard]] ProbeKind ProbeKindOf(const ModuleFailure& failure);

/// Runs the probe and waits for it, but only for some seconds. It prints lines that continue an error message.
void RunProbeProcess(ProbeKind kind);

}  // namespace mqam
