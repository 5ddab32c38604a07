// The requests: each takes its data block, has the layer that owns the matter do it, and fills the block's
// outputs. Called by the dispatcher when the module is in the state that the request needs.
#pragma once

#include "mqamod.h"

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
