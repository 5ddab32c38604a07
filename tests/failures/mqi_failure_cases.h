// SPDX-License-Identifier: Apache-2.0

// Lists every completion and reason code that IBM documents for each verb that the module calls, and what the
// call may have done when it reports them.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tests/failures/queue_manager_double.h"

/// Says which call of a load fails.
enum class When { First, Middle, Last, EmptyQueue };

/// Says how the saving of a record fails, so that its message is backed out. MQBACK is called for no other
/// reason.
enum class SaveFault { None, Tell, Write, Flush };

struct MqiFailureCase {
    std::string name;  ///< last part of the test's name, for example "FAILED_2009_middle_committed"
    When when = When::First;
    MqiFault fault{};  ///< the fault, without its `nth`
    SaveFault saveFault = SaveFault::None;
    bool retried = false;  ///< MQOPEN: a second attempt follows, which succeeds
};

inline void PrintTo(const MqiFailureCase& failure, std::ostream* stream) {
    *stream << failure.name;
}

std::vector<MqiFailureCase> MqiFailureCases(Verb verb);
