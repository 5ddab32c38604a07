// Records as rows of a SQLite table, the restart state in the same database: one transaction makes both
// durable. restartable_sqlite_none.cpp stands in where the program is built without SQLite.
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

/// Returns the target, or null with a complaint. Nothing is opened yet.
///
/// The table has the columns id (INTEGER PRIMARY KEY, counting up in the order of the queue) and record
/// (BLOB); it is made when it is missing. The state is a row of the table mqam_restart: target table and the
/// text that a restart file would hold.
[[nodiscard]] std::unique_ptr<Target> MakeSqliteTarget(const SqliteTargetSettings& settings,
                                                       std::string& complaint);

}  // namespace mqam
