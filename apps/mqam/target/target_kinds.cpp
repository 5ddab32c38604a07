// SPDX-License-Identifier: Apache-2.0
#include <array>

#include "mqam/target/file/file_kind.h"
#include "mqam/target/sqlite/sqlite_kind.h"
#include "mqam/target/target_kind.h"

namespace mqam {

namespace {

constexpr auto kTargetKinds = std::to_array<const TargetKind*>({
    &kSqliteTargetKind,
    &kFileTargetKind,
});

}  // namespace

std::span<const TargetKind* const> AllTargetKinds() {
    return kTargetKinds;
}

const TargetKind& FindTargetKind(const std::string& name) {
    // The last kind has an empty prefix: it takes every name that no other kind takes.
    for (const TargetKind* kind : std::span(kTargetKinds).first(kTargetKinds.size() - 1)) {
        if (name.starts_with(kind->prefix)) return *kind;
    }
    return *kTargetKinds.back();
}

}  // namespace mqam
