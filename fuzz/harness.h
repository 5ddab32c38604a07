// What each harness defines: fuzz_main.cpp calls it once for every input, in a fresh life of the module.
#pragma once

#include "fuzz/byte_reader.h"

/// Gives one input to the module.
void RunInput(ByteReader input);

/// Ends the process with the sentence that does not hold: a finding.
[[noreturn]] void ReportFinding(const char* sentence);

inline void Require(bool holds, const char* sentence) {
    if (!holds) ReportFinding(sentence);
}
