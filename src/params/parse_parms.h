// SPDX-License-Identifier: Apache-2.0

// Does what Init does with the parameters: it sets the defaults, reads the initialization string and the
// parameter file, checks the rules that concern several keywords, opens the trace file, writes the report of
// the parameters in effect, and derives what depends on them.
#pragma once

#include <cstdint>

#include "mqamod.h"

namespace mqamod {

/// Reads the parameters and puts them into effect. Requires a stored trace level of 0.
///   initString  in  length bytes; it ends earlier at a NUL. Null means an empty string
/// Returns pmrcOK; or pmrcFailure, with an error text, at the first failure. Nothing that was done before is
/// undone.
[[nodiscard]] ReturnCode ParseParms(const char* initString, std::int32_t length);

}  // namespace mqamod
