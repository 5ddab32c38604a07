// SPDX-License-Identifier: Apache-2.0

// Copies the structures that callers pass: of any published version, at any address. A structure is copied up
// to the length of its version, the fields of later versions have their defaults, and only that length is
// ever written back.
#pragma once

#include "spoolmq/base/mqi_server.h"

namespace spoolmq {

/// Each of these returns false when the pointer is null, StrucId does not match or Version was never
/// published; `to` is then undefined.
[[nodiscard]] bool LoadStructure(const void* from, mqi::MQCNO& to);
[[nodiscard]] bool LoadStructure(const void* from, mqi::MQOD& to);
[[nodiscard]] bool LoadStructure(const void* from, mqi::MQMD& to);
[[nodiscard]] bool LoadStructure(const void* from, mqi::MQGMO& to);
[[nodiscard]] bool LoadStructure(const void* from, mqi::MQPMO& to);

void StoreStructure(const mqi::MQCNO& from, void* to);
void StoreStructure(const mqi::MQOD& from, void* to);
void StoreStructure(const mqi::MQMD& from, void* to);
void StoreStructure(const mqi::MQGMO& from, void* to);
void StoreStructure(const mqi::MQPMO& from, void* to);

}  // namespace spoolmq
