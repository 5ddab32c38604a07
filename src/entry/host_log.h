// SPDX-License-Identifier: Apache-2.0

// Reaches the host's log: a host object whose function takes the start-up report.
#pragma once

#include <cstdint>

#include "mqamod.h"

namespace mqamod {

/// Takes over the host's log handle and immediately passes it the host-log form of the start-up report.
///   value   in  the handle: the first 8 bytes are used, and a shorter handle is filled up with zeros
///   length  in  bytes
/// Returns pmrcOK;
///   pmrcBadAttrValue  the host's function refuses, or the handle does not lead to a function; the handle is
///                     kept
///   pmrcFailure       memory for the call ran out; with an error text; the handle does not change
/// In every case a handle counts as supplied from now on.
[[nodiscard]] ReturnCode TakeHostLogHandle(const char* value, std::uint32_t length);

/// Prints the start-up report to standard output: the host-log form if the host has supplied its handle,
/// otherwise the console form.
void PrintReport();

}  // namespace mqamod
