// What a reader knows of a queue folder: its messages in order of arrival, so that a get need not look into a
// folder of thousands of files. Readers take messages from each other, so an entry is a hint: claiming the
// file decides.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "spoolmq/attributes/attributes.h"
#include "spoolmq/os/os.h"
#include "spoolmq/store/counters.h"

namespace spoolmq {

struct MessageEntry {
    std::int64_t stampNs = 0;
    std::string fileName;
    bool isForeign = false;  ///< copied in by somebody and never handled by the store
    bool isGone = false;
    bool areIdsKnown = false;
    std::array<unsigned char, 24> msgId{};
    std::array<unsigned char, 24> correlId{};
};

struct Listing {
    std::vector<MessageEntry> entries;  ///< by arrival
    std::size_t first = 0;              ///< entries before it are gone
    bool isLoaded = false;
    bool isPartial = false;      ///< files were left out that will be messages in a moment
    std::uint64_t arrivals = 0;  ///< counters as they were just before the folder was read
    std::uint64_t returns = 0;
    std::int64_t folderChangeNs = 0;  ///< of the queue folder, before it was read
    std::int64_t loadedAtNs = 0;      ///< FileClockNs before it was read
    std::int64_t loadedAtMs = 0;
    std::int64_t loadTookMs = 0;
    std::uint64_t returnsHere = 0;  ///< StoreConnection::returnsHere before it was read
};

/// Reads the queue folder. A folder is not read in one instant, and of two messages put meanwhile the second
/// could be seen and the first not: what has a later stamp than was given out before the call is left for the
/// next time.
[[nodiscard]] OsStatus LoadListing(const std::string& queuePath, const QueueCounters& counters,
                                   const QmgrCounters& stamps, std::int32_t settleMs, Listing* listing);

/// Whether messages may have come back in front of those that the listing still has. With a long listing it
/// answers no for a while after a slow load, so that a busy queue does not spend its time being listed: a
/// message that another program puts back may then be found some tenths of a second later than its place
/// says.
[[nodiscard]] bool HasReturns(const Listing& listing, const QueueCounters& counters);

/// Whether the folder may hold a message that the listing has not. NotFound when the folder is gone.
[[nodiscard]] OsStatus HasArrivals(const std::string& queuePath, const QueueCounters& counters,
                                   const Listing& listing, bool* answer);

/// Whether a file that somebody copied in has come to rest.
[[nodiscard]] bool IsSettled(const FileInfo& file, std::int64_t nowNs, std::int32_t settleMs);

}  // namespace spoolmq
