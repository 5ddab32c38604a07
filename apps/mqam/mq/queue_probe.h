// SPDX-License-Identifier: Apache-2.0

// Finds out what the module does not report, with MQ calls of its own that take no message: it opens the queue as the
// module did, and browses. An MQ connection belongs to a process, so this runs in a process of its own (see
// mqam/load/probe_process.h).
#pragma once

#include <cstdint>
#include <string>

#include "mqi/mqi.h"

namespace mqam {

/// How the probe opens the queue.
enum class ProbeOpen : std::uint8_t {
    kAsLoad,           ///< for input, as the queue is defined
    kAsExclusiveLoad,  ///< for input, exclusively
    kOnlyToBrowse,     ///< also possible while the load that failed has the queue open exclusively
};

struct ProbeRequest {
    std::string queueManager;
    std::string queue;
    std::string channel;  ///< of a client connection; empty: MQ's own
    std::string server;
    ProbeOpen open = ProbeOpen::kOnlyToBrowse;
    std::int64_t maxRecordBytes = 0;
};

enum class ProbeStep : std::uint8_t {
    kConnect,  ///< the connection failed
    kOpen,     ///< the queue could not be opened
    kBrowse,   ///< no message can be read
    kDone,     ///< a message could be read
};

struct ProbeResult {
    ProbeStep step = ProbeStep::kConnect;
    MQLONG reason = 0;  ///< of the step that failed
    std::string
        libraryFailure;  ///< the MQ libraries that were tried, with the loader's reasons; if none was loaded
    std::int64_t firstBytes = 0;  ///< length of the first message; with kDone
    std::int64_t longBytes =
        -1;  ///< length of the first message that is longer than maxRecordBytes; -1 if there is none
    std::string longMessageId;  ///< its identifier, as hexadecimal digits
};

/// Makes the calls. Everything is closed again.
[[nodiscard]] ProbeResult ProbeQueue(const ProbeRequest& request);

}  // namespace mqam
