// SPDX-License-Identifier: Apache-2.0

// Gets the next message from the queue and limits the wait for it.
#pragma once

#include "mqi/mqi.h"

namespace mqamod {

/// Says how the wait for a message ended.
enum class GetEnd {
    kMqOutcome,     ///< MQGET returned a message or failed with a reason other than "no message"
    kReadWaitOver,  ///< no message came within RWAIT
    kTimedOut,      ///< the host's time-out has expired, now or earlier; a message received now is dropped
    kEofRequested,  ///< the host has asked for the end of the input; MQGET was not called
};

/// The outputs of an MQGET; they are zero before the first.
struct GetOutcome {
    MQLONG dataLength;
    MQLONG compCode;
    MQLONG reason;
};

struct GetResult {
    GetEnd end;
    /// These are the outputs of the most recent MQGET. If GetMessage made no MQGET, they are left over from
    /// an earlier Read.
    GetOutcome outcome;
    /// This is how often the message received last had been backed out before. An MQGET that fails does not
    /// change it.
    MQLONG backoutCount;
};

/// Calls MQGET again and again, each time for at most the wait interval, until MQGET returns a message or
/// fails, or a limit is reached.
///   buffer  out  BKSZ bytes, changed only by an MQGET that returns data, with or without a warning
/// Requires an open queue.
[[nodiscard]] GetResult GetMessage(void* buffer);

}  // namespace mqamod
