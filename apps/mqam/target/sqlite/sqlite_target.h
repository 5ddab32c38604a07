// SPDX-License-Identifier: Apache-2.0

// Keeps records as rows of a SQLite table and the restart state in the same database: one transaction makes
// both durable. sqlite_target_none.cpp takes the place of sqlite_target.cpp if the program is built without
// SQLite.
#pragma once

#include <memory>
#include <string>

#include "mqam/target/sqlite/sqlite_name.h"
#include "mqam/target/target.h"

namespace mqam {

struct SqliteTargetSettings {
    SqliteName name;      ///< the file as an absolute path
    bool force = false;   ///< a new load replaces the rows of the table
    bool append = false;  ///< a new load adds to them
};

/// Makes the target; nothing is opened yet. Refused if the program was built without SQLite; `target` is then unchanged.
///
/// The table has the columns id (INTEGER PRIMARY KEY, ascending in the order of the queue) and record (BLOB); it is
/// created if it is missing. The state is a row of the table mqam_restart: the name of the table, and the text that a
/// restart file would contain.
Status MakeSqliteTarget(const SqliteTargetSettings& settings, std::unique_ptr<Target>& target);

}  // namespace mqam
