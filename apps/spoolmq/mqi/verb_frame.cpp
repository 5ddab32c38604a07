// SPDX-License-Identifier: Apache-2.0
#include "spoolmq/mqi/verb_frame.h"

#include <cstdio>
#include <new>

#include "platform/process.h"

namespace spoolmq {

namespace {

struct ConnectionTable {
    std::mutex guard;
    std::map<MQHCONN, std::shared_ptr<Connection>> connections;
    // Handles are opaque: they do not look like an index, and are never 0.
    MQHCONN next = 0x00140006;
};

ConnectionTable& Table() {
    // The table is never destroyed, because calls may come while the process is ending.
    static auto* const table = new ConnectionTable;
    return *table;
}

// When a thread ends, this ends the connection that only the thread can use, and backs out its unit of work.
struct ThreadEnd {
    bool isArmed = false;
    ThreadEnd() = default;
    ThreadEnd(const ThreadEnd&) = delete;
    ThreadEnd& operator=(const ThreadEnd&) = delete;
    ~ThreadEnd() {
        if (!isArmed) {
            return;
        }
        const std::shared_ptr<Connection> connection = OwnConnectionOfThread();
        if (connection == nullptr) {
            return;
        }
        ForgetConnection(connection->handle);
        const std::lock_guard<std::mutex> busy(connection->busy);
        DropStore(*connection);
    }
};
thread_local ThreadEnd threadEnd;

// Loses the connection as a real one would be lost: the queue manager backs out its unit of work, and every
// later call with the handle fails.
void BreakConnection(MQHCONN handle) {
    EnteredConnection entered;
    if (EnterConnection(handle, entered).reason != MQRC_NONE) {
        return;
    }
    entered.connection->isBroken = true;
    DropStore(*entered.connection);
}

// Does what the reason "backed out" says: at MQCMIT and MQDISC the unit of work is backed out, at any other
// verb it becomes rollback-only.
void FailUnit(MQHCONN handle, Verb verb) {
    EnteredConnection entered;
    if (EnterConnection(handle, entered).reason != MQRC_NONE) {
        return;
    }
    StoreConnection& store = *entered.connection->store;
    if (verb == Verb::kMqcmit || verb == Verb::kMqdisc) {
        static_cast<void>(BackOutStore(store));
    } else {
        store.unit.isRollbackOnly = true;
    }
}

Outcome RunGuarded(const std::function<Outcome()>& call) {
    try {
        return call();
    } catch (const std::bad_alloc&) {
        return Failed(mqi::MQRC_STORAGE_NOT_AVAILABLE);
    } catch (...) {
        return Failed(mqi::MQRC_UNEXPECTED_ERROR);
    }
}

Outcome RunPlanned(Verb verb, MQHCONN handle, const std::function<Outcome()>& call) {
    const Status planned = LoadFaultPlan();
    if (!planned.IsOk()) {
        ReportProblem(planned.error);
        return Failed(mqi::MQRC_UNEXPECTED_ERROR);
    }
    const Fault fault = NextFault(verb);
    if (fault.kind == FaultKind::kKillBefore) {
        platform::KillCurrentProcess();
    }
    if (fault.kind != FaultKind::kFail) {
        const Outcome outcome = RunGuarded(call);
        if (fault.kind == FaultKind::kKillAfter) {
            platform::KillCurrentProcess();
        }
        if (fault.kind == FaultKind::kNone) {
            return outcome;
        }
    }
    if (fault.reason == mqi::MQRC_CONNECTION_BROKEN) {
        BreakConnection(handle);
    }
    if (fault.reason == mqi::MQRC_BACKED_OUT) {
        FailUnit(handle, verb);
    }
    return {fault.compCode, fault.reason};
}

}  // namespace

Outcome EnterConnection(MQHCONN handle, EnteredConnection& entered) {
    std::shared_ptr<Connection> connection;
    {
        ConnectionTable& table = Table();
        const std::lock_guard<std::mutex> lock(table.guard);
        const auto found = table.connections.find(handle);
        if (found == table.connections.end()) {
            return Failed(mqi::MQRC_HCONN_ERROR);
        }
        connection = found->second;
    }
    if (connection->sharing == HandleSharing::kNone && connection->threadId != platform::CurrentThreadId()) {
        return Failed(mqi::MQRC_HCONN_ERROR);
    }
    std::unique_lock<std::mutex> guard(connection->busy, std::defer_lock);
    if (connection->sharing != HandleSharing::kNoBlock) {
        guard.lock();
    } else if (!guard.try_lock()) {
        return Failed(mqi::MQRC_CALL_IN_PROGRESS);
    }
    // Another thread may have disconnected while this one waited for its turn.
    if (connection->store == nullptr && !connection->isBroken) {
        return Failed(mqi::MQRC_HCONN_ERROR);
    }
    const bool isBroken = connection->isBroken;
    entered.connection = std::move(connection);
    entered.guard = std::move(guard);
    return isBroken ? Failed(mqi::MQRC_CONNECTION_BROKEN) : kOk;
}

void AddConnection(const std::shared_ptr<Connection>& connection) {
    ConnectionTable& table = Table();
    const std::lock_guard<std::mutex> lock(table.guard);
    connection->handle = table.next;
    table.next += 2;
    table.connections[connection->handle] = connection;
    if (connection->sharing == HandleSharing::kNone) {
        threadEnd.isArmed = true;
    }
}

void ForgetConnection(MQHCONN handle) {
    ConnectionTable& table = Table();
    const std::lock_guard<std::mutex> lock(table.guard);
    table.connections.erase(handle);
}

std::shared_ptr<Connection> OwnConnectionOfThread() {
    ConnectionTable& table = Table();
    const std::lock_guard<std::mutex> lock(table.guard);
    for (const auto& [handle, connection] : table.connections) {
        if (connection->sharing == HandleSharing::kNone &&
            connection->threadId == platform::CurrentThreadId()) {
            return connection;
        }
    }
    return nullptr;
}

void DropStore(Connection& connection) {
    for (auto& [handle, object] : connection.objects) {
        if (object.queue != nullptr) {
            CloseStoreQueue(std::move(object.queue));
        }
    }
    connection.objects.clear();
    if (connection.store != nullptr) {
        DisconnectStore(std::move(connection.store));
    }
}

Outcome CheckQueueManager(Connection& connection, bool failIfQuiescing) {
    const Status status = RefreshAttributes(connection.store->attributes);
    if (!status.IsOk()) {
        ReportProblem(status.error);
    }
    switch (static_cast<QmgrState>(connection.store->attributes.values.state)) {
        case QmgrState::kRunning: break;
        case QmgrState::kQuiescing: return failIfQuiescing ? Failed(mqi::MQRC_Q_MGR_QUIESCING) : kOk;
        case QmgrState::kStopping: return Failed(mqi::MQRC_Q_MGR_STOPPING);
        case QmgrState::kEnded:
            connection.isBroken = true;
            DropStore(connection);
            return Failed(mqi::MQRC_CONNECTION_BROKEN);
    }
    return kOk;
}

Outcome CheckUnit(const Connection& connection) {
    const StoreConnection& store = *connection.store;
    if (store.unit.isRollbackOnly) {
        return Failed(mqi::MQRC_BACKED_OUT);
    }
    if (UncommittedCount(store) >= static_cast<std::size_t>(store.attributes.values.maxUncommitted)) {
        return Failed(MQRC_SYNCPOINT_LIMIT_REACHED);
    }
    return kOk;
}

Outcome FindObject(Connection& connection, MQHOBJ handle, OpenObject*& object) {
    const auto found = connection.objects.find(handle);
    if (found == connection.objects.end()) {
        return Failed(mqi::MQRC_HOBJ_ERROR);
    }
    object = &found->second;
    return kOk;
}

void ReportProblem(const std::string& text) {
    std::fprintf(stderr, "spoolmq: %s\n", text.c_str());
}

MQLONG ReasonOf(const Status& status) {
    switch (status.code) {
        case StatusCode::kOk: return MQRC_NONE;
        case StatusCode::kUnknownQueueManager: return MQRC_Q_MGR_NAME_ERROR;
        case StatusCode::kUnknownQueue: return MQRC_UNKNOWN_OBJECT_NAME;
        case StatusCode::kInUse: return MQRC_OBJECT_IN_USE;
        case StatusCode::kQueueDeleted: return mqi::MQRC_Q_DELETED;
        case StatusCode::kNoMessage: return MQRC_NO_MSG_AVAILABLE;
        case StatusCode::kAlreadyExists:
        case StatusCode::kMessageGone:
        case StatusCode::kFailed: break;
    }
    ReportProblem(status.error);
    return mqi::MQRC_RESOURCE_PROBLEM;
}

void RunVerb(Verb verb, MQHCONN handle, MQLONG* compCode, MQLONG* reason,
             const std::function<Outcome()>& call) {
    const Outcome outcome = RunPlanned(verb, handle, call);
    if (compCode != nullptr) {
        *compCode = outcome.compCode;
    }
    if (reason != nullptr) {
        *reason = outcome.reason;
    }
}

}  // namespace spoolmq
