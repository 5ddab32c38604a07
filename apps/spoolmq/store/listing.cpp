#include "spoolmq/store/listing.h"

#include <algorithm>
#include <tuple>

#include "spoolmq/store/names.h"

namespace spoolmq {

namespace {

// Within a tick of the file clock two changes of a folder look like one.
constexpr std::int64_t kClockTickNs = 20000000;

// A folder of so many messages is listed again whenever there is a reason to.
constexpr std::size_t kQuickListing = 1000;

std::string_view RestOf(const MessageEntry& entry) {
    std::string_view name = entry.fileName;
    return entry.isForeign ? name : name.substr(name.find('.') + 1);
}

bool ArrivedBefore(const MessageEntry& a, const MessageEntry& b) {
    if (a.stampNs != b.stampNs) return a.stampNs < b.stampNs;
    return RestOf(a) < RestOf(b);
}

}  // namespace

bool IsSettled(const FileInfo& file, std::int64_t nowNs, std::int32_t settleMs) {
    // Writing sets both times. A later change is a rename into place (or a copy's last step, setting the
    // times of the original): the file is complete.
    if (file.changeTimeNs > file.writeTimeNs) return true;
    return nowNs - file.writeTimeNs >= std::int64_t{settleMs} * 1000000;
}

OsStatus LoadListing(const std::string& queuePath, const QueueCounters& counters, const QmgrCounters& stamps,
                     std::int32_t settleMs, Listing* listing) {
    Listing fresh;
    const std::int64_t lastStampNs = LastStamp(stamps);
    fresh.arrivals = Arrivals(counters);
    fresh.returns = Returns(counters);
    fresh.loadedAtNs = FileClockNs();
    fresh.loadedAtMs = MonotonicMs();
    FileInfo folder;
    std::vector<FolderEntry> files;
    OsStatus status = StatPath(queuePath, &folder);
    if (status == OsStatus::Ok) status = ListFolder(queuePath, &files);
    if (status != OsStatus::Ok) return status;
    fresh.folderChangeNs = folder.changeTimeNs;
    fresh.entries.reserve(files.size());
    const std::int64_t horizonNs = std::max(lastStampNs, fresh.loadedAtNs);
    MessageName name;
    for (FolderEntry& file : files) {
        if (!file.isFile || IsIgnoredFile(file.name)) continue;
        MessageEntry entry;
        if (ParseMessageName(file.name, &name)) {
            entry.stampNs = name.stampNs;
            if (entry.stampNs > horizonNs) {
                fresh.isPartial = true;
                // From a clock that was ahead of ours, with the counters lost: next time it is among the
                // others.
                RaiseStamp(stamps, entry.stampNs);
                continue;
            }
        } else {
            FileInfo info;
            if (StatPath(queuePath + '/' + file.name, &info) != OsStatus::Ok) continue;
            if (!IsSettled(info, fresh.loadedAtNs, settleMs) || info.changeTimeNs > fresh.loadedAtNs) {
                fresh.isPartial = true;
                continue;
            }
            entry.stampNs = info.changeTimeNs;
            entry.isForeign = true;
        }
        entry.fileName = std::move(file.name);
        fresh.entries.push_back(std::move(entry));
    }
    std::sort(fresh.entries.begin(), fresh.entries.end(), ArrivedBefore);
    fresh.isLoaded = true;
    fresh.loadTookMs = MonotonicMs() - fresh.loadedAtMs;
    *listing = std::move(fresh);
    return OsStatus::Ok;
}

bool HasReturns(const Listing& listing, const QueueCounters& counters) {
    if (!listing.isLoaded) return true;
    if (Returns(counters) == listing.returns) return false;
    if (listing.entries.size() - listing.first < kQuickListing) return true;
    return MonotonicMs() - listing.loadedAtMs >= listing.loadTookMs * 10;
}

OsStatus HasArrivals(const std::string& queuePath, const QueueCounters& counters, const Listing& listing,
                     bool* answer) {
    FileInfo folder;
    const OsStatus status = StatPath(queuePath, &folder);
    if (status != OsStatus::Ok) return status;
    *answer = !listing.isLoaded || listing.isPartial || Arrivals(counters) != listing.arrivals ||
              Returns(counters) != listing.returns || folder.changeTimeNs != listing.folderChangeNs ||
              listing.loadedAtNs - folder.changeTimeNs < kClockTickNs;
    return OsStatus::Ok;
}

}  // namespace spoolmq
