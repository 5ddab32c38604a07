// SPDX-License-Identifier: Apache-2.0

// Carries out the requests. Each routine reads its inputs from the data block, calls the layer that carries
// the request out, and stores the outputs in the block. The dispatcher calls it only in a phase in which the
// request is legal.
#pragma once

#include "mqamod.h"

namespace mqamod {

[[nodiscard]] ReturnCode RunInit(void* data);
[[nodiscard]] ReturnCode RunOpen(void* data);
[[nodiscard]] ReturnCode RunClose(void* data);
[[nodiscard]] ReturnCode RunCloseRewind(void* data);
[[nodiscard]] ReturnCode RunRead(void* data);
[[nodiscard]] ReturnCode RunWrite(void* data);
[[nodiscard]] ReturnCode RunGetPos(void* data);
[[nodiscard]] ReturnCode RunSetPos(void* data);
[[nodiscard]] ReturnCode RunShut(void* data);
[[nodiscard]] ReturnCode RunId(void* data);
[[nodiscard]] ReturnCode RunGetAttribute(void* data);
[[nodiscard]] ReturnCode RunPutAttribute(void* data);

}  // namespace mqamod
