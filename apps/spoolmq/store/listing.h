// SPDX-License-Identifier: Apache-2.0

// Keeps what a reader knows about the messages of a queue, in order of arrival, so that a get need not read a
// directory of thousands of files. Readers take messages away from each other, so an entry is only a hint:
// claiming the file decides.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/file.h"
#include "spoolmq/base/status.h"
#include "spoolmq/store/counters.h"

namespace spoolmq {

struct MessageEntry {
    std::int64_t stampNs = 0;
    std::string fileName;
    bool isCopiedIn = false;  ///< a file that someone copied in and that the store has not handled yet
    bool isGone = false;
    bool areIdsKnown = false;
    std::array<unsigned char, 24> msgId{};
    std::array<unsigned char, 24> correlId{};
};

struct Listing {
    std::vector<MessageEntry> entries;  ///< the messages in order of arrival
    std::size_t first = 0;              ///< all entries before this index are gone
    bool isLoaded = false;
    bool isPartial = false;  ///< files were left out that will soon be messages

    // These members describe the state just before the directory was read.
    std::uint64_t arrivals = 0;
    std::uint64_t returns = 0;
    std::uint64_t ownReturns = 0;  ///< StoreConnection::ownReturns
    std::int64_t directoryChangeNs = 0;
    std::int64_t loadedAtNs = 0;  ///< FileClockNs
    std::int64_t loadedAtMs = 0;  ///< MonotonicMs

    std::int64_t loadTookMs = 0;
};

/// Reads the queue's directory. This takes time, and of two messages put meanwhile the second might be seen
/// and the first not; therefore messages with a stamp assigned after the call began are left for the next
/// listing.
[[nodiscard]] FileStatus LoadListing(const std::string& queuePath, const QueueCounters& counters,
                                     const QmgrCounters& stamps, std::int32_t settleMs, Listing& listing);

/// Returns whether messages may have been returned in front of those in the listing. While a long listing is
/// recent, compared with the time it took to load, the answer is no, so that a busy queue does not spend all
/// its time being listed. A message that another program backs out may then be found some tenths of a second
/// late.
[[nodiscard]] bool HasReturns(const Listing& listing, const QueueCounters& counters);

/// Sets `hasArrivals` to whether the directory may contain a message that is not in the listing. Returns
/// kNotFound if the directory is gone.
[[nodiscard]] FileStatus HasArrivals(const std::string& queuePath, const QueueCounters& counters,
                                     const Listing& listing, bool& hasArrivals);

/// Returns whether a copied-in file is complete: it was renamed into place, or its last write was long enough
/// ago.
[[nodiscard]] bool IsSettled(const platform::FileInfo& file, std::int64_t nowNs, std::int32_t settleMs);

}  // namespace spoolmq
