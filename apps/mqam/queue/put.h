// SPDX-License-Identifier: Apache-2.0

// Implements `mqam queue put`, which puts messages from files, standard input or a generator.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace mqam {

struct QueuePutOptions {
    std::string spool;
    std::string queueManager;
    std::string queue;
    /// "-" is standard input. If there are no files, standard input is read, unless messages are generated.
    std::vector<std::string> files;
    bool lines = false;        ///< each line is a message
    bool framed = false;       ///< each message follows its length, 4 bytes little-endian
    bool generates = false;    ///< put generated messages, even if their number is 0
    std::uint64_t count = 0;   ///< the number of generated messages
    bool allowsEmpty = false;  ///< put messages without bytes, too
    std::uint64_t seed = 1;
    std::string sizes;  ///< "MIN-MAX" bytes, already checked; if empty, the lengths of orders
    unsigned binaryPercent = 0;
    std::string recordPath;  ///< the file to which each message is appended, framed, once it was put
    std::string format;      ///< MQMD format; if empty, the attributes of the queue describe the message
    std::int32_t ccsid = 0;
    bool quiet = false;
};

/// Puts the messages. Returns an ExitCode.
[[nodiscard]] int RunQueuePut(const QueuePutOptions& options);

}  // namespace mqam
