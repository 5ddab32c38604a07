// SPDX-License-Identifier: Apache-2.0

// Implements `mqam queue list` and `mqam queue show`, which print the contents of the spool directory.
#pragma once

#include <cstdint>
#include <string>

namespace mqam {

struct QueueListOptions {
    std::string spool;
    std::string queueManager;  ///< the one to list; if empty, all are listed
    bool json = false;         ///< answer with one JSON object on one line
};

/// Lists the queue managers with their queues. Returns an ExitCode.
[[nodiscard]] int RunQueueList(const QueueListOptions& options);

struct QueueShowOptions {
    std::string spool;
    std::string queueManager;
    std::string queue;
    std::string message;       ///< file name of one message; if empty, the queue is shown
    bool body = false;         ///< write only the bytes of the message
    bool json = false;         ///< answer with one JSON object on one line
    std::uint64_t limit = 20;  ///< how many messages are listed
};

/// Shows a queue manager, a queue or a message. Returns an ExitCode.
[[nodiscard]] int RunQueueShow(const QueueShowOptions& options);

}  // namespace mqam
