// The host's log: a host object whose function takes the start-up report.
#pragma once

#include <cstdint>

#include "mqamod.h"

/// Takes over the host's log handle and at once hands it the host-log form of the start-up report.
///   value   in  the handle; at most its first 8 bytes count, behind a shorter one the handle is zero
///   length  in  bytes
/// Returns pmrcOK;
///   pmrcBadAttrValue  the host's function refuses, or the handle leads to no function; the handle is kept
///   pmrcFailure       no memory for the call's buffer, with an error text; the handle stays what it was
/// In every case a handle counts as supplied from now on.
[[nodiscard]] ReturnCode TakeHostLogHandle(const char* value, std::uint32_t length);

/// Prints the start-up report to standard output: the host-log form when the host has supplied its handle,
/// else the console form.
void PrintReport();
