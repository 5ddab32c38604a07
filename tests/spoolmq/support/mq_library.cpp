// SPDX-License-Identifier: Apache-2.0
#include "tests/spoolmq/support/mq_library.h"

#include <cstdio>
#include <cstdlib>

#include "platform/library.h"
#include "platform/paths.h"
#include "platform/system.h"

namespace {

platform::LibraryHandle LoadOrDie(const std::string& path) {
    std::string error;
    platform::LibraryHandle library = platform::OpenLibrary(path, error, platform::LibraryScope::kGlobal);
    if (library != nullptr) {
        return library;
    }
    std::fprintf(stderr, "cannot load %s: %s\n", path.c_str(), error.c_str());
    std::abort();
}

template <typename Function>
void Bind(const std::string& path, const char* name, Function* function) {
    *function = reinterpret_cast<Function>(FindVerb(path, name));
}

MqLibrary Load(bool isClient) {
    const std::string path = MqLibraryPath(isClient);
    MqLibrary library{};
    Bind(path, "MQCONN", &library.Conn);
    Bind(path, "MQCONNX", &library.Connx);
    Bind(path, "MQDISC", &library.Disc);
    Bind(path, "MQOPEN", &library.Open);
    Bind(path, "MQCLOSE", &library.Close);
    Bind(path, "MQGET", &library.Get);
    Bind(path, "MQPUT", &library.Put);
    Bind(path, "MQPUT1", &library.Put1);
    Bind(path, "MQCMIT", &library.Cmit);
    Bind(path, "MQBACK", &library.Back);
    Bind(path, "MQINQ", &library.Inq);
    return library;
}

}  // namespace

std::string MqLibraryPath(bool isClient) {
    const std::string name = isClient ? "mqic" : "mqm";
    const std::string file = platform::LibraryFileName(platform::kIsWindows ? name : name + "_r");
    return platform::NativePath(std::string(SPOOLMQ_LIBRARY_DIRECTORY) + '/' + file);
}

void* FindVerb(const std::string& libraryPath, const char* name) {
    return platform::FindFunction(LoadOrDie(libraryPath), name);
}

const MqLibrary& Mq() {
    static const MqLibrary library = Load(false);
    return library;
}

const MqLibrary& MqClient() {
    static const MqLibrary library = Load(true);
    return library;
}
