// SPDX-License-Identifier: Apache-2.0

// Serves the requests that set the attributes of the host.
#pragma once

#include "mqamod.h"

namespace mqamod {

/// Serves the PutAttribute request: acts on GEN_EOF, PRESERVE_RESTART_INFO, TIMEOUT_SECONDS and
/// ZBQ_HL_LOG_HANDLE, accepts a fixed list of other names without acting, and traces the outcome.
///   block  in  the value ends at its NUL or with its length
/// Returns pmrcOK;
///   pmrcBadAttrName   the name is unknown; no error text
///   pmrcBadAttrValue  the value is refused; only a log handle is replaced all the same; no error text
///   pmrcFailure       memory ran out, with an error text
[[nodiscard]] ReturnCode PutAttribute(const AttributeBlock& block);

/// Serves the GetAttribute request: traces the name. Always returns pmrcNotSupported.
[[nodiscard]] ReturnCode GetAttribute(const AttributeBlock& block);

}  // namespace mqamod
