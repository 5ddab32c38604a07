// SPDX-License-Identifier: Apache-2.0
#include "entry/host_log.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "diag/error_text.h"
#include "diag/report_texts.h"

namespace mqamod {

namespace {

struct HostLogState {
    // Says whether the host has ever put the attribute, even if its value was refused. Nothing clears this.
    bool supplied;
    // This is the address of the host object. Each ZBQ_HL_LOG_HANDLE replaces it; nothing clears it.
    char* HostLogHandle;
};
HostLogState state;

// The function that takes a log message is at this offset, in bytes, in the function table of the host
// object.
constexpr std::size_t kLogEntryOffset = MQAMOD_LOG_TABLE_ENTRY * sizeof(void*);
constexpr std::size_t kBufferBytes = 5;

HostLogCallback FindCallback(const char* handle) {
    if (handle == nullptr) return nullptr;
    const char* table = nullptr;
    std::memcpy(&table, handle + MQAMOD_LOG_TABLE_OFFSET, sizeof table);
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
        ReportError(Severity::kError, "PIDMMain", "memory allocation failed");
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

}  // namespace mqamod
