// SPDX-License-Identifier: Apache-2.0
#include "mqam/target/sqlite/sqlite_vfs.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>

namespace mqam {

namespace {

// The iVersion that we report for both structures. A newer SQLite may append methods that we do not forward.
constexpr int kVersionCopied = 3;

// A file begins with a pointer to its methods. `own` comes first, so the same pointer also leads to the system's.
struct Methods {
    sqlite3_io_methods own;  // the system's methods, except for reads
    const sqlite3_io_methods* system;
};

sqlite3_vfs* systemFiles;
sqlite3_vfs ownFiles;
// SQLite uses one set of methods for the database and one for its journal, which needs no locks.
std::array<Methods, 4> allMethods;

int ReadMappingFsCorruption(sqlite3_file* file, void* bytes, int count, sqlite3_int64 offset) {
    const auto* const methods = reinterpret_cast<const Methods*>(file->pMethods);
    const int code = methods->system->xRead(file, bytes, count, offset);
    return code == SQLITE_IOERR_CORRUPTFS ? SQLITE_IOERR_READ : code;
}

// Returns the methods that forward to `system`, or null if there are too many.
const Methods* FindMethods(const sqlite3_io_methods* system) {
    for (Methods& methods : allMethods) {
        if (methods.system == nullptr) {
            methods = {*system, system};
            methods.own.xRead = ReadMappingFsCorruption;
            methods.own.iVersion = std::min(system->iVersion, kVersionCopied);
        }
        if (methods.system == system) return &methods;
    }
    return nullptr;
}

int OpenFile(sqlite3_vfs* /*own*/, const char* name, sqlite3_file* file, int flags, int* flagsOut) {
    const int code = systemFiles->xOpen(systemFiles, name, file, flags, flagsOut);
    const Methods* const methods = file->pMethods == nullptr ? nullptr : FindMethods(file->pMethods);
    if (methods != nullptr) file->pMethods = &methods->own;
    return code;
}

bool RegisterFiles() {
    systemFiles = sqlite3_vfs_find(nullptr);
    if (systemFiles == nullptr) return false;
    ownFiles = *systemFiles;
    ownFiles.iVersion = std::min(systemFiles->iVersion, kVersionCopied);
    ownFiles.zName = "mqam";
    ownFiles.pNext = nullptr;
    ownFiles.xOpen = OpenFile;
    return sqlite3_vfs_register(&ownFiles, 0) == SQLITE_OK;
}

}  // namespace

const char* RegisterSqliteVfs() {
    static const bool registered = RegisterFiles();
    return registered ? ownFiles.zName : nullptr;
}

}  // namespace mqam
