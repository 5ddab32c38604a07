// SPDX-License-Identifier: Apache-2.0

// Implements MQCONN, MQCONNX and MQDISC.
#include <algorithm>
#include <cstring>

#include "platform/environment.h"
#include "platform/process.h"
#include "spoolmq/mqi/library_kind.h"
#include "spoolmq/mqi/structures.h"
#include "spoolmq/mqi/verb_frame.h"
#include "spoolmq/store/descriptor.h"

namespace spoolmq {

namespace {

constexpr MQLONG kShareOptions =
    mqi::MQCNO_HANDLE_SHARE_NONE | mqi::MQCNO_HANDLE_SHARE_BLOCK | mqi::MQCNO_HANDLE_SHARE_NO_BLOCK;
constexpr MQLONG kBindingOptions = mqi::MQCNO_FASTPATH_BINDING | mqi::MQCNO_SHARED_BINDING |
                                   mqi::MQCNO_ISOLATED_BINDING | mqi::MQCNO_LOCAL_BINDING |
                                   mqi::MQCNO_CLIENT_BINDING;

HandleSharing SharingOf(MQLONG options) {
    if ((options & mqi::MQCNO_HANDLE_SHARE_BLOCK) != 0) {
        return HandleSharing::kBlock;
    }
    if ((options & mqi::MQCNO_HANDLE_SHARE_NO_BLOCK) != 0) {
        return HandleSharing::kNoBlock;
    }
    return HandleSharing::kNone;
}

// Returns whether this is a client connection. Every connection through the client library is one; through
// the server library, the options or MQ_CONNECT_TYPE must ask for it.
bool IsClientConnection(MQLONG options) {
    if (kIsClientLibrary || (options & mqi::MQCNO_CLIENT_BINDING) != 0) {
        return true;
    }
    return (options & kBindingOptions) == 0 && platform::ReadEnvironment("MQ_CONNECT_TYPE") == "CLIENT";
}

// Compares a client's channel definition with the attributes of the queue manager, and sets the client's
// limits.
Outcome CheckChannel(const mqi::MQCNO& cno, const QmgrAttributes& attributes, Connection& connection) {
    connection.isClient = IsClientConnection(cno.Options);
    if (!connection.isClient) {
        return kOk;
    }
    if ((cno.Options & mqi::MQCNO_LOCAL_BINDING) != 0) {
        return Failed(mqi::MQRC_ENVIRONMENT_ERROR);
    }
    connection.messageLimit = attributes.channelMaxMessageLength;
    if (cno.ClientConnPtr != nullptr && cno.ClientConnOffset != 0) {
        return Failed(mqi::MQRC_CLIENT_CONN_ERROR);
    }
    if (cno.ClientConnPtr == nullptr) {
        return kOk;
    }
    mqi::MQCDStart cd{};
    std::memcpy(&cd, cno.ClientConnPtr, offsetof(mqi::MQCDStart, unusedVersion2));
    if (cd.Version < 1 || cd.Version > 13) {
        return Failed(mqi::MQRC_CD_ERROR);
    }
    if (cd.Version >= 2) {
        std::memcpy(&cd, cno.ClientConnPtr, sizeof cd);
    }
    if (cd.MaxMsgLength > 0) {
        connection.messageLimit = std::min(connection.messageLimit, cd.MaxMsgLength);
    }
    const std::string_view channel = FieldText(cd.ChannelName, sizeof cd.ChannelName);
    const std::string_view server = FieldText(cd.ConnectionName, sizeof cd.ConnectionName);
    if (!attributes.listener.empty() && server != attributes.listener) {
        return Failed(mqi::MQRC_HOST_NOT_AVAILABLE);
    }
    if (!attributes.channel.empty() && channel != attributes.channel) {
        return Failed(mqi::MQRC_UNKNOWN_CHANNEL_NAME);
    }
    return kOk;
}

Outcome CheckState(const QmgrAttributes& attributes) {
    switch (static_cast<QmgrState>(attributes.state)) {
        case QmgrState::kRunning: break;
        case QmgrState::kQuiescing: return Failed(mqi::MQRC_Q_MGR_QUIESCING);
        case QmgrState::kStopping: return Failed(mqi::MQRC_Q_MGR_STOPPING);
        case QmgrState::kEnded: return Failed(MQRC_Q_MGR_NOT_AVAILABLE);
    }
    return kOk;
}

// Answers a thread that already has a connection of its own, and cannot have a second one.
Outcome ConnectAgain(const Connection& own, const std::string& name, MQHCONN& handle) {
    if (!name.empty() && own.store != nullptr && name != own.store->object) {
        return Failed(mqi::MQRC_ANOTHER_Q_MGR_CONNECTED);
    }
    handle = own.handle;
    return Warning(mqi::MQRC_ALREADY_CONNECTED);
}

Outcome Connect(const char* qmgrName, const mqi::MQCNO& cno, MQHCONN* handle) {
    if (qmgrName == nullptr || handle == nullptr) {
        return Failed(MQRC_Q_MGR_NAME_ERROR);
    }
    if (!HasAtMostOneBit(cno.Options & kShareOptions) || !HasAtMostOneBit(cno.Options & kBindingOptions)) {
        return Failed(mqi::MQRC_OPTIONS_ERROR);
    }
    std::string name(FieldText(qmgrName, 48));
    auto connection = std::make_shared<Connection>();
    connection->sharing = SharingOf(cno.Options);
    connection->threadId = platform::CurrentThreadId();
    // A client may ask for "*", any queue manager, or for "*NAME", any queue manager of that name.
    if (!name.empty() && name[0] == '*' && IsClientConnection(cno.Options)) {
        name.erase(0, 1);
    }
    if (connection->sharing == HandleSharing::kNone) {
        const std::shared_ptr<Connection> own = OwnConnectionOfThread();
        if (own != nullptr) {
            return ConnectAgain(*own, name, *handle);
        }
    }
    const std::string root = platform::ReadEnvironment("SPOOLMQ_DIR");
    if (root.empty()) {
        ReportProblem("SPOOLMQ_DIR is not set: it names the directory that holds the queue managers");
        return Failed(MQRC_Q_MGR_NOT_AVAILABLE);
    }
    const Status status = ConnectStore(root, name, connection->store);
    if (status.code == StatusCode::kFailed) {
        ReportProblem(status.error);
        return Failed(mqi::MQRC_UNEXPECTED_ERROR);
    }
    if (!status.IsOk()) {
        return Failed(ReasonOf(status));
    }
    const QmgrAttributes& attributes = connection->store->attributes.values;
    Outcome outcome = CheckState(attributes);
    if (outcome.compCode == MQCC_OK) {
        outcome = CheckChannel(cno, attributes, *connection);
    }
    if (outcome.compCode != MQCC_OK) {
        DropStore(*connection);
        return outcome;
    }
    connection->applName = FieldText(cno.ApplName, sizeof cno.ApplName);
    if (connection->applName.empty()) {
        connection->applName = platform::ProgramName();
    }
    AddConnection(connection);
    *handle = connection->handle;
    return kOk;
}

// Fills in the identifier of the connection, which callers with version 5 or later of MQCNO receive.
void FillConnectionId(MQHCONN handle, MQBYTE* connectionId) {
    std::memset(connectionId, 0, 24);
    std::memcpy(connectionId, "AMQC", 4);
    const std::int64_t process = platform::CurrentProcessId();
    std::memcpy(connectionId + 8, &process, sizeof process);
    std::memcpy(connectionId + 16, &handle, sizeof handle);
}

Outcome ConnectWithOptions(const char* qmgrName, void* connectOptions, MQHCONN* handle) {
    mqi::MQCNO cno{};
    if (connectOptions != nullptr && !LoadStructure(connectOptions, cno)) {
        return Failed(mqi::MQRC_CNO_ERROR);
    }
    const Outcome outcome = Connect(qmgrName, cno, handle);
    if (outcome.compCode != MQCC_FAILED && cno.Version >= 5) {
        FillConnectionId(*handle, cno.ConnectionId);
        StoreStructure(cno, connectOptions);
    }
    return outcome;
}

// Commits the unit of work. What cannot be committed is backed out when the connection ends.
Outcome CommitAtEnd(StoreConnection& store) {
    if (store.unit.isRollbackOnly && UncommittedCount(store) > 0) {
        return Warning(mqi::MQRC_BACKED_OUT);
    }
    const Status status = CommitStore(store);
    if (status.IsOk()) {
        return kOk;
    }
    ReportProblem(status.error);
    return Warning(mqi::MQRC_BACKED_OUT);
}

Outcome Disconnect(MQHCONN* handle) {
    if (handle == nullptr) {
        return Failed(mqi::MQRC_HCONN_ERROR);
    }
    EnteredConnection entered;
    Outcome outcome = EnterConnection(*handle, entered);
    Connection* connection = entered.connection.get();
    if (connection == nullptr) {
        return outcome;
    }
    if (outcome.compCode == MQCC_OK) {
        outcome = CommitAtEnd(*connection->store);
    }
    DropStore(*connection);
    ForgetConnection(*handle);
    *handle = mqi::MQHC_UNUSABLE_HCONN;
    return outcome;
}

}  // namespace
}  // namespace spoolmq

using namespace spoolmq;

SPOOLMQ_EXPORT void MQCONN(MQCHAR* QMgrName, MQHCONN* Hconn, MQLONG* CompCode, MQLONG* Reason) {
    RunVerb(Verb::kMqconn, mqi::MQHC_UNUSABLE_HCONN, CompCode, Reason,
            [&] { return Connect(QMgrName, mqi::MQCNO{}, Hconn); });
}

SPOOLMQ_EXPORT void MQCONNX(MQCHAR* QMgrName, ::MQCNO* ConnectOpts, MQHCONN* Hconn, MQLONG* CompCode,
                            MQLONG* Reason) {
    RunVerb(Verb::kMqconnx, mqi::MQHC_UNUSABLE_HCONN, CompCode, Reason,
            [&] { return ConnectWithOptions(QMgrName, ConnectOpts, Hconn); });
}

SPOOLMQ_EXPORT void MQDISC(MQHCONN* Hconn, MQLONG* CompCode, MQLONG* Reason) {
    const MQHCONN handle = Hconn == nullptr ? mqi::MQHC_UNUSABLE_HCONN : *Hconn;
    RunVerb(Verb::kMqdisc, handle, CompCode, Reason, [&] { return Disconnect(Hconn); });
}
