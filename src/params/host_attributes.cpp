#include "params/host_attributes.h"

namespace {

struct HostAttributes {
    bool GenEofFlag;
    bool PreserveRestartInfo;
    bool TimeoutEnabled;
    std::int32_t timeoutSeconds;
};
HostAttributes attributes;

}  // namespace

bool GenEofFlag() {
    return attributes.GenEofFlag;
}

void SetGenEofFlag(bool requested) {
    attributes.GenEofFlag = requested;
}

bool PreserveRestartInfo() {
    return attributes.PreserveRestartInfo;
}

void SetPreserveRestartInfo(bool preserve) {
    attributes.PreserveRestartInfo = preserve;
}

bool TimeoutEnabled() {
    return attributes.TimeoutEnabled;
}

std::int32_t TimeoutSeconds() {
    return attributes.timeoutSeconds;
}

void EnableTimeout(std::int32_t seconds) {
    attributes.TimeoutEnabled = true;
    attributes.timeoutSeconds = seconds;
}
