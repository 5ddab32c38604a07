#include "apps/mqam/restartable_sqlite.h"

std::unique_ptr<RestartableTarget> MakeSqliteTarget(const SqliteTargetSettings& /*settings*/,
                                                    std::string& complaint) {
    complaint = "this program was built without SQLite: give --to FILE with --restart-file";
    return nullptr;
}
