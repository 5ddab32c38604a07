// SPDX-License-Identifier: Apache-2.0

// The names by which the journal uses the streams and the writing of the operating-system layer.
#pragma once

#include "platform/file.h"
#include "platform/stream.h"

namespace mqjournal {

using platform::Stream;
using platform::WriteWhole;

}  // namespace mqjournal
