// The attributes that the host puts.
#pragma once

#include "mqamod.h"

/// The PutAttribute request: acts on GEN_EOF, PRESERVE_RESTART_INFO, TIMEOUT_SECONDS and ZBQ_HL_LOG_HANDLE,
/// accepts a fixed list of other names without acting, and traces the outcome.
///   block  in  not kept; the value ends at its NUL or with its length
/// Returns pmrcOK;
///   pmrcBadAttrName   the name is unknown; no error text
///   pmrcBadAttrValue  the value is refused and changes nothing but the host's log handle; no error text
///   pmrcFailure       memory ran out, with an error text
[[nodiscard]] ReturnCode PutAttribute(const AttributeBlock& block);

/// The GetAttribute request: traces the name. Returns pmrcNotSupported, always.
[[nodiscard]] ReturnCode GetAttribute(const AttributeBlock& block);
