#include "spoolmq/store/crash_points.h"

#include <atomic>

namespace spoolmq {

namespace {
std::atomic<StorePointListener> pointListener{nullptr};  // set by the fault plan, see faults.cpp
}

void SetStorePointListener(StorePointListener listener) {
    pointListener = listener;
}

void PassStorePoint(std::string_view point) {
    const StorePointListener listener = pointListener;
    if (listener != nullptr) listener(point);
}

}  // namespace spoolmq
