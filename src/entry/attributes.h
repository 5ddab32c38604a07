// The attributes that the host puts.
#pragma once

#include "entry/host_interface.h"

/// The PutAttribute request: acts on GEN_EOF, PRESERVE_RESTART_INFO, TIMEOUT_SECONDS and ZBQ_HL_LOG_HANDLE,
/// accepts a fixed list of other names without acting, and traces the outcome. Returns pmrcOK;
/// pmrcBadAttrName for an unknown name; pmrcBadAttrValue for a value that is refused; neither builds an
///   error text; pmrcFailure, with an error text, when memory runs out.
[[nodiscard]] ReturnCode PutAttribute(const AttributeBlock& block);

/// The GetAttribute request: traces the name. Returns pmrcNotSupported, always.
[[nodiscard]] ReturnCode GetAttribute(const AttributeBlock& block);
