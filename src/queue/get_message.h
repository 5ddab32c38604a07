// SPDX-License-Identifier: Apache-2.0

// Gets the next message within the limits of waiting.
#pragma once

#include "mqi/mqi.h"

namespace mqamod {

/// Says how the wait for a message ended.
enum class GetEnd {
    kMqOutcome,     ///< MQGET returned a message or failed with a reason other than "no message"
    kReadWaitOver,  ///< no message came within RWAIT
    kTimedOut,  ///< the host's time-out has expired, now or in an earlier Read; a message got now is dropped
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
    /// Returns the outputs of the most recent MQGET. If this call did not reach an MQGET, they are those of
    /// an earlier Read.
    GetOutcome outcome;
    /// Returns how often the message got last had been backed out before. An MQGET that fails does not change
    /// it.
    MQLONG backoutCount;
};

/// Calls MQGET, in slices of at most the wait interval, until it returns a message, fails or reaches a limit.
///   buffer  out  BKSZ bytes, changed only by an MQGET that returns data, with or without a warning
/// Requires an open queue.
[[nodiscard]] GetResult GetMessage(void* buffer);

}  // namespace mqamod
