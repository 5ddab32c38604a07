// SPDX-License-Identifier: Apache-2.0

// The MQ library of the benchmarks: a queue manager in memory with one queue. All messages are the same. Nothing is
// stored, so a get costs one copy into the caller's buffer, and a commit costs nothing.
//
// A benchmark can choose the size of the messages by SetMessageBytes, and its queue is never empty. For other
// programs, such as mqam, each connection reads environment variables: MEMORY_MQ_BYTES is the size of a
// message, and the queue is empty after MEMORY_MQ_MESSAGES gets. A load makes several attempts, each in a new
// process. MEMORY_MQ_EMPTY_MARK names a file that is created when the queue becomes empty, so that later
// attempts find it empty, too.
#pragma once

#include <cstddef>

/// Sets the size of the following messages, at most kLargestMessage bytes. It is exported under this name.
inline constexpr std::size_t kLargestMessage = 1 << 20;
using SetMessageBytesFunction = void (*)(std::size_t bytes);
