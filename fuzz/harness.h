// SPDX-License-Identifier: Apache-2.0

// Declares what each harness defines. It is called once for every input, with the module as freshly loaded.
#pragma once

#include "fuzz/byte_reader.h"

/// Runs the module on one input.
void RunInput(ByteReader input);

/// Reports a finding: ends the process with the sentence that is not true.
[[noreturn]] void ReportFinding(const char* sentence);

inline void Require(bool holds, const char* sentence) {
    if (!holds) ReportFinding(sentence);
}
