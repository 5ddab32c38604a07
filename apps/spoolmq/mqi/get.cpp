// MQGET.
#include <algorithm>
#include <cstring>

#include "spoolmq/conversion/convert.h"
#include "spoolmq/mqi/structures.h"
#include "spoolmq/mqi/verb_frame.h"
#include "spoolmq/store/descriptor.h"

namespace spoolmq {

namespace {

constexpr MQLONG kSyncpointOptions =
    MQGMO_SYNCPOINT | MQGMO_NO_SYNCPOINT | mqi::MQGMO_SYNCPOINT_IF_PERSISTENT;
constexpr MQLONG kBrowseOptions =
    mqi::MQGMO_BROWSE_FIRST | mqi::MQGMO_BROWSE_NEXT | mqi::MQGMO_BROWSE_MSG_UNDER_CURSOR;
constexpr MQLONG kLockOptions = mqi::MQGMO_LOCK | mqi::MQGMO_UNLOCK;
constexpr MQLONG kInputOptions = MQOO_INPUT_AS_Q_DEF | mqi::MQOO_INPUT_SHARED | MQOO_INPUT_EXCLUSIVE;
constexpr MQLONG kPublishedOptions = 0x1FFFFFFF;
constexpr MQLONG kPublishedMatchOptions = 63;
/// Signals, locks, marks, and skipping a back-out: nothing of the kind is here. What concerns groups,
/// segments and properties is accepted, as it makes no difference to messages that have none.
constexpr MQLONG kMissingOptions = mqi::MQGMO_SET_SIGNAL | kLockOptions | 128 | 0x01F00000;

struct GetCall {
    void* md;
    void* gmo;
    MQLONG bufferLength;
    void* buffer;
    MQLONG* dataLength;
};

/// A get in progress: the caller's structures and what was made of them.
struct Getting {
    Connection* connection = nullptr;
    OpenObject* object = nullptr;
    mqi::MQMD md{};
    mqi::MQGMO gmo{};
    Selection selection;
    bool isBrowse = false;
};

bool Has(const Getting& getting, MQLONG option) {
    return (getting.gmo.Options & option) != 0;
}
bool IsOneBitOrNone(MQLONG options) {
    return (options & (options - 1)) == 0;
}

bool IsZero(const MQBYTE* bytes, std::size_t count) {
    return std::all_of(bytes, bytes + count, [](MQBYTE byte) { return byte == 0; });
}

Outcome CheckOptions(const mqi::MQGMO& gmo) {
    const MQLONG options = gmo.Options;
    if ((options & ~kPublishedOptions) != 0 || !IsOneBitOrNone(options & kSyncpointOptions) ||
        !IsOneBitOrNone(options & (kBrowseOptions | mqi::MQGMO_MSG_UNDER_CURSOR)))
        return Failed(mqi::MQRC_OPTIONS_ERROR);
    if ((options & MQGMO_SYNCPOINT) != 0 && (options & (kBrowseOptions | kLockOptions)) != 0)
        return Failed(mqi::MQRC_OPTIONS_ERROR);
    if ((options & MQGMO_WAIT) != 0 && (options & mqi::MQGMO_SET_SIGNAL) != 0)
        return Failed(mqi::MQRC_OPTIONS_ERROR);
    if ((options & kMissingOptions) != 0) return Failed(mqi::MQRC_FUNCTION_NOT_SUPPORTED);
    if ((options & MQGMO_WAIT) != 0 && gmo.WaitInterval < mqi::MQWI_UNLIMITED)
        return Failed(mqi::MQRC_WAIT_INTERVAL_ERROR);
    if (gmo.Version >= 2 && (gmo.MatchOptions & ~kPublishedMatchOptions) != 0)
        return Failed(mqi::MQRC_MATCH_OPTIONS_ERROR);
    return kOk;
}

Outcome CheckCall(const GetCall& call, Getting* getting) {
    if (!LoadStructure(call.md, &getting->md)) return Failed(mqi::MQRC_MD_ERROR);
    if (!LoadStructure(call.gmo, &getting->gmo)) return Failed(mqi::MQRC_GMO_ERROR);
    if (call.bufferLength < 0) return Failed(mqi::MQRC_BUFFER_LENGTH_ERROR);
    if (call.bufferLength > 0 && call.buffer == nullptr) return Failed(mqi::MQRC_BUFFER_ERROR);
    if (call.dataLength == nullptr) return Failed(mqi::MQRC_DATA_LENGTH_ERROR);
    if (getting->connection->isClient && call.bufferLength > getting->connection->messageLimit)
        return Failed(mqi::MQRC_DATA_LENGTH_ERROR);
    return CheckOptions(getting->gmo);
}

Outcome CheckObject(Getting* getting) {
    getting->isBrowse = Has(*getting, kBrowseOptions);
    const OpenObject& object = *getting->object;
    const bool usesCursor = getting->isBrowse || Has(*getting, mqi::MQGMO_MSG_UNDER_CURSOR);
    if (object.queue == nullptr) return Failed(mqi::MQRC_NOT_OPEN_FOR_INPUT);
    if (usesCursor && (object.options & mqi::MQOO_BROWSE) == 0) return Failed(mqi::MQRC_NOT_OPEN_FOR_BROWSE);
    if (!getting->isBrowse && (object.options & kInputOptions) == 0)
        return Failed(mqi::MQRC_NOT_OPEN_FOR_INPUT);
    return kOk;
}

void SetSelection(Getting* getting) {
    const mqi::MQMD& md = getting->md;
    const MQLONG match = getting->gmo.MatchOptions;  // of a version 1 structure: its default
    if ((match & mqi::MQMO_MATCH_MSG_ID) != 0 && !IsZero(md.MsgId, sizeof md.MsgId))
        getting->selection.msgId = md.MsgId;
    if ((match & mqi::MQMO_MATCH_CORREL_ID) != 0 && !IsZero(md.CorrelId, sizeof md.CorrelId))
        getting->selection.correlId = md.CorrelId;
}

/// State of queue manager and queue, looked at before each search.
Outcome CheckStates(const Getting& getting) {
    const Outcome outcome = CheckQueueManager(getting.connection, Has(getting, mqi::MQGMO_FAIL_IF_QUIESCING));
    if (outcome.compCode != MQCC_OK) return outcome;
    StoreQueue* queue = getting.object->queue.get();
    std::string why;
    if (!RefreshQueue(queue, &why)) NoteProblem(why);
    return queue->state->attributes.values.getInhibited != 0 ? Failed(mqi::MQRC_GET_INHIBITED) : kOk;
}

StoreStatus FindOnce(const Getting& getting, FoundMessage* found, std::string* why) {
    StoreQueue* queue = getting.object->queue.get();
    const BrowseCursor& cursor = getting.object->cursor;
    if (Has(getting, mqi::MQGMO_BROWSE_NEXT))
        return FindMessage(queue, getting.selection, &cursor, found, why);
    if (!Has(getting, mqi::MQGMO_MSG_UNDER_CURSOR | mqi::MQGMO_BROWSE_MSG_UNDER_CURSOR))
        return FindMessage(queue, getting.selection, nullptr, found, why);
    return cursor.isSet ? FindUnderCursor(queue, cursor, found, why) : StoreStatus::NoMessage;
}

/// Finds a message, waiting for one where that is asked for. On kOk *found is to be released.
Outcome FindWaiting(const Getting& getting, FoundMessage* found) {
    const bool usesCursor = Has(getting, mqi::MQGMO_MSG_UNDER_CURSOR | mqi::MQGMO_BROWSE_MSG_UNDER_CURSOR);
    const std::int64_t startedMs = MonotonicMs();
    const std::int64_t intervalMs = Has(getting, MQGMO_WAIT) ? getting.gmo.WaitInterval : 0;
    for (;;) {
        const Outcome outcome = CheckStates(getting);
        if (outcome.compCode != MQCC_OK) return outcome;
        std::string why;
        const StoreStatus status = FindOnce(getting, found, &why);
        if (status == StoreStatus::Ok) return kOk;
        if (status != StoreStatus::NoMessage) return Failed(ReasonOfStore(status, why));
        if (usesCursor) return Failed(mqi::MQRC_NO_MSG_UNDER_CURSOR);
        const std::int64_t leftMs = startedMs + intervalMs - MonotonicMs();
        if (intervalMs != mqi::MQWI_UNLIMITED && leftMs <= 0) return Failed(MQRC_NO_MSG_AVAILABLE);
        WaitForArrival(*getting.object->queue, intervalMs == mqi::MQWI_UNLIMITED ? 1000 : leftMs);
    }
}

/// The caller's descriptor becomes the message's, in the version that the caller has.
void GiveDescriptor(const FoundMessage& found, const GetCall& call, Getting* getting) {
    const MQLONG version = getting->md.Version;
    const MQLONG encoding = getting->md.Encoding;
    const MQLONG ccsid = getting->md.CodedCharSetId;
    getting->md = found.descriptor;
    getting->md.Version = version;
    StoreStructure(getting->md, call.md);
    getting->md.Encoding = encoding;
    getting->md.CodedCharSetId = ccsid;
}

void GiveOptions(const GetCall& call, std::size_t returned, Getting* getting) {
    mqi::MQGMO& gmo = getting->gmo;
    FillField(gmo.ResolvedQName, sizeof gmo.ResolvedQName, getting->object->queue->state->object);
    gmo.GroupStatus = ' ';
    gmo.SegmentStatus = ' ';
    gmo.Segmentation = ' ';
    gmo.ReturnedLength = static_cast<MQLONG>(returned);
    StoreStructure(gmo, call.gmo);
}

/// Converts the data in the caller's buffer if that is asked for and possible. *length is that of the data
/// there.
Outcome ConvertData(const GetCall& call, const mqi::MQMD& wanted, std::size_t* length, FoundMessage* found) {
    const ConversionResult result =
        ConvertMessage(found->descriptor, wanted.CodedCharSetId, wanted.Encoding, call.buffer, *length,
                       static_cast<std::size_t>(call.bufferLength), length);
    if (result.reason != MQRC_NONE) return Warning(result.reason);
    found->descriptor.CodedCharSetId = result.ccsid;
    found->descriptor.Encoding = result.encoding;
    return kOk;
}

/// The message is this call's: its data, its conversion, its descriptor.
Outcome GiveMessage(const GetCall& call, FoundMessage* found, Getting* getting) {
    const std::size_t room = static_cast<std::size_t>(call.bufferLength);
    std::size_t length = std::min(room, static_cast<std::size_t>(found->bytes));
    const bool isCut = static_cast<std::int64_t>(room) < found->bytes;
    std::string why;
    if (length > 0 && ReadFound(*found, call.buffer, length, &why) != StoreStatus::Ok) {
        NoteProblem(why);
        return Failed(mqi::MQRC_RESOURCE_PROBLEM);
    }
    *call.dataLength = static_cast<MQLONG>(found->bytes);
    Outcome outcome = kOk;
    if (isCut) {
        outcome = Warning(Has(*getting, mqi::MQGMO_ACCEPT_TRUNCATED_MSG) ? mqi::MQRC_TRUNCATED_MSG_ACCEPTED
                                                                         : MQRC_TRUNCATED_MSG_FAILED);
    } else if (Has(*getting, MQGMO_CONVERT) && length > 0) {
        mqi::MQMD wanted = getting->md;
        if (wanted.CodedCharSetId == MQCCSI_Q_MGR)
            wanted.CodedCharSetId = getting->connection->store->attributes.values.ccsid;
        outcome = ConvertData(call, wanted, &length, found);
        *call.dataLength = static_cast<MQLONG>(length);
    }
    GiveDescriptor(*found, call, getting);
    GiveOptions(call, length, getting);
    return outcome;
}

bool IsUnderSyncpoint(const Getting& getting, const FoundMessage& found) {
    if (Has(getting, mqi::MQGMO_SYNCPOINT_IF_PERSISTENT))
        return found.descriptor.Persistence == mqi::MQPER_PERSISTENT;
    return Has(getting, MQGMO_SYNCPOINT);
}

Outcome CheckUnit(const Connection& connection) {
    const StoreConnection& store = *connection.store;
    if (connection.isDoomed) return Failed(mqi::MQRC_BACKED_OUT);
    if (UncommittedCount(store) >= static_cast<std::size_t>(store.attributes.values.maxUncommitted))
        return Failed(MQRC_SYNCPOINT_LIMIT_REACHED);
    return kOk;
}

/// Takes the found message, or finds that another reader has: *isTaken.
Outcome TakeMessage(const GetCall& call, FoundMessage* found, Getting* getting, bool* isTaken) {
    StoreQueue* queue = getting->object->queue.get();
    const bool syncpoint = IsUnderSyncpoint(*getting, *found);
    if (syncpoint) {
        const Outcome outcome = CheckUnit(*getting->connection);
        if (outcome.compCode != MQCC_OK) return outcome;
    }
    std::string why;
    StoreStatus status = ClaimMessage(queue, found, syncpoint, &why);
    *isTaken = status == StoreStatus::Taken;
    if (*isTaken) return kOk;
    if (status != StoreStatus::Ok) return Failed(ReasonOfStore(status, why));
    const Outcome outcome = GiveMessage(call, found, getting);
    if (outcome.compCode == MQCC_FAILED) {
        UndoClaim(queue, found, syncpoint);
        return outcome;
    }
    if (!syncpoint) status = FinishTake(queue, found, &why);
    // The data is delivered; what is left of the file is cleared away later.
    if (status != StoreStatus::Ok) NoteProblem(why);
    return outcome;
}

void SetCursor(const FoundMessage& found, BrowseCursor* cursor) {
    cursor->isSet = true;
    cursor->stampNs = found.name.stampNs;
    cursor->fileName = found.fileName;
}

Outcome GetMessage(const GetCall& call, Getting* getting) {
    SetSelection(getting);
    if (Has(*getting, mqi::MQGMO_BROWSE_FIRST)) getting->object->cursor = BrowseCursor();
    for (;;) {
        FoundMessage found;
        Outcome outcome = FindWaiting(*getting, &found);
        if (outcome.compCode != MQCC_OK) return outcome;
        bool isTaken = false;
        const bool isLeft =
            found.bytes > call.bufferLength && !Has(*getting, mqi::MQGMO_ACCEPT_TRUNCATED_MSG);
        if (getting->isBrowse || isLeft) {
            if (getting->isBrowse) SetCursor(found, &getting->object->cursor);
            outcome = GiveMessage(call, &found, getting);
        } else {
            outcome = TakeMessage(call, &found, getting, &isTaken);
        }
        ReleaseFound(&found);
        if (!isTaken) return outcome;
    }
}

Outcome Get(MQHCONN connectionHandle, MQHOBJ handle, const GetCall& call) {
    EnteredConnection entered;
    Getting getting;
    Outcome outcome = EnterConnection(connectionHandle, &entered);
    if (outcome.compCode != MQCC_OK) return outcome;
    getting.connection = entered.connection.get();
    outcome = FindObject(getting.connection, handle, &getting.object);
    if (outcome.compCode == MQCC_OK) outcome = CheckCall(call, &getting);
    if (outcome.compCode == MQCC_OK) outcome = CheckObject(&getting);
    if (outcome.compCode != MQCC_OK) return outcome;
    *call.dataLength = 0;
    return GetMessage(call, &getting);
}

}  // namespace
}  // namespace spoolmq

using namespace spoolmq;

SPOOLMQ_EXPORT void MQGET(MQHCONN Hconn, MQHOBJ Hobj, MQPTR MsgDesc, MQPTR GetMsgOpts, MQLONG BufferLength,
                          MQPTR Buffer, MQLONG* DataLength, MQLONG* CompCode, MQLONG* Reason) {
    const GetCall call = {MsgDesc, GetMsgOpts, BufferLength, Buffer, DataLength};
    RunVerb(Verb::Mqget, Hconn, CompCode, Reason, [&] { return Get(Hconn, Hobj, call); });
}
