// SPDX-License-Identifier: Apache-2.0

// Keeps what the host has set with PutAttribute, for the layers that act on it.
#pragma once

#include <cstdint>

namespace mqamod {

/// Returns whether the host has asked for the end of the input.
[[nodiscard]] bool GenEofFlag();
void SetGenEofFlag(bool requested);

/// Returns whether Close and Shut keep the checkpoint file and the log instead of deleting them.
[[nodiscard]] bool PreserveRestartInfo();
void SetPreserveRestartInfo(bool preserve);

/// These return whether there is a time-out for reads, and its seconds.
[[nodiscard]] bool TimeoutEnabled();
[[nodiscard]] std::int32_t TimeoutSeconds();
void EnableTimeout(std::int32_t seconds);

}  // namespace mqamod
