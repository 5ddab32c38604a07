// SPDX-License-Identifier: Apache-2.0

// Implements MQOPEN and MQCLOSE.
#include "spoolmq/mqi/open.h"

#include "spoolmq/mqi/structures.h"
#include "spoolmq/store/descriptor.h"

namespace spoolmq {

namespace {

constexpr MQLONG kInputOptions = MQOO_INPUT_AS_Q_DEF | mqi::MQOO_INPUT_SHARED | MQOO_INPUT_EXCLUSIVE;
constexpr MQLONG kSetOption = 64;
constexpr MQLONG kAccessOptions =
    kInputOptions | mqi::MQOO_BROWSE | mqi::MQOO_OUTPUT | mqi::MQOO_INQUIRE | kSetOption;
constexpr MQLONG kPublishedOpenOptions = 0x1FFFFF;
constexpr MQLONG kReadAheadOptions = 524288 | 1048576;
constexpr MQLONG kBindOptions = 16384 | 32768;
constexpr MQLONG kCloseQuiesce = 32;  // MQCO_QUIESCE, which only matters with read-ahead

bool AreOptionsValid(MQLONG options) {
    return (options & ~kPublishedOpenOptions) == 0 && (options & kAccessOptions) != 0 &&
           HasAtMostOneBit(options & kInputOptions) && HasAtMostOneBit(options & kReadAheadOptions) &&
           HasAtMostOneBit(options & kBindOptions);
}

InputUse InputUseOf(MQLONG options, const QueueAttributes& attributes) {
    if ((options & kInputOptions) == 0) {
        return InputUse::kNone;
    }
    if (attributes.shareable == 0 || (options & MQOO_INPUT_EXCLUSIVE) != 0) {
        return InputUse::kExclusive;
    }
    if ((options & mqi::MQOO_INPUT_SHARED) != 0) {
        return InputUse::kShared;
    }
    return attributes.defaultOpenExclusive != 0 ? InputUse::kExclusive : InputUse::kShared;
}

void FillResolvedNames(const Connection& connection, const OpenObject& object, mqi::MQOD& od) {
    const MQLONG resolving = kInputOptions | mqi::MQOO_BROWSE | mqi::MQOO_OUTPUT;
    const bool isResolved = object.queue != nullptr && (object.options & resolving) != 0;
    FillField(od.ResolvedQName, sizeof od.ResolvedQName, isResolved ? object.queue->state->object : "");
    FillField(od.ResolvedQMgrName, sizeof od.ResolvedQMgrName, isResolved ? connection.store->object : "");
    od.ResolvedType = od.ObjectType;
}

Outcome OpenQueue(StoreConnection& store, const std::string& name, OpenObject& object) {
    // The first open reads the attributes, which decide what kind of open is wanted.
    Status status = OpenStoreQueue(store, name, InputUse::kNone, object.queue);
    if (status.IsOk()) {
        const InputUse use = InputUseOf(object.options, object.queue->state->attributes.values);
        if (use != InputUse::kNone) {
            CloseStoreQueue(std::move(object.queue));
            status = OpenStoreQueue(store, name, use, object.queue);
        }
    }
    return status.IsOk() ? kOk : Failed(ReasonOf(status));
}

Outcome Open(MQHCONN connectionHandle, void* objectDescriptor, MQLONG options, MQHOBJ* handle) {
    EnteredConnection entered;
    Outcome outcome = EnterConnection(connectionHandle, entered);
    if (outcome.compCode != MQCC_OK) {
        return outcome;
    }
    if (handle == nullptr) {
        return Failed(mqi::MQRC_HOBJ_ERROR);
    }
    mqi::MQOD od{};
    if (!LoadStructure(objectDescriptor, od)) {
        return Failed(mqi::MQRC_OD_ERROR);
    }
    OpenObject object;
    outcome = OpenNamedObject(*entered.connection, od, options, object);
    if (outcome.compCode != MQCC_OK) {
        return outcome;
    }
    StoreStructure(od, objectDescriptor);
    std::map<MQHOBJ, OpenObject>& objects = entered.connection->objects;
    *handle = objects.empty() ? 2 : objects.rbegin()->first + 1;
    objects[*handle] = std::move(object);
    return outcome;
}

Outcome Close(MQHCONN connectionHandle, MQHOBJ* handle, MQLONG options) {
    EnteredConnection entered;
    Outcome outcome = EnterConnection(connectionHandle, entered);
    if (outcome.compCode != MQCC_OK) {
        return outcome;
    }
    if (handle == nullptr) {
        return Failed(mqi::MQRC_HOBJ_ERROR);
    }
    OpenObject* object = nullptr;
    outcome = FindObject(*entered.connection, *handle, object);
    if (outcome.compCode != MQCC_OK) {
        return outcome;
    }
    // The other options are for dynamic queues and subscriptions, which do not exist here.
    if ((options & ~kCloseQuiesce) != MQCO_NONE) {
        return Failed(mqi::MQRC_OPTION_NOT_VALID_FOR_TYPE);
    }
    if (object->queue != nullptr) {
        CloseStoreQueue(std::move(object->queue));
    }
    entered.connection->objects.erase(*handle);
    *handle = mqi::MQHO_UNUSABLE_HOBJ;
    return kOk;
}

}  // namespace

Outcome OpenNamedObject(Connection& connection, mqi::MQOD& od, MQLONG options, OpenObject& object) {
    Outcome outcome = CheckQueueManager(connection, (options & MQOO_FAIL_IF_QUIESCING) != 0);
    if (outcome.compCode != MQCC_OK) {
        return outcome;
    }
    if (!AreOptionsValid(options)) {
        return Failed(mqi::MQRC_OPTIONS_ERROR);
    }
    if (od.ObjectType != mqi::MQOT_Q && od.ObjectType != mqi::MQOT_Q_MGR) {
        return Failed(mqi::MQRC_OBJECT_TYPE_ERROR);
    }
    const std::string qmgrName(FieldText(od.ObjectQMgrName, sizeof od.ObjectQMgrName));
    if (!qmgrName.empty() && qmgrName != connection.store->object) {
        return Failed(mqi::MQRC_UNKNOWN_OBJECT_Q_MGR);
    }
    object.options = options;
    if (od.ObjectType == mqi::MQOT_Q) {
        const std::string name(FieldText(od.ObjectName, sizeof od.ObjectName));
        outcome = OpenQueue(*connection.store, name, object);
    } else if ((options & (kAccessOptions & ~mqi::MQOO_INQUIRE)) != 0) {
        outcome = Failed(mqi::MQRC_OPTION_NOT_VALID_FOR_TYPE);
    }
    if (outcome.compCode == MQCC_OK) {
        FillResolvedNames(connection, object, od);
    }
    return outcome;
}

}  // namespace spoolmq

using namespace spoolmq;

SPOOLMQ_EXPORT void MQOPEN(MQHCONN Hconn, MQPTR ObjDesc, MQLONG Options, MQHOBJ* Hobj, MQLONG* CompCode,
                           MQLONG* Reason) {
    if (Hobj != nullptr) {
        *Hobj = mqi::MQHO_UNUSABLE_HOBJ;
    }
    RunVerb(Verb::kMqopen, Hconn, CompCode, Reason, [&] { return Open(Hconn, ObjDesc, Options, Hobj); });
}

SPOOLMQ_EXPORT void MQCLOSE(MQHCONN Hconn, MQHOBJ* Hobj, MQLONG Options, MQLONG* CompCode, MQLONG* Reason) {
    RunVerb(Verb::kMqclose, Hconn, CompCode, Reason, [&] { return Close(Hconn, Hobj, Options); });
}
