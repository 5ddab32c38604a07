// SPDX-License-Identifier: Apache-2.0

// Checks the preconditions that the code states, in debug builds, in sanitizer builds and in the fuzzers. A
// release build contains none of the checks.
#pragma once

#if defined(MQAMOD_CHECK_INVARIANTS) || (!defined(NDEBUG) && !defined(MQAMOD_COVERAGE))

#include <cstdio>
#include <cstdlib>

/// Ends the process, with a line that names the condition and its place, if the condition does not hold.
#define MQAMOD_ASSERT(condition)                                                                             \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            (void)std::fprintf(stderr, "mqamod: %s:%d: %s does not hold\n", __FILE__, __LINE__, #condition); \
            std::abort();                                                                                    \
        }                                                                                                    \
    } while (false)

#else

#define MQAMOD_ASSERT(condition) static_cast<void>(0)

#endif
