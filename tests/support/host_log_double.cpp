// SPDX-License-Identifier: Apache-2.0
#include "tests/support/host_log_double.h"

#include <cstdarg>
#include <cstdint>
#include <cstring>

namespace {

HostLogDouble* currentLog = nullptr;

int RecordLogCall(void* handle, int first, int second, int third, ...) {
    HostLogDouble& log = *currentLog;
    ++log.calls;
    log.handle = handle;
    log.numbers[0] = first;
    log.numbers[1] = second;
    log.numbers[2] = third;
    va_list more;
    va_start(more, third);
    log.firstCount = va_arg(more, int);
    log.firstByte = *va_arg(more, const std::uint8_t*);
    log.secondCount = va_arg(more, int);
    log.report = va_arg(more, const char*);
    log.endedByNull = va_arg(more, void*) == nullptr;
    va_end(more);
    return log.answer;
}

}  // namespace

HostLogDouble::HostLogDouble() {
    currentLog = this;
    table_[39] = reinterpret_cast<void*>(&RecordLogCall);
    object_.table = table_;
}

HostLogDouble::~HostLogDouble() {
    currentLog = nullptr;
}

std::string HostLogDouble::HandleBytes() const {
    const void* address = &object_;
    std::string bytes(sizeof address, '\0');
    std::memcpy(bytes.data(), &address, sizeof address);
    return bytes;
}
