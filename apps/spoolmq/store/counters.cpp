// SPDX-License-Identifier: Apache-2.0
#include "spoolmq/store/counters.h"

#include <algorithm>
#include <atomic>

#include "platform/clock.h"
#include "platform/shared_file.h"
#include "spoolmq/store/names.h"

namespace spoolmq {

namespace {

constexpr std::size_t kCounterFileBytes = 4096;

// These structures are the content of the files. A new file is all zeros, which is the right initial value of
// every counter, so nothing is constructed.
struct QmgrNumbers {
    std::atomic<std::int64_t> lastStampNs;
};
struct QueueNumbers {
    std::atomic<std::uint64_t> arrivals;
    std::atomic<std::uint64_t> returns;
    std::atomic<std::int64_t> lastPublishedNs;
};

static_assert(std::atomic<std::int64_t>::is_always_lock_free &&
              std::atomic<std::uint64_t>::is_always_lock_free);

// These return the numbers in the mapped file, or null while the file cannot be accessed.
QmgrNumbers* NumbersOf(const QmgrCounters& counters) {
    return platform::EnsureFileSize(counters.file) ? static_cast<QmgrNumbers*>(counters.file.memory)
                                                   : nullptr;
}
QueueNumbers* NumbersOf(const QueueCounters& counters) {
    return platform::EnsureFileSize(counters.file) ? static_cast<QueueNumbers*>(counters.file.memory)
                                                   : nullptr;
}

}  // namespace

FileStatus MapQmgrCounters(const std::string& path, QmgrCounters& counters) {
    return platform::MapSharedFile(path, kCounterFileBytes, counters.file);
}
FileStatus MapQueueCounters(const std::string& path, QueueCounters& counters) {
    return platform::MapSharedFile(path, kCounterFileBytes, counters.file);
}

std::int64_t LastStamp(const QmgrCounters& counters) {
    const QmgrNumbers* numbers = NumbersOf(counters);
    return numbers != nullptr ? numbers->lastStampNs.load() : 0;
}

std::int64_t NextStamp(const QmgrCounters& counters) {
    const std::int64_t now = platform::FileClockNs();
    QmgrNumbers* numbers = NumbersOf(counters);
    if (numbers == nullptr) {
        return now;
    }
    std::int64_t last = numbers->lastStampNs.load();
    std::int64_t next = 0;
    do {
        // A stamp that can never have been assigned means a damaged file, so counting starts again from the
        // clock.
        next = last < kLatestStampNs ? std::max(now, last + 1) : now;
    } while (!numbers->lastStampNs.compare_exchange_weak(last, next));
    return next;
}

void RaiseStamp(const QmgrCounters& counters, std::int64_t stampNs) {
    QmgrNumbers* numbers = NumbersOf(counters);
    if (numbers == nullptr) {
        return;
    }
    std::int64_t last = numbers->lastStampNs.load();
    while (last < stampNs && !numbers->lastStampNs.compare_exchange_weak(last, stampNs)) {
    }
}

std::uint64_t Arrivals(const QueueCounters& counters) {
    const QueueNumbers* numbers = NumbersOf(counters);
    return numbers != nullptr ? numbers->arrivals.load() : 0;
}

std::uint64_t Returns(const QueueCounters& counters) {
    const QueueNumbers* numbers = NumbersOf(counters);
    return numbers != nullptr ? numbers->returns.load() : 0;
}

void CountArrival(const QueueCounters& counters, std::int64_t stampNs) {
    QueueNumbers* numbers = NumbersOf(counters);
    if (numbers == nullptr) {
        return;
    }
    std::int64_t last = numbers->lastPublishedNs.load();
    while (last < stampNs && !numbers->lastPublishedNs.compare_exchange_weak(last, stampNs)) {
    }
    if (last > stampNs) {
        numbers->returns.fetch_add(1);
    }
    numbers->arrivals.fetch_add(1);
}

void CountReturn(const QueueCounters& counters) {
    QueueNumbers* numbers = NumbersOf(counters);
    if (numbers == nullptr) {
        return;
    }
    numbers->returns.fetch_add(1);
    numbers->arrivals.fetch_add(1);
}

}  // namespace spoolmq
