// `mqam queue list` and `mqam queue show`: what is in the spool folder, for people.
#pragma once

#include <cstdint>
#include <string>

namespace mqam {

/// Queue managers with their queues; of one queue manager when it is named. Returns an ExitCode.
[[nodiscard]] int RunQueueList(const std::string& spool, const std::string& queueManager);

struct QueueShowOptions {
    std::string spool;
    std::string queueManager;
    std::string queue;
    std::string message;       ///< file name of one message; empty: the queue
    bool body = false;         ///< nothing but the message's bytes
    std::uint64_t limit = 20;  ///< messages listed
};

[[nodiscard]] int RunQueueShow(const QueueShowOptions& options);

}  // namespace mqam
