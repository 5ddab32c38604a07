// SPDX-License-Identifier: Apache-2.0

// Carries out the fault plan of a test, which says which call of which verb fails, in which way, or where the
// process is killed. README.md describes its grammar.
#pragma once

#include <string>

#include "mqi/mqi.h"
#include "spoolmq/base/status.h"

namespace spoolmq {

enum class Verb {
    kMqconn,
    kMqconnx,
    kMqdisc,
    kMqopen,
    kMqclose,
    kMqget,
    kMqput,
    kMqput1,
    kMqcmit,
    kMqback,
    kMqinq
};

enum class FaultKind {
    kNone,
    kFail,       ///< the call has no effect and reports the codes
    kFailAfter,  ///< the call takes effect and then reports the codes
    kKillBefore,
    kKillAfter,
};

struct Fault {
    FaultKind kind = FaultKind::kNone;
    MQLONG compCode = 0;
    MQLONG reason = 0;
};

/// Reads the plan from SPOOLMQ_FAULTS and SPOOLMQ_FAULT_FILE on the first call in the process. If the plan
/// cannot be read or is not valid, every call returns kFailed, with an error that names the file or the line.
Status LoadFaultPlan();
/// Counts a call of the verb and returns what is to happen to it.
[[nodiscard]] Fault NextFault(Verb verb);

}  // namespace spoolmq
