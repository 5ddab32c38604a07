// SPDX-License-Identifier: Apache-2.0

// Lists the module's return codes and the exit codes of `mqam`, with causes and action.
#pragma once

#include <span>

#include "mqam/base/exit_codes.h"
#include "mqam/explain/recovery.h"
#include "mqam/module/module_failure.h"

namespace mqam {

struct ReturnCodeRow {
    ReturnCode code;
    /// The name in mqamod.h.
    const char* name;
    /// A clause without a capital letter or a full stop.
    const char* meaning;
    /// The causes and the action are sentences.
    const char* causes;
    const char* action;
    Recovery recovery;
};

struct ExitCodeRow {
    ExitCode code;
    /// A clause without a capital letter or a full stop.
    const char* meaning;
    /// The causes and the action are sentences.
    const char* causes;
    const char* action;
    /// This is false for a code that `mqam load` does not use.
    bool isOfLoad;
};

/// Returns the rows ordered by code.
[[nodiscard]] std::span<const ReturnCodeRow> AllReturnCodes();
[[nodiscard]] std::span<const ExitCodeRow> AllExitCodes();

/// Returns the row of a return code, or null.
[[nodiscard]] const ReturnCodeRow* FindReturnCode(ReturnCode code);

}  // namespace mqam
