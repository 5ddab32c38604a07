// SPDX-License-Identifier: Apache-2.0

// Implements MQGET.
#include <algorithm>
#include <optional>

#include "platform/clock.h"
#include "spoolmq/conversion/convert.h"
#include "spoolmq/mqi/get_call.h"
#include "spoolmq/mqi/structures.h"
#include "spoolmq/store/descriptor.h"

namespace spoolmq {

namespace {

// Checks the states of the queue manager and the queue, before each search.
Outcome CheckStates(const GetState& get) {
    const Outcome outcome = CheckQueueManager(*get.connection, Has(get, mqi::MQGMO_FAIL_IF_QUIESCING));
    if (outcome.compCode != MQCC_OK) {
        return outcome;
    }
    StoreQueue& queue = *get.object->queue;
    const Status status = RefreshQueue(queue);
    if (!status.IsOk()) {
        ReportProblem(status.error);
    }
    return queue.state->attributes.values.getInhibited != 0 ? Failed(mqi::MQRC_GET_INHIBITED) : kOk;
}

Status FindOnce(const GetState& get, FoundMessage& found) {
    StoreQueue& queue = *get.object->queue;
    const BrowseCursor& cursor = get.object->cursor;
    if (Has(get, mqi::MQGMO_BROWSE_NEXT)) {
        return FindMessage(queue, get.selection, cursor, found);
    }
    if (!Has(get, kCursorOptions)) {
        return FindMessage(queue, get.selection, {}, found);
    }
    return cursor.isSet ? FindUnderCursor(queue, cursor, found) : Status{StatusCode::kNoMessage, {}};
}

// Finds a message, and waits for one if the caller asks for that. After kOk, `found` must be released.
Outcome FindWaiting(const GetState& get, FoundMessage& found) {
    const std::int64_t startedMs = platform::MonotonicMs();
    const std::int64_t intervalMs = Has(get, MQGMO_WAIT) ? get.gmo.WaitInterval : 0;
    for (;;) {
        const Outcome outcome = CheckStates(get);
        if (outcome.compCode != MQCC_OK) {
            return outcome;
        }
        const Status status = FindOnce(get, found);
        if (status.IsOk()) {
            return kOk;
        }
        if (status.code != StatusCode::kNoMessage) {
            return Failed(ReasonOf(status));
        }
        if (Has(get, kCursorOptions)) {
            return Failed(mqi::MQRC_NO_MSG_UNDER_CURSOR);
        }
        const std::int64_t leftMs = startedMs + intervalMs - platform::MonotonicMs();
        if (intervalMs != mqi::MQWI_UNLIMITED && leftMs <= 0) {
            return Failed(MQRC_NO_MSG_AVAILABLE);
        }
        WaitForArrival(*get.object->queue, intervalMs == mqi::MQWI_UNLIMITED ? 1000 : leftMs);
    }
}

// Copies the message's descriptor to the caller's structure, in the version of that structure.
void StoreDescriptor(const GetState& get, const FoundMessage& found, const GetCall& call) {
    mqi::MQMD md = found.descriptor;
    md.Version = get.md.Version;
    StoreStructure(md, call.md);
}

void StoreOptions(const GetState& get, std::size_t returnedBytes, const GetCall& call) {
    mqi::MQGMO gmo = get.gmo;
    FillField(gmo.ResolvedQName, sizeof gmo.ResolvedQName, get.object->queue->state->object);
    gmo.GroupStatus = ' ';
    gmo.SegmentStatus = ' ';
    gmo.Segmentation = ' ';
    gmo.ReturnedLength = static_cast<MQLONG>(returnedBytes);
    StoreStructure(gmo, call.gmo);
}

// Converts the data in the caller's buffer to the form that the caller's descriptor asks for. `bytes` is the
// length of that data and becomes the converted length; `found` gets the new character set and encoding.
Outcome ConvertData(const GetState& get, const GetCall& call, std::size_t& bytes, FoundMessage& found) {
    TextForm wanted = {get.md.CodedCharSetId, get.md.Encoding};
    if (wanted.ccsid == MQCCSI_Q_MGR) {
        wanted.ccsid = get.connection->store->attributes.values.ccsid;
    }
    const MessageBuffer buffer = {call.buffer, bytes, static_cast<std::size_t>(call.bufferLength)};
    const Conversion conversion = ConvertMessage(found.descriptor, wanted, buffer);
    bytes = conversion.bytes;
    if (conversion.reason != MQRC_NONE) {
        return Warning(conversion.reason);
    }
    found.descriptor.CodedCharSetId = conversion.form.ccsid;
    found.descriptor.Encoding = conversion.form.encoding;
    return kOk;
}

// Delivers the message to the caller: its data, converted if that is wanted, and its descriptor.
Outcome DeliverMessage(const GetState& get, const GetCall& call, FoundMessage& found) {
    const std::size_t room = static_cast<std::size_t>(call.bufferLength);
    std::size_t bytes = std::min(room, static_cast<std::size_t>(found.bytes));
    const bool isTruncated = static_cast<std::int64_t>(room) < found.bytes;
    const Status status = bytes > 0 ? ReadFound(found, call.buffer, bytes) : Status();
    if (!status.IsOk()) {
        ReportProblem(status.error);
        return Failed(mqi::MQRC_RESOURCE_PROBLEM);
    }
    *call.dataLength = static_cast<MQLONG>(found.bytes);
    Outcome outcome = kOk;
    if (isTruncated) {
        outcome = Warning(Has(get, mqi::MQGMO_ACCEPT_TRUNCATED_MSG) ? mqi::MQRC_TRUNCATED_MSG_ACCEPTED
                                                                    : MQRC_TRUNCATED_MSG_FAILED);
    } else if (Has(get, MQGMO_CONVERT) && bytes > 0) {
        outcome = ConvertData(get, call, bytes, found);
        *call.dataLength = static_cast<MQLONG>(bytes);
    }
    StoreDescriptor(get, found, call);
    StoreOptions(get, bytes, call);
    return outcome;
}

Syncpoint SyncpointOf(const GetState& get, const FoundMessage& found) {
    const bool isUnderSyncpoint = Has(get, mqi::MQGMO_SYNCPOINT_IF_PERSISTENT)
                                      ? found.descriptor.Persistence == mqi::MQPER_PERSISTENT
                                      : Has(get, MQGMO_SYNCPOINT);
    return isUnderSyncpoint ? Syncpoint::kYes : Syncpoint::kNo;
}

// Takes the message off the queue and delivers it. Returns nullopt if another reader was faster.
std::optional<Outcome> TakeMessage(const GetState& get, const GetCall& call, FoundMessage& found) {
    StoreQueue& queue = *get.object->queue;
    const Syncpoint syncpoint = SyncpointOf(get, found);
    Outcome outcome = syncpoint == Syncpoint::kYes ? CheckUnit(*get.connection) : kOk;
    if (outcome.compCode != MQCC_OK) {
        return outcome;
    }
    Status status = ClaimMessage(queue, found, syncpoint);
    if (status.code == StatusCode::kMessageGone) {
        return std::nullopt;
    }
    if (!status.IsOk()) {
        return Failed(ReasonOf(status));
    }
    outcome = DeliverMessage(get, call, found);
    if (outcome.compCode == MQCC_FAILED) {
        UndoClaim(queue, found, syncpoint);
        return outcome;
    }
    if (syncpoint == Syncpoint::kNo) {
        status = FinishGet(queue, found);
    }
    // The data is delivered, so the call succeeds; recovery deletes what is left of the file.
    if (!status.IsOk()) {
        ReportProblem(status.error);
    }
    return outcome;
}

// Delivers the message and leaves it on the queue, for a browse, or because the message is too long for the
// buffer.
Outcome ShowMessage(const GetState& get, const GetCall& call, FoundMessage& found) {
    if (get.isBrowse) {
        get.object->cursor = {true, found.name.stampNs, found.fileName};
    }
    return DeliverMessage(get, call, found);
}

Outcome GetMessage(GetState& get, const GetCall& call) {
    SetSelection(get);
    if (Has(get, mqi::MQGMO_BROWSE_FIRST)) {
        get.object->cursor = BrowseCursor();
    }
    for (;;) {
        FoundMessage found;
        const Outcome search = FindWaiting(get, found);
        if (search.compCode != MQCC_OK) {
            return search;
        }
        const bool isTooLong = found.bytes > call.bufferLength && !Has(get, mqi::MQGMO_ACCEPT_TRUNCATED_MSG);
        const std::optional<Outcome> outcome =
            get.isBrowse || isTooLong ? ShowMessage(get, call, found) : TakeMessage(get, call, found);
        ReleaseFound(found);
        if (outcome.has_value()) {
            return *outcome;
        }
    }
}

Outcome Get(MQHCONN connectionHandle, MQHOBJ handle, const GetCall& call) {
    EnteredConnection entered;
    GetState get;
    Outcome outcome = EnterConnection(connectionHandle, entered);
    if (outcome.compCode != MQCC_OK) {
        return outcome;
    }
    get.connection = entered.connection.get();
    outcome = FindObject(*get.connection, handle, get.object);
    if (outcome.compCode == MQCC_OK) {
        outcome = CheckCall(call, get);
    }
    if (outcome.compCode == MQCC_OK) {
        outcome = CheckObject(get);
    }
    if (outcome.compCode != MQCC_OK) {
        return outcome;
    }
    *call.dataLength = 0;
    return GetMessage(get, call);
}

}  // namespace
}  // namespace spoolmq

using namespace spoolmq;

SPOOLMQ_EXPORT void MQGET(MQHCONN Hconn, MQHOBJ Hobj, MQPTR MsgDesc, MQPTR GetMsgOpts, MQLONG BufferLength,
                          MQPTR Buffer, MQLONG* DataLength, MQLONG* CompCode, MQLONG* Reason) {
    const GetCall call = {MsgDesc, GetMsgOpts, BufferLength, Buffer, DataLength};
    RunVerb(Verb::kMqget, Hconn, CompCode, Reason, [&] { return Get(Hconn, Hobj, call); });
}
