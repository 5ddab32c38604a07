// The MQ library of the benchmarks: a queue manager in memory whose one queue never runs dry. Every message
// is the same, of a size that the benchmark chooses; nothing is kept, so a get costs one copy into the
// caller's buffer, and a commit nothing.
#pragma once

#include <cstddef>

/// The size of the messages that follow, at most kLargestMessage bytes. Exported by its name.
inline constexpr std::size_t kLargestMessage = 1 << 20;
using SetMessageBytesFunction = void (*)(std::size_t bytes);
