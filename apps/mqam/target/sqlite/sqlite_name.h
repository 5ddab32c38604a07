// The name of a SQLite target: sqlite:FILE?table=NAME.
#pragma once

#include <string>

namespace mqam {

inline constexpr char kSqlitePrefix[] = "sqlite:";

struct SqliteName {
    std::string file;
    std::string table;  ///< as the user wrote it; SQLite takes capital and small letters for the same
};

/// The name in small letters: the same for every way to write the name of one table.
[[nodiscard]] std::string LowerCase(const std::string& name);

/// Takes the name apart; the table is "records" when none is named. Returns false with a complaint when a
/// part is empty or unknown, or the table's name is not made of letters, digits and underscores.
[[nodiscard]] bool ParseSqliteName(const std::string& target, SqliteName& name, std::string& complaint);

}  // namespace mqam
