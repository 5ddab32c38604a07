#include "mqam/target/sqlite/sqlite_target.h"

namespace mqam {

std::unique_ptr<Target> MakeSqliteTarget(const SqliteTargetSettings& /*settings*/, std::string& complaint) {
    complaint = "this program was built without SQLite: give --to FILE with --restart-file";
    return nullptr;
}

}  // namespace mqam
