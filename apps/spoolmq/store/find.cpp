// SPDX-License-Identifier: Apache-2.0

// Finds messages in a queue and reads them.
#include <algorithm>
#include <cstring>

#include "platform/clock.h"
#include "platform/digest.h"
#include "platform/file.h"
#include "spoolmq/store/descriptor.h"
#include "spoolmq/store/store.h"

namespace spoolmq {

namespace {

// A busy reader looks for units of work of dead processes at this interval. It also looks each time before it
// reports that there is no message.
constexpr std::int64_t kRecoveryIntervalMs = 100;

// Fills in the message id of a copied-in file. The id is unique, and the same at every call.
void FillCopiedInId(const StoreConnection& connection, const MessageName& name, MQBYTE* msgId) {
    char text[16];
    FillField(text, 4, "FILE");
    FillField(text + 4, 12, connection.object);
    std::memcpy(msgId, text, sizeof text);
    const std::uint64_t digest = platform::DigestOf(DescriptorName(name));
    for (std::size_t i = 0; i < 8; ++i) {
        msgId[16 + i] = static_cast<MQBYTE>(digest >> (56 - 8 * i));
    }
}

mqi::MQMD CopiedInDescriptor(const StoreQueue& queue, const MessageName& name) {
    const QueueAttributes& attributes = queue.state->attributes.values;
    mqi::MQMD descriptor = ParseDescriptor("");
    FillCopiedInId(*queue.connection, name, descriptor.MsgId);
    FillField(descriptor.Format, sizeof descriptor.Format, attributes.fileFormat);
    descriptor.CodedCharSetId =
        attributes.fileCcsid != 0 ? attributes.fileCcsid : queue.connection->attributes.values.ccsid;
    descriptor.Persistence = attributes.defaultPersistence;
    descriptor.Priority = attributes.defaultPriority;
    FormatPutDateTime(name.stampNs, descriptor.PutDate, descriptor.PutTime);
    return descriptor;
}

// Reads the message's descriptor, or makes one for a copied-in file. Returns false if the message has gone in
// the meantime.
bool ReadDescriptor(const StoreQueue& queue, FoundMessage& found) {
    std::string text;
    const std::string& queuePath = queue.state->path;
    if (!found.isCopiedIn && platform::ReadWholeFile(queuePath + "/.desc/" + DescriptorName(found.name),
                                                     text) == FileStatus::kOk) {
        found.descriptor = ParseDescriptor(text);
    } else {
        // A descriptor is deleted just before its message, which is then no longer in the queue. A message in
        // the queue without a descriptor is a copied-in file that the store has handled.
        platform::FileInfo info;
        if (!found.isCopiedIn &&
            platform::StatPath(queuePath + '/' + found.fileName, info) != FileStatus::kOk) {
            return false;
        }
        found.descriptor = CopiedInDescriptor(queue, found.name);
    }
    found.descriptor.BackoutCount = found.name.backoutCount;
    return true;
}

bool IsSelected(const Selection& selection, const MessageEntry& entry) {
    const auto isMatch = [](const unsigned char* wanted, const std::array<unsigned char, 24>& id) {
        return wanted == nullptr || std::memcmp(wanted, id.data(), id.size()) == 0;
    };
    return isMatch(selection.msgId, entry.msgId) && isMatch(selection.correlId, entry.correlId);
}

bool IsAfter(const MessageEntry& entry, const BrowseCursor& cursor) {
    if (!cursor.isSet) {
        return true;
    }
    if (entry.stampNs != cursor.stampNs) {
        return entry.stampNs > cursor.stampNs;
    }
    return entry.fileName > cursor.fileName;
}

// Opens the entry's file and reads its descriptor. Returns kNotFound if the file is gone, kBusy if it is
// still being written.
FileStatus OpenEntry(const StoreQueue& queue, const MessageEntry& entry, FoundMessage& found) {
    platform::FileInfo info;
    const FileStatus status =
        platform::OpenForReading(queue.state->path + '/' + entry.fileName, found.file, info);
    if (status != FileStatus::kOk) {
        return status;
    }
    found.fileName = entry.fileName;
    found.isCopiedIn = entry.isCopiedIn || !ParseMessageName(entry.fileName, found.name);
    if (found.isCopiedIn) {
        found.name = CopiedInName(entry.stampNs, entry.fileName);
    }
    found.bytes = info.bytes;
    found.identity = info.identity;
    if (ReadDescriptor(queue, found)) {
        return FileStatus::kOk;
    }
    ReleaseFound(found);
    return FileStatus::kNotFound;
}

// Opens the entry's message if it is selected. Returns kNoMessage if it is not selected, or if its file is
// gone or still being written.
Status TryEntry(StoreQueue& queue, const Selection& selection, MessageEntry& entry, FoundMessage& found) {
    Status noMessage = {StatusCode::kNoMessage, {}};
    if (entry.areIdsKnown && !IsSelected(selection, entry)) {
        return noMessage;
    }
    switch (OpenEntry(queue, entry, found)) {
        case FileStatus::kOk: break;
        case FileStatus::kNotFound: entry.isGone = true; return noMessage;
        case FileStatus::kBusy: queue.listing.isPartial = true; return noMessage;
        default: return FileError(queue.state->path + '/' + entry.fileName);
    }
    std::memcpy(entry.msgId.data(), found.descriptor.MsgId, entry.msgId.size());
    std::memcpy(entry.correlId.data(), found.descriptor.CorrelId, entry.correlId.size());
    entry.areIdsKnown = true;
    if (IsSelected(selection, entry)) {
        return {};
    }
    ReleaseFound(found);
    return noMessage;
}

Status FindInListing(StoreQueue& queue, const Selection& selection, const BrowseCursor& after,
                     FoundMessage& found) {
    Listing& listing = queue.listing;
    while (listing.first < listing.entries.size() && listing.entries[listing.first].isGone) {
        ++listing.first;
    }
    for (std::size_t i = listing.first; i < listing.entries.size(); ++i) {
        MessageEntry& entry = listing.entries[i];
        if (entry.isGone || !IsAfter(entry, after)) {
            continue;
        }
        Status status = TryEntry(queue, selection, entry, found);
        if (status.code != StatusCode::kNoMessage) {
            return status;
        }
    }
    return {StatusCode::kNoMessage, {}};
}

Status QueueError(const StoreQueue& queue, FileStatus reason) {
    Status status = FileError(queue.state->path);
    if (reason == FileStatus::kNotFound) {
        status.code = StatusCode::kQueueDeleted;
    }
    return status;
}

Status Reload(StoreQueue& queue) {
    const QueueState& state = *queue.state;
    const std::uint64_t ownReturns = queue.connection->ownReturns;
    const FileStatus status = LoadListing(state.path, state.counters, queue.connection->counters,
                                          state.attributes.values.settleMs, queue.listing);
    queue.listing.ownReturns = ownReturns;
    return status == FileStatus::kOk ? Status() : QueueError(queue, status);
}

void Recover(StoreConnection& connection) {
    if (RecoverDeadUnits(connection.path, connection.unit.id)) {
        ++connection.ownReturns;
    }
    connection.lastRecoveryMs = platform::MonotonicMs();
}

}  // namespace

Status FindMessage(StoreQueue& queue, const Selection& selection, const BrowseCursor& after,
                   FoundMessage& found) {
    const QueueState& state = *queue.state;
    if (platform::MonotonicMs() - queue.connection->lastRecoveryMs > kRecoveryIntervalMs) {
        Recover(*queue.connection);
    }
    if (queue.listing.ownReturns != queue.connection->ownReturns ||
        HasReturns(queue.listing, state.counters)) {
        Status status = Reload(queue);
        if (!status.IsOk()) {
            return status;
        }
    }
    Status status = FindInListing(queue, selection, after, found);
    if (status.code != StatusCode::kNoMessage) {
        return status;
    }
    Recover(*queue.connection);
    // The queue is listed up to twice, because the first listing may lack messages that arrived while it was
    // being made.
    for (int look = 0; look < 2 && status.code == StatusCode::kNoMessage; ++look) {
        bool hasArrivals = false;
        const FileStatus result = HasArrivals(state.path, state.counters, queue.listing, hasArrivals);
        if (result != FileStatus::kOk) {
            return QueueError(queue, result);
        }
        if (!hasArrivals) {
            break;
        }
        status = Reload(queue);
        if (status.IsOk()) {
            status = FindInListing(queue, selection, after, found);
        }
    }
    return status;
}

Status FindUnderCursor(StoreQueue& queue, const BrowseCursor& cursor, FoundMessage& found) {
    MessageEntry entry;
    entry.stampNs = cursor.stampNs;
    entry.fileName = cursor.fileName;
    const FileStatus status = OpenEntry(queue, entry, found);
    if (status == FileStatus::kOk) {
        return {};
    }
    if (status == FileStatus::kNotFound) {
        return {StatusCode::kNoMessage, {}};
    }
    return FileError(queue.state->path + '/' + entry.fileName);
}

Status ReadFound(const FoundMessage& found, void* buffer, std::size_t bytes) {
    std::size_t bytesRead = 0;
    if (platform::ReadFromStart(found.file, buffer, bytes, bytesRead) != FileStatus::kOk) {
        return FileError(found.fileName);
    }
    if (bytesRead == std::min(bytes, static_cast<std::size_t>(found.bytes))) {
        return {};
    }
    return {StatusCode::kFailed, found.fileName + ": the file has become shorter"};
}

void ReleaseFound(FoundMessage& found) {
    platform::CloseFile(found.file);
    found.file = platform::kNoFile;
}

void WaitForArrival(const StoreQueue& queue, std::int64_t milliseconds) {
    const QueueCounters& counters = queue.state->counters;
    const std::uint64_t arrivals = Arrivals(counters);
    for (std::int64_t slept = 0; slept < std::min<std::int64_t>(milliseconds, 10); ++slept) {
        platform::SleepMs(1);
        if (Arrivals(counters) != arrivals) {
            return;
        }
    }
}

}  // namespace spoolmq
