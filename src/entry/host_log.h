// The host's log: a host object whose function takes the start-up report.
#pragma once

#include <cstdint>

#include "diag/return_codes.h"

/// Takes over the host's log handle and at once hands it the host-log form of the start-up report.
///   value   in  the handle; at most its first 8 bytes count, a shorter value leaves the rest of the handle
///   zero length  in  bytes
/// Returns pmrcOK; pmrcBadAttrValue when the host's function refuses, or when the handle leads to no
/// function;
///   pmrcFailure, with an error text, when there is no memory for the call's buffer. The handle counts as
///   supplied in every case.
[[nodiscard]] ReturnCode TakeHostLogHandle(const char* value, std::uint32_t length);

/// Prints the start-up report to standard output: the host-log form when the host has supplied its handle,
/// else the console form.
void PrintReport();
