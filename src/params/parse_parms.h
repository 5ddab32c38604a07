// The parameter work of Init: defaults, initialization string, parameter file, cross-keyword rules, trace
// file, report of the parameters in effect, and what is derived from them.
#pragma once

#include <cstdint>

#include "mqamod.h"

/// Reads the parameters and puts them into effect. The trace level must have been set to 0 before.
///   initString  in  length bytes, not necessarily NUL-terminated; a NUL among them ends it; null is the
///   empty string
/// Returns pmrcOK; or pmrcFailure, with an error text, at the first failure. Nothing done before it is
/// undone.
[[nodiscard]] ReturnCode ParseParms(const char* initString, std::int32_t length);
