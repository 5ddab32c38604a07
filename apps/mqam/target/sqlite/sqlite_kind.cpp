// SPDX-License-Identifier: Apache-2.0
#include "mqam/target/sqlite/sqlite_kind.h"

#include "mqam/target/sqlite/sqlite_name.h"
#include "mqam/target/sqlite/sqlite_target.h"

namespace mqam {

namespace {

Status CheckSqliteOptions(const TargetRequest& request) {
    if (!request.restartFile.empty()) {
        return Status::Refused(
            "--restart-file does not go with a SQLite target: the database keeps the restart information");
    }
    if (request.formatGiven) {
        return Status::Refused("--format does not go with a SQLite target: a row is a record");
    }
    return {};
}

Status MakeSqliteTarget(const TargetRequest& request, std::unique_ptr<Target>& target) {
    SqliteName name;
    Status parsed = ParseSqliteName(request.name, name);
    if (!parsed.IsOk()) return parsed;
    name.file = RealPath(name.file);
    return MakeSqliteTarget({name, request.force, request.append}, target);
}

Status ReadState(const std::string& place, std::optional<RestartState>& state) {
    std::unique_ptr<Target> target;
    TargetRequest request;
    request.name = place;
    const Status made = MakeSqliteTarget(request, target);
    // Without SQLite there is no target.
    return target != nullptr ? target->LoadState(state) : made;
}

}  // namespace

const TargetKind kSqliteTargetKind = {
    kSqlitePrefix,
    "sqlite:FILE?table=NAME",
    "rows of a SQLite table (default table: records), which keeps the restart information itself",
    true,
    "restart information in",
    CheckSqliteOptions,
    MakeSqliteTarget,
    ReadState,
};

}  // namespace mqam
