// Small counters that all processes share through memory-mapped files. They save work (a look into a folder,
// a wait that sleeps too long) and keep the order of arrival across processes; no message depends on them. A
// file that is lost is made anew.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace spoolmq {

/// ROOT/QM/.state
struct QmgrCounters {
    std::atomic<std::int64_t> lastStampNs;  ///< the latest arrival stamp given out
};

/// ROOT/QM/QUEUE/.state
struct QueueCounters {
    std::atomic<std::uint64_t> arrivals;        ///< raised after messages became available in whatever way
    std::atomic<std::uint64_t> returns;         ///< raised after messages became available before later ones
    std::atomic<std::int64_t> lastPublishedNs;  ///< the latest stamp that became available
};

static_assert(std::atomic<std::int64_t>::is_always_lock_free &&
              std::atomic<std::uint64_t>::is_always_lock_free);

/// Null when the file cannot be mapped. Released with UnmapCounters.
[[nodiscard]] QmgrCounters* MapQmgrCounters(const std::string& path);
[[nodiscard]] QueueCounters* MapQueueCounters(const std::string& path);
void UnmapCounters(void* counters);

/// An arrival stamp later than every one given out before, also when the clock was set back.
[[nodiscard]] std::int64_t NextStamp(QmgrCounters* counters);
/// Makes the stamps to come later than this one.
void RaiseStamp(QmgrCounters* counters, std::int64_t stampNs);
/// Notes that a message put with this stamp has just become available.
void NoteArrival(QueueCounters* counters, std::int64_t stampNs);
/// Notes that messages are back at their old places.
void NoteReturn(QueueCounters* counters);

}  // namespace spoolmq
