// SPDX-License-Identifier: Apache-2.0

// Makes a SQLite table a kind of target, with the restart state in the same database.
#pragma once

#include "mqam/target/target_kind.h"

namespace mqam {

extern const TargetKind kSqliteTargetKind;

}  // namespace mqam
