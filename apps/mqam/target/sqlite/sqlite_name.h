// SPDX-License-Identifier: Apache-2.0

// Parses the name of a SQLite target: sqlite:FILE?table=NAME.
#pragma once

#include <string>

#include "mqam/base/status.h"

namespace mqam {

inline constexpr char kSqlitePrefix[] = "sqlite:";

struct SqliteName {
    std::string file;
    std::string table;  ///< as the user wrote it; SQLite does not distinguish upper and lower case
};

/// The name in lower case: the same for every way to write the name of one table.
[[nodiscard]] std::string LowerCase(const std::string& name);

/// Parses the name of a target that begins with kSqlitePrefix. The table is "records" if none is named. Refuses an empty
/// or unknown part, and a table name that is not made of letters, digits and underscores.
Status ParseSqliteName(const std::string& target, SqliteName& name);

}  // namespace mqam
