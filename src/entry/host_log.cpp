#include "entry/host_log.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "diag/error_text.h"
#include "diag/report_texts.h"

namespace {

struct HostLogState {
    bool supplied;        // the attribute has come; lasts until the module is unloaded
    char* HostLogHandle;  // the host object, likewise
};
HostLogState state;

constexpr std::size_t kFunctionTableOffset = 16;  // in the host object: the pointer to its table of functions
constexpr std::size_t kLogEntryOffset = 312;      // in that table: the function that takes a log message
constexpr std::size_t kBufferBytes = 5;

/// The host's function. What the numbers and the buffer mean to it is the host's business.
using HostLogCallback = int (*)(void* handle, int messageNumber, int, int, ...);

HostLogCallback FindCallback(const char* handle) {
    if (handle == nullptr) return nullptr;
    const char* table = nullptr;
    std::memcpy(&table, handle + kFunctionTableOffset, sizeof table);
    if (table == nullptr) return nullptr;
    HostLogCallback callback = nullptr;
    std::memcpy(&callback, table + kLogEntryOffset, sizeof callback);
    return callback;
}

}  // namespace

ReturnCode TakeHostLogHandle(const char* value, std::uint32_t length) {
    state.supplied = true;
    char* buffer = static_cast<char*>(std::malloc(kBufferBytes));
    if (buffer == nullptr) {
        ReportError(Severity::Error, "PIDMMain", "memory allocation failed");
        return pmrcFailure;
    }
    buffer[0] = 0;
    state.HostLogHandle = nullptr;
    std::memcpy(&state.HostLogHandle, value, std::min<std::size_t>(length, sizeof state.HostLogHandle));

    const HostLogCallback callback = FindCallback(state.HostLogHandle);
    const bool accepted =
        callback != nullptr && callback(state.HostLogHandle, 19003, 2, 3, 5, buffer, 5, HostLogReportText(),
                                        static_cast<void*>(nullptr)) == 0;
    std::free(buffer);
    return accepted ? pmrcOK : pmrcBadAttrValue;
}

void PrintReport() {
    (void)std::printf("%s", state.supplied ? HostLogReportText() : ConsoleReportText());
}
