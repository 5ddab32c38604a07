// Finding messages and taking them.
#include <algorithm>
#include <cstring>

#include "spoolmq/store/crash_points.h"
#include "spoolmq/store/descriptor.h"
#include "spoolmq/store/store.h"

namespace spoolmq {

namespace {

// Between looks for programs that died while this one is busy getting; before "no message" there is always
// one.
constexpr std::int64_t kRecoveryIntervalMs = 100;

/// The identifier of a message that came as a file: as good as a put one's, and the same however often it is
/// asked for.
void MakeFileIds(const StoreConnection& connection, const MessageName& name, mqi::MQMD* descriptor) {
    std::uint64_t hash = 14695981039346656037U;  // FNV-1a
    for (const char c : DescriptorName(name))
        hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211U;
    char text[16];
    FillField(text, 4, "FILE");
    FillField(text + 4, 12, connection.object);
    std::memcpy(descriptor->MsgId, text, sizeof text);
    for (std::size_t i = 0; i < 8; ++i)
        descriptor->MsgId[16 + i] = static_cast<MQBYTE>(hash >> (56 - 8 * i));
}

mqi::MQMD DescriptorOfFile(const StoreQueue& queue, const MessageName& name) {
    const QueueAttributes& attributes = queue.state->attributes.values;
    mqi::MQMD descriptor = ParseDescriptor("");
    MakeFileIds(*queue.connection, name, &descriptor);
    FillField(descriptor.Format, sizeof descriptor.Format, attributes.fileFormat);
    descriptor.CodedCharSetId =
        attributes.fileCcsid != 0 ? attributes.fileCcsid : queue.connection->attributes.values.ccsid;
    descriptor.Persistence = attributes.defaultPersistence;
    descriptor.Priority = attributes.defaultPriority;
    FormatPutDateTime(name.stampNs, descriptor.PutDate, descriptor.PutTime);
    return descriptor;
}

/// False when the message went away meanwhile.
bool ReadDescriptor(const StoreQueue& queue, FoundMessage* found) {
    std::string text;
    const std::string& queuePath = queue.state->path;
    if (!found->isForeign &&
        ReadWholeFile(queuePath + "/.desc/" + DescriptorName(found->name), &text) == OsStatus::Ok) {
        found->descriptor = ParseDescriptor(text);
    } else {
        // A descriptor is deleted with its message: without one, a message that is still there is a file.
        FileInfo info;
        if (!found->isForeign && StatPath(queuePath + '/' + found->fileName, &info) != OsStatus::Ok)
            return false;
        found->descriptor = DescriptorOfFile(queue, found->name);
    }
    found->descriptor.BackoutCount = found->name.backoutCount;
    return true;
}

bool IsSelected(const Selection& selection, const unsigned char* msgId, const unsigned char* correlId) {
    return (selection.msgId == nullptr || std::memcmp(selection.msgId, msgId, 24) == 0) &&
           (selection.correlId == nullptr || std::memcmp(selection.correlId, correlId, 24) == 0);
}

/// Opens the entry's file and reads its descriptor. NotFound when it is gone, Busy when it is not ready.
OsStatus OpenEntry(const StoreQueue& queue, const MessageEntry& entry, FoundMessage* found) {
    FileInfo info;
    const OsStatus status = OpenForReading(queue.state->path + '/' + entry.fileName, &found->file, &info);
    if (status != OsStatus::Ok) return status;
    found->fileName = entry.fileName;
    found->isForeign = entry.isForeign;
    if (entry.isForeign)
        found->name = AdoptedName(entry.stampNs, entry.fileName);
    else if (!ParseMessageName(entry.fileName, &found->name))
        return OsStatus::Failed;  // listed as one: cannot happen
    found->bytes = info.bytes;
    found->identity = info.identity;
    if (ReadDescriptor(queue, found)) return OsStatus::Ok;
    ReleaseFound(found);
    return OsStatus::NotFound;
}

bool IsBehind(const MessageEntry& entry, const BrowseCursor* cursor) {
    if (cursor == nullptr || !cursor->isSet) return true;
    if (entry.stampNs != cursor->stampNs) return entry.stampNs > cursor->stampNs;
    return entry.fileName > cursor->fileName;
}

/// Looks through what the listing has.
StoreStatus FindInListing(StoreQueue* queue, const Selection& selection, const BrowseCursor* behind,
                          FoundMessage* found, std::string* why) {
    Listing& listing = queue->listing;
    while (listing.first < listing.entries.size() && listing.entries[listing.first].isGone)
        ++listing.first;
    for (std::size_t i = listing.first; i < listing.entries.size(); ++i) {
        MessageEntry& entry = listing.entries[i];
        if (entry.isGone || !IsBehind(entry, behind)) continue;
        if (entry.areIdsKnown && !IsSelected(selection, entry.msgId.data(), entry.correlId.data())) continue;
        const OsStatus status = OpenEntry(*queue, entry, found);
        if (status == OsStatus::NotFound) {
            entry.isGone = true;
            continue;
        }
        if (status == OsStatus::Busy) {
            listing.isPartial = true;
            continue;
        }
        if (status != OsStatus::Ok) {
            *why = queue->state->path + '/' + entry.fileName + ": " + LastOsErrorText();
            return StoreStatus::Failed;
        }
        std::memcpy(entry.msgId.data(), found->descriptor.MsgId, entry.msgId.size());
        std::memcpy(entry.correlId.data(), found->descriptor.CorrelId, entry.correlId.size());
        entry.areIdsKnown = true;
        if (IsSelected(selection, entry.msgId.data(), entry.correlId.data())) return StoreStatus::Ok;
        ReleaseFound(found);
    }
    return StoreStatus::NoMessage;
}

StoreStatus Reload(StoreQueue* queue, std::string* why) {
    const std::uint64_t returnsHere = queue->connection->returnsHere;
    const OsStatus status =
        LoadListing(queue->state->path, queue->state->counters, queue->connection->counters,
                    queue->state->attributes.values.settleMs, &queue->listing);
    queue->listing.returnsHere = returnsHere;
    if (status == OsStatus::Ok) return StoreStatus::Ok;
    *why = queue->state->path + ": " + LastOsErrorText();
    return status == OsStatus::NotFound ? StoreStatus::QueueDeleted : StoreStatus::Failed;
}

void Recover(StoreConnection* connection) {
    if (RecoverDeadUnits(connection->path, connection->unit.id)) ++connection->returnsHere;
    connection->lastRecoveryMs = MonotonicMs();
}

UnitStage StageOf(bool syncpoint) {
    return syncpoint ? UnitStage::Got : UnitStage::Taking;
}

/// A copied-in file may have been replaced by another of its name since it was opened: what was claimed
/// counts.
bool IsFileAsFound(const std::string& path, const FoundMessage& found) {
    FileInfo info;
    return StatPath(path, &info) == OsStatus::Ok && info.identity == found.identity &&
           info.bytes == found.bytes;
}

}  // namespace

StoreStatus FindMessage(StoreQueue* queue, const Selection& selection, const BrowseCursor* behind,
                        FoundMessage* found, std::string* why) {
    const QueueCounters& counters = queue->state->counters;
    if (MonotonicMs() - queue->connection->lastRecoveryMs > kRecoveryIntervalMs) Recover(queue->connection);
    const bool hasReturnsHere = queue->listing.returnsHere != queue->connection->returnsHere;
    if (hasReturnsHere || HasReturns(queue->listing, counters)) {
        const StoreStatus status = Reload(queue, why);
        if (status != StoreStatus::Ok) return status;
    }
    StoreStatus status = FindInListing(queue, selection, behind, found, why);
    if (status != StoreStatus::NoMessage) return status;
    Recover(queue->connection);
    // Twice: the first look may have left out what came while it was reading.
    for (int look = 0; look < 2 && status == StoreStatus::NoMessage; ++look) {
        bool hasArrivals = false;
        const OsStatus folder = HasArrivals(queue->state->path, counters, queue->listing, &hasArrivals);
        if (folder != OsStatus::Ok) {
            *why = queue->state->path + ": " + LastOsErrorText();
            return folder == OsStatus::NotFound ? StoreStatus::QueueDeleted : StoreStatus::Failed;
        }
        if (!hasArrivals) break;
        status = Reload(queue, why);
        if (status == StoreStatus::Ok) status = FindInListing(queue, selection, behind, found, why);
    }
    return status;
}

StoreStatus FindUnderCursor(StoreQueue* queue, const BrowseCursor& cursor, FoundMessage* found,
                            std::string* why) {
    MessageEntry entry;
    entry.stampNs = cursor.stampNs;
    entry.fileName = cursor.fileName;
    MessageName name;
    entry.isForeign = !ParseMessageName(cursor.fileName, &name);
    const OsStatus status = OpenEntry(*queue, entry, found);
    if (status == OsStatus::Ok) return StoreStatus::Ok;
    if (status == OsStatus::NotFound) return StoreStatus::NoMessage;
    *why = queue->state->path + '/' + entry.fileName + ": " + LastOsErrorText();
    return StoreStatus::Failed;
}

StoreStatus ReadFound(const FoundMessage& found, void* buffer, std::size_t bytes, std::string* why) {
    std::size_t got = 0;
    const OsStatus status = ReadFromStart(found.file, buffer, bytes, &got);
    if (status == OsStatus::Ok && got == std::min(bytes, static_cast<std::size_t>(found.bytes)))
        return StoreStatus::Ok;
    *why = found.fileName + ": " + (status == OsStatus::Ok ? "shorter than it was" : LastOsErrorText());
    return StoreStatus::Failed;
}

StoreStatus ClaimMessage(StoreQueue* queue, FoundMessage* found, bool syncpoint, std::string* why) {
    Unit& unit = queue->connection->unit;
    const std::string from = queue->state->path + '/' + found->fileName;
    std::string to;
    OsStatus status = OsStatus::Exists;
    for (int attempt = 0; status == OsStatus::Exists && attempt < 1000; ++attempt) {
        // Two files of one name copied in within a clock tick would be called alike.
        if (attempt > 0) ++found->name.stampNs;
        status =
            StagePath(&unit, StageOf(syncpoint), queue->state->folder, FormatMessageName(found->name), &to);
        if (status != OsStatus::Ok) {
            *why = UnitsPath(unit.qmgrPath) + '/' + unit.id + ": " + LastOsErrorText();
            return StoreStatus::Failed;
        }
        status = RenameNew(from, to);
    }
    FileInfo info;
    if (status == OsStatus::NotFound && StatPath(from, &info) == OsStatus::Ok) {
        // The message is there, its place is not: somebody has cleared the unit's folder away. The next try
        // makes it.
        unit.madeFolders.erase(to.substr(0, to.rfind('/')));
        return StoreStatus::Taken;
    }
    if (status == OsStatus::NotFound || status == OsStatus::Busy) return StoreStatus::Taken;
    if (status != OsStatus::Ok) {
        *why = from + ": " + LastOsErrorText();
        return StoreStatus::Failed;
    }
    PassStorePoint("got");
    Listing& listing = queue->listing;
    if (listing.first < listing.entries.size() && listing.entries[listing.first].fileName == found->fileName)
        listing.entries[listing.first].isGone = true;
    if (syncpoint)
        unit.members.push_back({UnitStage::Got, queue->state->folder, FormatMessageName(found->name)});
    if (!found->isForeign || IsFileAsFound(to, *found)) return StoreStatus::Ok;
    UndoClaim(queue, found, syncpoint);
    return StoreStatus::Taken;
}

StoreStatus FinishTake(StoreQueue* queue, FoundMessage* found, std::string* why) {
    ReleaseFound(found);
    Unit& unit = queue->connection->unit;
    const std::string fileName = FormatMessageName(found->name);
    const std::string& folder = queue->state->folder;
    std::string from;
    std::string to;
    PassStorePoint("taken");
    OsStatus status = StagePath(&unit, UnitStage::Taking, folder, fileName, &from);
    if (status == OsStatus::Ok) status = StagePath(&unit, UnitStage::Done, folder, fileName, &to);
    if (status == OsStatus::Ok) status = RenameNew(from, to);
    if (status == OsStatus::Ok) status = DeleteMessage(unit.qmgrPath, folder, fileName, to);
    if (status == OsStatus::Ok) return StoreStatus::Ok;
    *why = to + ": " + LastOsErrorText();
    return StoreStatus::Failed;
}

void UndoClaim(StoreQueue* queue, FoundMessage* found, bool syncpoint) {
    ReleaseFound(found);
    Unit& unit = queue->connection->unit;
    const std::string fileName = FormatMessageName(found->name);
    std::string path;
    if (StagePath(&unit, StageOf(syncpoint), queue->state->folder, fileName, &path) != OsStatus::Ok) return;
    if (ReturnMessage(unit.qmgrPath, queue->state->folder, fileName, path, 0) != OsStatus::Ok) return;
    if (syncpoint) unit.members.pop_back();
    ++queue->connection->returnsHere;
    NoteReturn(queue->state->counters);
}

void ReleaseFound(FoundMessage* found) {
    CloseFile(found->file);
    found->file = kNoFile;
}

void WaitForArrival(const StoreQueue& queue, std::int64_t milliseconds) {
    const QueueCounters& counters = queue.state->counters;
    const std::uint64_t arrivals = Arrivals(counters);
    for (std::int64_t slept = 0; slept < std::min<std::int64_t>(milliseconds, 10); ++slept) {
        SleepMs(1);
        if (Arrivals(counters) != arrivals) return;
    }
}

}  // namespace spoolmq
