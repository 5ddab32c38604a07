// SPDX-License-Identifier: Apache-2.0

// Implements MQPUT and MQPUT1.
#include <cstring>

#include "platform/clock.h"
#include "platform/process.h"
#include "spoolmq/base/appl_type.h"
#include "spoolmq/mqi/open.h"
#include "spoolmq/mqi/structures.h"
#include "spoolmq/mqi/verb_frame.h"
#include "spoolmq/store/descriptor.h"

namespace spoolmq {

namespace {

constexpr MQLONG kPublishedPutOptions = 0x7FFFF;

void FillOrigin(const Connection& connection, MQLONG options, mqi::MQMD& md) {
    const bool isIdentityGiven =
        (options & (mqi::MQPMO_SET_IDENTITY_CONTEXT | mqi::MQPMO_SET_ALL_CONTEXT)) != 0;
    const bool isOriginGiven = (options & mqi::MQPMO_SET_ALL_CONTEXT) != 0;
    const bool isNone = (options & mqi::MQPMO_NO_CONTEXT) != 0;
    if (!isIdentityGiven) {
        FillField(md.UserIdentifier, sizeof md.UserIdentifier, isNone ? "" : platform::UserName());
        std::memset(md.AccountingToken, 0, sizeof md.AccountingToken);
        FillField(md.ApplIdentityData, sizeof md.ApplIdentityData, "");
    }
    if (!isOriginGiven) {
        md.PutApplType = isNone ? 0 : kPlatformApplType;
        FillField(md.PutApplName, sizeof md.PutApplName, isNone ? "" : connection.applName);
        FillField(md.ApplOriginData, sizeof md.ApplOriginData, "");
        FormatPutDateTime(platform::FileClockNs(), md.PutDate, md.PutTime);
    }
}

// Returns the descriptor to be stored: the fields that the caller's leaves to the queue or to the queue
// manager are filled in.
mqi::MQMD FinalDescriptor(const Connection& connection, const QueueAttributes& attributes,
                          const mqi::MQMD& md) {
    mqi::MQMD stored = md;
    if (stored.CodedCharSetId == MQCCSI_Q_MGR) {
        stored.CodedCharSetId = connection.store->attributes.values.ccsid;
    }
    if (stored.Persistence == mqi::MQPER_PERSISTENCE_AS_Q_DEF) {
        stored.Persistence = attributes.defaultPersistence;
    }
    if (stored.Priority == mqi::MQPRI_PRIORITY_AS_Q_DEF) {
        stored.Priority = attributes.defaultPriority;
    }
    return stored;
}

Outcome CheckDescriptor(const mqi::MQMD& md) {
    if (md.Persistence < mqi::MQPER_NOT_PERSISTENT || md.Persistence > mqi::MQPER_PERSISTENCE_AS_Q_DEF) {
        return Failed(mqi::MQRC_PERSISTENCE_ERROR);
    }
    if (md.Priority < mqi::MQPRI_PRIORITY_AS_Q_DEF || md.Priority > 9) {
        return Failed(mqi::MQRC_PRIORITY_ERROR);
    }
    return kOk;
}

Outcome CheckLength(const Connection& connection, const QueueAttributes& attributes, MQLONG length) {
    if (connection.isClient && length > connection.messageLimit) {
        return Failed(mqi::MQRC_DATA_LENGTH_ERROR);
    }
    if (length > attributes.maxMessageLength) {
        return Failed(mqi::MQRC_MSG_TOO_BIG_FOR_Q);
    }
    if (length > connection.store->attributes.values.maxMessageLength) {
        return Failed(mqi::MQRC_MSG_TOO_BIG_FOR_Q_MGR);
    }
    return kOk;
}

Outcome CheckRoom(const Connection& connection, const StoreQueue& queue, Syncpoint syncpoint) {
    const Outcome outcome = syncpoint == Syncpoint::kYes ? CheckUnit(connection) : kOk;
    if (outcome.compCode != MQCC_OK) {
        return outcome;
    }
    return IsQueueFull(queue) ? Failed(mqi::MQRC_Q_FULL) : kOk;
}

struct PutCall {
    void* md;
    void* pmo;
    MQLONG length;
    const void* buffer;
};

// Copies the caller's structures and makes the checks that do not depend on the queue.
Outcome CheckCall(const PutCall& call, mqi::MQMD& md, mqi::MQPMO& pmo) {
    if (!LoadStructure(call.md, md)) {
        return Failed(mqi::MQRC_MD_ERROR);
    }
    if (!LoadStructure(call.pmo, pmo)) {
        return Failed(mqi::MQRC_PMO_ERROR);
    }
    if (call.length < 0) {
        return Failed(mqi::MQRC_BUFFER_LENGTH_ERROR);
    }
    if (call.length > 0 && call.buffer == nullptr) {
        return Failed(mqi::MQRC_BUFFER_ERROR);
    }
    const MQLONG both = mqi::MQPMO_SYNCPOINT | mqi::MQPMO_NO_SYNCPOINT;
    if ((pmo.Options & both) == both || (pmo.Options & ~kPublishedPutOptions) != 0) {
        return Failed(mqi::MQRC_OPTIONS_ERROR);
    }
    return CheckDescriptor(md);
}

Outcome PutOn(const Connection& connection, StoreQueue& queue, const PutCall& call, mqi::MQMD& md,
              mqi::MQPMO& pmo) {
    Status status = RefreshQueue(queue);
    if (!status.IsOk()) {
        ReportProblem(status.error);
    }
    const QueueAttributes& attributes = queue.state->attributes.values;
    const Syncpoint syncpoint = (pmo.Options & mqi::MQPMO_SYNCPOINT) != 0 ? Syncpoint::kYes : Syncpoint::kNo;
    if (attributes.putInhibited != 0) {
        return Failed(mqi::MQRC_PUT_INHIBITED);
    }
    Outcome outcome = CheckLength(connection, attributes, call.length);
    if (outcome.compCode == MQCC_OK) {
        outcome = CheckRoom(connection, queue, syncpoint);
    }
    if (outcome.compCode != MQCC_OK) {
        return outcome;
    }
    if ((pmo.Options & mqi::MQPMO_NEW_MSG_ID) != 0 || IsZero(md.MsgId, sizeof md.MsgId)) {
        MakeIdentifier(*connection.store, md.MsgId);
    }
    if ((pmo.Options & mqi::MQPMO_NEW_CORREL_ID) != 0) {
        MakeIdentifier(*connection.store, md.CorrelId);
    }
    FillOrigin(connection, pmo.Options, md);
    const mqi::MQMD stored = FinalDescriptor(connection, attributes, md);
    status = PutMessage(queue, {&stored, call.buffer, static_cast<std::size_t>(call.length)}, syncpoint);
    if (!status.IsOk()) {
        return Failed(ReasonOf(status));
    }
    FillField(pmo.ResolvedQName, sizeof pmo.ResolvedQName, queue.state->object);
    FillField(pmo.ResolvedQMgrName, sizeof pmo.ResolvedQMgrName, connection.store->object);
    StoreStructure(md, call.md);
    StoreStructure(pmo, call.pmo);
    return kOk;
}

Outcome Put(MQHCONN connectionHandle, MQHOBJ handle, const PutCall& call) {
    EnteredConnection entered;
    OpenObject* object = nullptr;
    Outcome outcome = EnterConnection(connectionHandle, entered);
    if (outcome.compCode == MQCC_OK) {
        outcome = FindObject(*entered.connection, handle, object);
    }
    mqi::MQMD md{};
    mqi::MQPMO pmo{};
    if (outcome.compCode == MQCC_OK) {
        outcome = CheckCall(call, md, pmo);
    }
    if (outcome.compCode == MQCC_OK) {
        outcome = CheckQueueManager(*entered.connection, (pmo.Options & mqi::MQPMO_FAIL_IF_QUIESCING) != 0);
    }
    if (outcome.compCode != MQCC_OK) {
        return outcome;
    }
    if (object->queue == nullptr || (object->options & mqi::MQOO_OUTPUT) == 0) {
        return Failed(mqi::MQRC_NOT_OPEN_FOR_OUTPUT);
    }
    return PutOn(*entered.connection, *object->queue, call, md, pmo);
}

Outcome PutOne(MQHCONN connectionHandle, void* objectDescriptor, const PutCall& call) {
    EnteredConnection entered;
    Outcome outcome = EnterConnection(connectionHandle, entered);
    if (outcome.compCode != MQCC_OK) {
        return outcome;
    }
    mqi::MQOD od{};
    mqi::MQMD md{};
    mqi::MQPMO pmo{};
    if (!LoadStructure(objectDescriptor, od)) {
        return Failed(mqi::MQRC_OD_ERROR);
    }
    outcome = CheckCall(call, md, pmo);
    if (outcome.compCode != MQCC_OK) {
        return outcome;
    }
    OpenObject object;
    const MQLONG options = mqi::MQOO_OUTPUT | (pmo.Options & mqi::MQPMO_FAIL_IF_QUIESCING);
    outcome = OpenNamedObject(*entered.connection, od, options, object);
    if (outcome.compCode != MQCC_OK) {
        return outcome;
    }
    if (object.queue == nullptr) {
        return Failed(mqi::MQRC_OBJECT_TYPE_ERROR);
    }
    outcome = PutOn(*entered.connection, *object.queue, call, md, pmo);
    CloseStoreQueue(std::move(object.queue));
    if (outcome.compCode == MQCC_OK) {
        StoreStructure(od, objectDescriptor);
    }
    return outcome;
}

}  // namespace
}  // namespace spoolmq

using namespace spoolmq;

SPOOLMQ_EXPORT void MQPUT(MQHCONN Hconn, MQHOBJ Hobj, MQPTR MsgDesc, MQPTR PutMsgOpts, MQLONG BufferLength,
                          MQPTR Buffer, MQLONG* CompCode, MQLONG* Reason) {
    const PutCall call = {MsgDesc, PutMsgOpts, BufferLength, Buffer};
    RunVerb(Verb::kMqput, Hconn, CompCode, Reason, [&] { return Put(Hconn, Hobj, call); });
}

SPOOLMQ_EXPORT void MQPUT1(MQHCONN Hconn, MQPTR ObjDesc, MQPTR MsgDesc, MQPTR PutMsgOpts, MQLONG BufferLength,
                           MQPTR Buffer, MQLONG* CompCode, MQLONG* Reason) {
    const PutCall call = {MsgDesc, PutMsgOpts, BufferLength, Buffer};
    RunVerb(Verb::kMqput1, Hconn, CompCode, Reason, [&] { return PutOne(Hconn, ObjDesc, call); });
}
