// Small counters that all processes share through memory-mapped files. They save work (a look into a folder,
// a wait that sleeps too long) and keep the order of arrival across processes; no message depends on them. A
// file that is lost or cut short is made anew, from zeros; while it cannot be, a counter reads as zero and is
// not raised.
#pragma once

#include <cstdint>
#include <string>

#include "spoolmq/os/os.h"

namespace spoolmq {

/// ROOT/QM/.state: the latest arrival stamp given out.
struct QmgrCounters {
    SharedFile file;
};

/// ROOT/QM/QUEUE/.state: what became available, and the latest stamp of it.
struct QueueCounters {
    SharedFile file;
};

/// Failed and so on when the file cannot be mapped. Released with UnmapSharedFile.
[[nodiscard]] OsStatus MapQmgrCounters(const std::string& path, QmgrCounters* counters);
[[nodiscard]] OsStatus MapQueueCounters(const std::string& path, QueueCounters* counters);

[[nodiscard]] std::int64_t LastStamp(const QmgrCounters& counters);
/// An arrival stamp later than every one given out before, also when the clock was set back.
[[nodiscard]] std::int64_t NextStamp(const QmgrCounters& counters);
/// Makes the stamps to come later than this one.
void RaiseStamp(const QmgrCounters& counters, std::int64_t stampNs);

/// Raised after messages became available in whatever way.
[[nodiscard]] std::uint64_t Arrivals(const QueueCounters& counters);
/// Raised after messages became available before later ones.
[[nodiscard]] std::uint64_t Returns(const QueueCounters& counters);
/// Notes that a message put with this stamp has just become available.
void NoteArrival(const QueueCounters& counters, std::int64_t stampNs);
/// Notes that messages are back at their old places.
void NoteReturn(const QueueCounters& counters);

}  // namespace spoolmq
