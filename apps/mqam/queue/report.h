// SPDX-License-Identifier: Apache-2.0

// `mqam queue list` and `mqam queue show` print the contents of the spool directory.
#pragma once

#include <cstdint>
#include <string>

namespace mqam {

/// Lists the queue managers with their queues, or only the one that is named. Returns an ExitCode.
[[nodiscard]] int RunQueueList(const std::string& spool, const std::string& queueManager);

struct QueueShowOptions {
    std::string spool;
    std::string queueManager;
    std::string queue;
    std::string message;       ///< file name of one message; if empty, the queue is shown
    bool body = false;         ///< write only the bytes of the message
    std::uint64_t limit = 20;  ///< how many messages are listed
};

/// Shows a queue manager, a queue or a message. Returns an ExitCode.
[[nodiscard]] int RunQueueShow(const QueueShowOptions& options);

}  // namespace mqam
