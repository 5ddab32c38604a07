#include "tests/spoolmq/support/mq_library.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace {

void* LoadOrDie(const std::string& path) {
#ifdef _WIN32
    void* const library = reinterpret_cast<void*>(LoadLibraryA(path.c_str()));
    const char* const reason = "LoadLibrary failed";
#else
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_GLOBAL);
    const char* const reason = library == nullptr ? dlerror() : "";
#endif
    if (library != nullptr) {
        return library;
    }
    std::fprintf(stderr, "cannot load %s: %s\n", path.c_str(), reason);
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

#ifdef _WIN32
std::string MqLibraryPath(bool isClient) {
    std::string path = std::string(SPOOLMQ_LIBRARY_DIRECTORY) + (isClient ? "/mqic.dll" : "/mqm.dll");
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

void* FindVerb(const std::string& libraryPath, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(LoadOrDie(libraryPath)), name));
}
#else
std::string MqLibraryPath(bool isClient) {
    return std::string(SPOOLMQ_LIBRARY_DIRECTORY) + (isClient ? "/libmqic_r.so" : "/libmqm_r.so");
}

void* FindVerb(const std::string& libraryPath, const char* name) {
    return dlsym(LoadOrDie(libraryPath), name);
}
#endif

const MqLibrary& Mq() {
    static const MqLibrary library = Load(false);
    return library;
}

const MqLibrary& MqClient() {
    static const MqLibrary library = Load(true);
    return library;
}
