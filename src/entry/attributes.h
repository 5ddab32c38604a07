// SPDX-License-Identifier: Apache-2.0

// Serves the requests with which the host sets attributes or asks for them.
#pragma once

#include "mqamod.h"

namespace mqamod {

/// Serves the PutAttribute request: acts on GEN_EOF, PRESERVE_RESTART_INFO, TIMEOUT_SECONDS and
/// ZBQ_HL_LOG_HANDLE, accepts a fixed list of other names without acting on them, and traces the outcome.
///   block  in  the value ends at its first NUL, or after valueLength bytes
/// Returns pmrcOK;
///   pmrcBadAttrName   the name is unknown; no error text
///   pmrcBadAttrValue  the value is refused; only a refused log handle still replaces the previous one; no
///                     error text
///   pmrcFailure       memory ran out; with an error text
[[nodiscard]] ReturnCode PutAttribute(const AttributeBlock& block);

/// Serves the GetAttribute request: traces the name. Always returns pmrcNotSupported.
[[nodiscard]] ReturnCode GetAttribute(const AttributeBlock& block);

}  // namespace mqamod
