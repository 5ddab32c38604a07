// SPDX-License-Identifier: Apache-2.0
#include "mqam/target/file/file_kind.h"
#include "mqam/target/sqlite/sqlite_kind.h"
#include "mqam/target/target_kind.h"

namespace mqam {

namespace {

constexpr const TargetKind* kTargetKinds[] = {
    &kSqliteTargetKind,
    &kFileTargetKind,
};

}  // namespace

std::span<const TargetKind* const> AllTargetKinds() {
    return kTargetKinds;
}

const TargetKind& FindTargetKind(const std::string& name) {
    for (const TargetKind* kind : kTargetKinds) {
        if (name.starts_with(kind->prefix)) return *kind;
    }
    return kFileTargetKind;
}

}  // namespace mqam
