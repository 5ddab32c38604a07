// SPDX-License-Identifier: Apache-2.0

// Makes a file a kind of target, with the restart state in a restart file.
#pragma once

#include "mqam/target/target_kind.h"

namespace mqam {

extern const TargetKind kFileTargetKind;

}  // namespace mqam
