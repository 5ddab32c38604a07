// SPDX-License-Identifier: Apache-2.0

// Declares the tables that AllMqReasons puts together. No other file needs them.
#pragma once

#include <span>

#include "mqam/explain/mq_reasons.h"

namespace mqam {

/// These are the letters of all calls: MQCONNX, MQOPEN, MQGET, MQCMIT, MQBACK, MQCLOSE, MQDISC.
inline constexpr const char* kAnyVerb = "COGMBLD";

[[nodiscard]] std::span<const MqReason> ConnectionReasons();
[[nodiscard]] std::span<const MqReason> TlsReasons();
[[nodiscard]] std::span<const MqReason> QueueReasons();
[[nodiscard]] std::span<const MqReason> GetReasons();
[[nodiscard]] std::span<const MqReason> UnitReasons();
[[nodiscard]] std::span<const MqReason> ZosReasons();

}  // namespace mqam
