// SPDX-License-Identifier: Apache-2.0

// Copies the structures that callers pass. They may have any published version and any address. A structure
// is copied up to the length of its version, the fields of later versions get their defaults, and no more
// than that length is written back.
#pragma once

#include "spoolmq/base/mqi_server.h"

namespace spoolmq {

/// Each of these copies a caller's structure. It returns false if the pointer is null, StrucId does not match
/// or Version was never published; `to` is then undefined.
[[nodiscard]] bool LoadStructure(const void* from, mqi::MQCNO& to);
[[nodiscard]] bool LoadStructure(const void* from, mqi::MQOD& to);
[[nodiscard]] bool LoadStructure(const void* from, mqi::MQMD& to);
[[nodiscard]] bool LoadStructure(const void* from, mqi::MQGMO& to);
[[nodiscard]] bool LoadStructure(const void* from, mqi::MQPMO& to);

/// Each of these copies a structure back to the caller's, which has the same version.
void StoreStructure(const mqi::MQCNO& from, void* to);
void StoreStructure(const mqi::MQOD& from, void* to);
void StoreStructure(const mqi::MQMD& from, void* to);
void StoreStructure(const mqi::MQGMO& from, void* to);
void StoreStructure(const mqi::MQPMO& from, void* to);

}  // namespace spoolmq
