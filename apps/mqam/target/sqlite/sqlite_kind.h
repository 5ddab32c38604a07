// SPDX-License-Identifier: Apache-2.0

// A SQLite table as a kind of target, with the restart state in the same database.
#pragma once

#include "mqam/target/target_kind.h"

namespace mqam {

extern const TargetKind kSqliteTargetKind;

}  // namespace mqam
