#include "apps/mqam/sqlite_reads.h"

#include <sqlite3.h>

namespace {

sqlite3_vfs* systemFiles;
sqlite3_vfs ownFiles;
const sqlite3_io_methods* systemMethods;  // of the first file opened
sqlite3_io_methods ownMethods;            // the same but for reads

int ReadHonestly(sqlite3_file* file, void* bytes, int count, sqlite3_int64 offset) {
    const int code = systemMethods->xRead(file, bytes, count, offset);
    return code == SQLITE_IOERR_CORRUPTFS ? SQLITE_IOERR_READ : code;
}

int OpenFile(sqlite3_vfs* /*own*/, const char* name, sqlite3_file* file, int flags, int* flagsOut) {
    const int code = systemFiles->xOpen(systemFiles, name, file, flags, flagsOut);
    if (file->pMethods == nullptr) return code;
    if (systemMethods == nullptr) {
        systemMethods = file->pMethods;
        ownMethods = *systemMethods;
        ownMethods.xRead = ReadHonestly;
    }
    if (file->pMethods == systemMethods) file->pMethods = &ownMethods;
    return code;
}

bool RegisterFiles() {
    systemFiles = sqlite3_vfs_find(nullptr);
    if (systemFiles == nullptr) return false;
    ownFiles = *systemFiles;
    ownFiles.zName = "mqam";
    ownFiles.pNext = nullptr;
    ownFiles.xOpen = OpenFile;
    return sqlite3_vfs_register(&ownFiles, 0) == SQLITE_OK;
}

}  // namespace

const char* RegisterSqliteReads() {
    static const bool registered = RegisterFiles();
    return registered ? ownFiles.zName : nullptr;
}
