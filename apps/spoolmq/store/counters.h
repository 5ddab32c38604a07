// SPDX-License-Identifier: Apache-2.0

// Keeps small counters that all processes share through memory-mapped files. They save work (the reading of a
// directory, a wait that sleeps too long) and keep the order of arrival the same for all processes. No
// message depends on them. A file that is lost or truncated is created again and filled with zeros. While
// that is not possible, a counter reads as zero and cannot be raised.
#pragma once

#include <cstdint>
#include <string>

#include "platform/shared_file.h"
#include "spoolmq/base/status.h"

namespace spoolmq {

/// The counters of a queue manager, in ROOT/QM/.state: the latest arrival stamp that was assigned.
struct QmgrCounters {
    platform::SharedFile file;
};

/// The counters of a queue, in ROOT/QM/QUEUE/.state: how often messages became available or were returned,
/// and the latest stamp that a put or a commit made available.
struct QueueCounters {
    platform::SharedFile file;
};

/// These map the file, which UnmapSharedFile releases. They return the status of MapSharedFile.
[[nodiscard]] FileStatus MapQmgrCounters(const std::string& path, QmgrCounters& counters);
[[nodiscard]] FileStatus MapQueueCounters(const std::string& path, QueueCounters& counters);

[[nodiscard]] std::int64_t LastStamp(const QmgrCounters& counters);
/// Returns an arrival stamp later than all that were assigned before, even when the clock has been set back.
[[nodiscard]] std::int64_t NextStamp(const QmgrCounters& counters);
/// Makes all future stamps later than this one.
void RaiseStamp(const QmgrCounters& counters, std::int64_t stampNs);

/// Returns a counter that is raised whenever messages have become available.
[[nodiscard]] std::uint64_t Arrivals(const QueueCounters& counters);
/// Returns a counter that is raised whenever messages have become available that come before later ones.
[[nodiscard]] std::uint64_t Returns(const QueueCounters& counters);
/// Counts a message with this stamp that a put or a commit has just made available.
void CountArrival(const QueueCounters& counters, std::int64_t stampNs);
/// Counts messages that have just been returned to their places.
void CountReturn(const QueueCounters& counters);

}  // namespace spoolmq
