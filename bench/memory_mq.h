// SPDX-License-Identifier: Apache-2.0

// The MQ library of the benchmarks: a queue manager in memory with one queue. All messages are the same. Nothing is
// stored, so a get costs one copy into the caller's buffer, and a commit costs nothing.
//
// The queue is never empty, and the benchmark chooses the size of the messages by SetMessageBytes. A program that knows
// nothing of this library, such as mqam, chooses by the environment, which each connection reads: MEMORY_MQ_BYTES is the
// size, and after MEMORY_MQ_MESSAGES gets the queue is empty. A load makes several attempts, each in a new process; so that
// all find the same queue, MEMORY_MQ_EMPTY_MARK names a file that is created when the queue becomes empty.
#pragma once

#include <cstddef>

/// Sets the size of the following messages, at most kLargestMessage bytes. It is exported under this name.
inline constexpr std::size_t kLargestMessage = 1 << 20;
using SetMessageBytesFunction = void (*)(std::size_t bytes);
