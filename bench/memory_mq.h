// SPDX-License-Identifier: Apache-2.0

// The MQ library of the benchmarks: a queue manager in memory with one queue that is never empty. All messages
// are the same, and the benchmark chooses their size. Nothing is stored, so a get costs one copy into the
// caller's buffer, and a commit costs nothing.
#pragma once

#include <cstddef>

/// Sets the size of the following messages, at most kLargestMessage bytes. Exported under this name.
inline constexpr std::size_t kLargestMessage = 1 << 20;
using SetMessageBytesFunction = void (*)(std::size_t bytes);
