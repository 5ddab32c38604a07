// SPDX-License-Identifier: Apache-2.0
#include <dlfcn.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "platform/os.h"

namespace mqamod {

const char kPathDelimiter = '/';
const char* const kBuildTarget = "64-bit Linux";
const MqLibraryNames kMqLibraryNames = {"libmqic_r.so", "libmqm_r.so", "/opt/mqm/lib64/"};

int DeleteByCommand(const char* path) {
    if (std::remove(path) == 0 || errno == ENOENT) return 0;
    return -1;
}

int CurrentProcessId() {
    return getpid();
}

void SleepMilliseconds(std::uint32_t milliseconds) {
    timespec rest = {static_cast<time_t>(milliseconds / 1000),
                     static_cast<long>(milliseconds % 1000) * 1000000};
    while (nanosleep(&rest, &rest) == -1 && errno == EINTR) {
    }
}

// A position has 8 bytes, but glibc's fpos_t is wider. For a binary stream the offset says the same.
bool GetStreamPosition(std::FILE* stream, std::int64_t& position) {
    const off_t offset = ftello(stream);
    if (offset == -1) return false;
    position = offset;
    return true;
}

bool SetStreamPosition(std::FILE* stream, std::int64_t position) {
    return fseeko(stream, position, SEEK_SET) == 0;
}

// The module looks each verb up by name, so the symbols can stay local to the handle. The library is never
// unloaded, because MQ's own threads may outlive the connection.
void* LoadSharedLibrary(const char* path, char* reason, std::size_t reasonBytes) {
    void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) std::snprintf(reason, reasonBytes, "%s", dlerror());
    return library;
}

void* FindLibrarySymbol(void* library, const char* name) {
    return dlsym(library, name);
}

}  // namespace mqamod
