// SPDX-License-Identifier: Apache-2.0
#include "mqam/target/sqlite/sqlite_target.h"

namespace mqam {

Status MakeSqliteTarget(const SqliteTargetSettings& /*settings*/, std::unique_ptr<Target>& /*target*/) {
    return Status::Refused("this program was built without SQLite: give --to FILE with --restart-file");
}

}  // namespace mqam
