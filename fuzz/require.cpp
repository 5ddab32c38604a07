// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <cstdlib>

#include "fuzz/harness.h"

void ReportFinding(const char* sentence) {
    (void)std::fprintf(stderr, "fuzz: does not hold: %s\n", sentence);
    std::abort();
}
