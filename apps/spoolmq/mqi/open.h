// SPDX-License-Identifier: Apache-2.0

// Opens objects, for MQOPEN and MQPUT1.
#pragma once

#include "spoolmq/mqi/verb_frame.h"

namespace spoolmq {

/// Opens what the descriptor names and fills the descriptor's output fields. On success `object` is the open
/// object.
[[nodiscard]] Outcome OpenNamedObject(Connection& connection, mqi::MQOD& od, MQLONG options,
                                      OpenObject& object);

}  // namespace spoolmq
