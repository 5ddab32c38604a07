// SPDX-License-Identifier: Apache-2.0
#include "mqam/target/sqlite/sqlite_name.h"

#include <string_view>

namespace mqam {

namespace {

constexpr std::string_view kTableParameter = "table=";
constexpr std::string_view kOwnTable = "mqam_restart";
constexpr std::string_view kReservedBeginning = "sqlite_";
constexpr std::string_view kNameLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";

bool CanBeTable(const std::string& table) {
    const std::string lower = LowerCase(table);
    return !lower.empty() && table.find_first_not_of(kNameLetters) == std::string::npos &&
           !lower.starts_with(kReservedBeginning) && lower != kOwnTable;
}

}  // namespace

std::string LowerCase(const std::string& name) {
    std::string lower = name;
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

Status ParseSqliteName(const std::string& target, SqliteName& name) {
    const std::string rest = target.substr(std::string_view(kSqlitePrefix).size());
    const std::size_t mark = rest.find('?');
    name.file = rest.substr(0, mark);
    name.table = "records";
    if (name.file.empty()) {
        return Status::Refused("'" + target + "' names no database: sqlite:FILE or sqlite:FILE?table=NAME");
    }
    if (mark == std::string::npos) return {};
    const std::string parameter = rest.substr(mark + 1);
    if (!parameter.starts_with(kTableParameter)) {
        return Status::Refused("'" + parameter + "' is not known after the database: sqlite:FILE?table=NAME");
    }
    name.table = parameter.substr(kTableParameter.size());
    if (!CanBeTable(name.table)) {
        return Status::Refused(
            "'" + name.table +
            "' cannot be the table: a name of letters, digits and underscores is needed, not one that "
            "SQLite or mqam uses itself");
    }
    return {};
}

}  // namespace mqam
