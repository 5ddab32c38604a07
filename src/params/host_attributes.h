// What the host has set with attributes, read by the layers that act on it.
#pragma once

#include <cstdint>

/// The host has asked for the end of the input. Cleared by an Open that opens the queue, by nothing else.
[[nodiscard]] bool GenEofFlag();
void SetGenEofFlag(bool requested);

/// Keep the checkpoint file and the log at close instead of deleting them. Cleared by Shut.
[[nodiscard]] bool PreserveRestartInfo();
void SetPreserveRestartInfo(bool preserve);

/// The read time-out: whether there is one, and its seconds. Lasts until the module is unloaded.
[[nodiscard]] bool TimeoutEnabled();
[[nodiscard]] std::int32_t TimeoutSeconds();
void EnableTimeout(std::int32_t seconds);
