// SPDX-License-Identifier: Apache-2.0

// Declares RunInput, which each harness defines, and the routines with which a harness reports a finding.
#pragma once

#include "fuzz/byte_reader.h"

/// Runs one input. A harness of the module finds the module in the state that it has when it is loaded.
void RunInput(ByteReader input);

/// Reports a finding: prints `sentence`, which should be true and is not, and ends the process.
[[noreturn]] void ReportFinding(const char* sentence);

inline void Require(bool holds, const char* sentence) {
    if (!holds) ReportFinding(sentence);
}
