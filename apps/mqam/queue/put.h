// `mqam queue put`: messages from files, standard input or a generator.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace mqam {

struct QueuePutOptions {
    std::string spool;
    std::string queueManager;
    std::string queue;
    std::vector<std::string> files;  ///< "-" is standard input; empty: standard input, unless count is given
    bool lines = false;              ///< each line is a message
    bool framed = false;             ///< messages behind their length, 4 bytes little-endian
    std::uint64_t count = 0;         ///< generated messages
    std::uint64_t seed = 1;
    std::string sizes;  ///< "MIN-MAX" bytes; empty: as long as an order is
    unsigned binaryPercent = 0;
    std::string recordPath;  ///< receives what was put, framed
    std::string format;      ///< of the descriptor; empty: none, the message is described by the queue
    std::int32_t ccsid = 0;
    bool quiet = false;
};

/// Returns an ExitCode.
[[nodiscard]] int RunQueuePut(const QueuePutOptions& options);

}  // namespace mqam
