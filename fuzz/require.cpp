#include <cstdio>
#include <cstdlib>

#include "fuzz/harness.h"

void Require(bool holds, const char* sentence) {
    if (holds) return;
    (void)std::fprintf(stderr, "fuzz: does not hold: %s\n", sentence);
    std::abort();
}
