// Getting the next message within the limits of waiting.
#pragma once

#include <cstdint>

#include "mqi/mqi.h"

/// How the wait for a message ended.
enum class GetEnd {
    Outcome,       ///< MQGET ended in a message or a failure other than "no message": LastGet tells
    ReadWaitOver,  ///< no message within RWAIT: as a rule LastGet tells "no message"
    TimedOut,      ///< the host's time-out has expired, now or in an earlier read: what was got is dropped
    EofRequested,  ///< the host asked for the end of the input; MQGET was not called
};

/// Gets with MQGET, in slices of at most the wait interval, until a message or a failure comes or a limit is
/// reached.
///   buffer  out  BKSZ bytes; changed only by an MQGET that delivers something, also one that warns
[[nodiscard]] GetEnd GetMessage(void* buffer);

/// The outputs of the last MQGET; they survive from one read to the next. Zeros before the first.
struct GetOutcome {
    MQLONG dataLength;
    MQLONG compCode;
    MQLONG reason;
};
[[nodiscard]] const GetOutcome& LastGet();

/// How often the message got last was got and backed out before, 0 before the first. An MQGET that fails
/// leaves it.
[[nodiscard]] MQLONG LastBackoutCount();
