// SPDX-License-Identifier: Apache-2.0

// Lists every MQ reason that the calls of the module can return: its name, what it means, how it usually
// comes about and what to do.
//
// The rows follow the lists of reasons in IBM's reference pages for MQCONNX (with MQCONN), MQOPEN, MQGET,
// MQCMIT, MQBACK, MQCLOSE and MQDISC on all platforms, and the codes of the pages that those refer to: TLS,
// channels, reconnection and exits. The texts are our own. A test compares the numbers and names with IBM's
// header cmqc.h.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mqam/explain/recovery.h"

namespace mqam {

struct MqReason {
    std::uint16_t number;
    /// MQ's name, with "MQRC_".
    const char* name;
    /// One letter for each call that returns the reason; NameVerbs returns their names.
    const char* verbs;
    Recovery recovery;
    /// A clause without a capital letter or a full stop, such as "the queue does not exist".
    const char* meaning;
    /// One or more sentences.
    const char* causes;
    /// Sentences that say what to type. Words in capital letters stand for names of the user's own.
    const char* action;
};

/// Returns all rows, ordered by number. 0 (MQRC_NONE) is one of them.
[[nodiscard]] const std::vector<MqReason>& AllMqReasons();

/// Returns the row of a reason code other than 0, or null.
[[nodiscard]] const MqReason* FindMqReason(int number);

/// Returns the row with this name, or null. Upper and lower case are treated alike, and "MQRC_" may be
/// missing.
[[nodiscard]] const MqReason* FindMqReason(std::string_view name);

/// Returns the names of the calls that return the reason, such as "MQOPEN, MQGET"; or an empty string for
/// MQRC_NONE.
[[nodiscard]] std::string NameVerbs(const MqReason& reason);

}  // namespace mqam
