// SPDX-License-Identifier: Apache-2.0
#include "spoolmq/store/listing.h"

#include <algorithm>
#include <optional>

#include "platform/clock.h"
#include "platform/directory.h"
#include "platform/file.h"
#include "spoolmq/store/names.h"

namespace spoolmq {

namespace {

// Two changes of a directory within one tick of the file clock leave the same time, so a listing that was
// made within this time after a change may lack a later one.
constexpr std::int64_t kClockTickNs = 20000000;

// A listing of fewer messages than this is made again as soon as a message has been returned.
constexpr std::size_t kShortListing = 1000;

std::string_view RestOf(const MessageEntry& entry) {
    std::string_view name = entry.fileName;
    return entry.isCopiedIn ? name : name.substr(name.find('.') + 1);
}

bool ArrivedBefore(const MessageEntry& a, const MessageEntry& b) {
    if (a.stampNs != b.stampNs) {
        return a.stampNs < b.stampNs;
    }
    return RestOf(a) < RestOf(b);
}

// Completes an entry of a message that the store has named. Returns false if the message is too recent to be
// listed.
bool FillNamedEntry(const MessageName& name, std::int64_t horizonNs, const QmgrCounters& stamps,
                    MessageEntry& entry) {
    entry.stampNs = name.stampNs;
    if (entry.stampNs <= horizonNs) {
        return true;
    }
    // If the stamp comes from a clock ahead of ours and the counters were lost, raising the counter makes the
    // next listing include the message.
    RaiseStamp(stamps, entry.stampNs);
    return false;
}

// Completes an entry of a copied-in file. Returns false if the file is not settled, nullopt if it is gone.
std::optional<bool> FillCopiedInEntry(const std::string& path, std::int64_t nowNs, std::int32_t settleMs,
                                      MessageEntry& entry) {
    platform::FileInfo info;
    if (platform::StatPath(path, info) != FileStatus::kOk) {
        return std::nullopt;
    }
    entry.stampNs = info.changeTimeNs;
    entry.isCopiedIn = true;
    return IsSettled(info, nowNs, settleMs) && info.changeTimeNs <= nowNs;
}

}  // namespace

bool IsSettled(const platform::FileInfo& file, std::int64_t nowNs, std::int32_t settleMs) {
    // Writing sets both times. A change time that is later comes from a rename into place, or from the last
    // step of a copy, which gives the file the times of the original. In both cases the file is complete.
    if (file.changeTimeNs > file.writeTimeNs) {
        return true;
    }
    return nowNs - file.writeTimeNs >= std::int64_t{settleMs} * 1000000;
}

FileStatus LoadListing(const std::string& queuePath, const QueueCounters& counters,
                       const QmgrCounters& stamps, std::int32_t settleMs, Listing& listing) {
    Listing fresh;
    const std::int64_t lastStampNs = LastStamp(stamps);
    fresh.arrivals = Arrivals(counters);
    fresh.returns = Returns(counters);
    fresh.loadedAtNs = platform::FileClockNs();
    fresh.loadedAtMs = platform::MonotonicMs();
    platform::FileInfo directory;
    std::vector<platform::DirectoryEntry> files;
    FileStatus status = platform::StatPath(queuePath, directory);
    if (status == FileStatus::kOk) {
        status = platform::ListDirectory(queuePath, files);
    }
    if (status != FileStatus::kOk) {
        return status;
    }
    fresh.directoryChangeNs = directory.changeTimeNs;
    fresh.entries.reserve(files.size());
    const std::int64_t horizonNs = std::max(lastStampNs, fresh.loadedAtNs);
    MessageName name;
    for (platform::DirectoryEntry& file : files) {
        if (!file.isFile || IsIgnoredFile(file.name)) {
            continue;
        }
        MessageEntry entry;
        const std::optional<bool> isReady =
            ParseMessageName(file.name, name)
                ? FillNamedEntry(name, horizonNs, stamps, entry)
                : FillCopiedInEntry(queuePath + '/' + file.name, fresh.loadedAtNs, settleMs, entry);
        if (!isReady.has_value()) {
            continue;
        }
        if (!*isReady) {
            fresh.isPartial = true;
            continue;
        }
        entry.fileName = std::move(file.name);
        fresh.entries.push_back(std::move(entry));
    }
    std::sort(fresh.entries.begin(), fresh.entries.end(), ArrivedBefore);
    fresh.isLoaded = true;
    fresh.loadTookMs = platform::MonotonicMs() - fresh.loadedAtMs;
    listing = std::move(fresh);
    return FileStatus::kOk;
}

bool HasReturns(const Listing& listing, const QueueCounters& counters) {
    if (!listing.isLoaded) {
        return true;
    }
    if (Returns(counters) == listing.returns) {
        return false;
    }
    if (listing.entries.size() - listing.first < kShortListing) {
        return true;
    }
    return platform::MonotonicMs() - listing.loadedAtMs >= listing.loadTookMs * 10;
}

FileStatus HasArrivals(const std::string& queuePath, const QueueCounters& counters, const Listing& listing,
                       bool& hasArrivals) {
    platform::FileInfo directory;
    const FileStatus status = platform::StatPath(queuePath, directory);
    if (status != FileStatus::kOk) {
        return status;
    }
    hasArrivals = !listing.isLoaded || listing.isPartial || Arrivals(counters) != listing.arrivals ||
                  Returns(counters) != listing.returns ||
                  directory.changeTimeNs != listing.directoryChangeNs ||
                  listing.loadedAtNs - directory.changeTimeNs < kClockTickNs;
    return FileStatus::kOk;
}

}  // namespace spoolmq
