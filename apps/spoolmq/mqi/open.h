// Opening objects, for MQOPEN and for MQPUT1's open of its own.
#pragma once

#include "spoolmq/mqi/verb_frame.h"

namespace spoolmq {

/// Opens what the descriptor names and fills its output fields. On success *object is the open object.
[[nodiscard]] Outcome OpenObjectOf(Connection* connection, mqi::MQOD* od, MQLONG options, OpenObject* object);

}  // namespace spoolmq
