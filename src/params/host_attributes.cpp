// SPDX-License-Identifier: Apache-2.0
#include "params/host_attributes.h"

namespace mqamod {

namespace {

// Holds the attributes. Only the routines of this file write them. All are zero when the module is loaded.
struct HostAttributes {
    bool GenEofFlag;              // cleared by an Open that opens the queue
    bool PreserveRestartInfo;     // cleared by Shut
    bool TimeoutEnabled;          // never cleared
    std::int32_t timeoutSeconds;  // never cleared, only replaced
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

}  // namespace mqamod
