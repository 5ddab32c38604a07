// SPDX-License-Identifier: Apache-2.0
#include "spoolmq/store/crash_points.h"

#include <atomic>

namespace spoolmq {

namespace {
std::atomic<CrashPointListener> pointListener{nullptr};
}

void SetCrashPointListener(CrashPointListener listener) {
    pointListener = listener;
}

void ReachCrashPoint(std::string_view point) {
    const CrashPointListener listener = pointListener;
    if (listener != nullptr) {
        listener(point);
    }
}

}  // namespace spoolmq
