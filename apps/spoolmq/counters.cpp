#include "counters.h"

#include <algorithm>

#include "names.h"
#include "os.h"

namespace spoolmq {

namespace {

constexpr std::size_t kCounterFileBytes = 4096;

void* MapCounters(const std::string& path) {
    void* memory = nullptr;
    return MapSharedFile(path, kCounterFileBytes, &memory) == OsStatus::Ok ? memory : nullptr;
}

}  // namespace

// A fresh file is all zeros, which is the right start of every counter: there is nothing to construct.
QmgrCounters* MapQmgrCounters(const std::string& path) {
    return static_cast<QmgrCounters*>(MapCounters(path));
}
QueueCounters* MapQueueCounters(const std::string& path) {
    return static_cast<QueueCounters*>(MapCounters(path));
}
void UnmapCounters(void* counters) {
    UnmapSharedFile(counters, kCounterFileBytes);
}

std::int64_t NextStamp(QmgrCounters* counters) {
    const std::int64_t now = FileClockNs();
    std::int64_t last = counters->lastStampNs.load();
    std::int64_t next = 0;
    do {
        // A file that holds what was never given out is damaged; the clock goes on from now.
        next = last < kLatestStampNs ? std::max(now, last + 1) : now;
    } while (!counters->lastStampNs.compare_exchange_weak(last, next));
    return next;
}

void RaiseStamp(QmgrCounters* counters, std::int64_t stampNs) {
    std::int64_t last = counters->lastStampNs.load();
    while (last < stampNs && !counters->lastStampNs.compare_exchange_weak(last, stampNs)) {
    }
}

void NoteArrival(QueueCounters* counters, std::int64_t stampNs) {
    std::int64_t last = counters->lastPublishedNs.load();
    while (last < stampNs && !counters->lastPublishedNs.compare_exchange_weak(last, stampNs)) {
    }
    if (last > stampNs) counters->returns.fetch_add(1);
    counters->arrivals.fetch_add(1);
}

void NoteReturn(QueueCounters* counters) {
    counters->returns.fetch_add(1);
    counters->arrivals.fetch_add(1);
}

}  // namespace spoolmq
