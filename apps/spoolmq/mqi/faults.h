// The fault plan of a test: which call of which verb fails how, or ends the process. See README.md for the
// grammar.
#pragma once

#include <string>

#include "mqi/mqi.h"

namespace spoolmq {

enum class Verb { Mqconn, Mqconnx, Mqdisc, Mqopen, Mqclose, Mqget, Mqput, Mqput1, Mqcmit, Mqback, Mqinq };

enum class FaultKind {
    None,
    Fail,       ///< the call has no effect and reports the codes
    FailAfter,  ///< the call takes effect, then reports the codes
    KillBefore,
    KillAfter,
};

struct Fault {
    FaultKind kind = FaultKind::None;
    MQLONG compCode = 0;
    MQLONG reason = 0;
};

/// Reads the plan of SPOOLMQ_FAULTS and SPOOLMQ_FAULT_FILE, the first time it is called in the process.
/// False, every time, when there is something in it that cannot be understood; *why names the line.
[[nodiscard]] bool LoadFaultPlan(std::string* why);
/// Counts a call of the verb and says what is to happen to it.
[[nodiscard]] Fault NextFault(Verb verb);

}  // namespace spoolmq
