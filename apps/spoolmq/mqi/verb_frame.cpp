#include "spoolmq/mqi/verb_frame.h"

#include <cstdio>
#include <new>

namespace spoolmq {

namespace {

struct ConnectionTable {
    std::mutex guard;
    std::map<MQHCONN, std::shared_ptr<Connection>> connections;
    MQHCONN next = 0x00140006;  // handles are opaque: nothing that looks like an index, never 0
};

/// Never destroyed: calls may come while the process is ending.
ConnectionTable& Table() {
    static auto* const table = new ConnectionTable;
    return *table;
}

/// A connection of this thread alone ends with the thread, backed out.
struct ThreadEnd {
    bool isArmed = false;
    ThreadEnd() = default;
    ThreadEnd(const ThreadEnd&) = delete;
    ThreadEnd& operator=(const ThreadEnd&) = delete;
    ~ThreadEnd() {
        if (!isArmed) return;
        const std::shared_ptr<Connection> connection = OwnConnectionOfThread();
        if (connection == nullptr) return;
        ForgetConnection(connection->handle);
        const std::lock_guard<std::mutex> busy(connection->busy);
        DropStore(connection.get());
    }
};
thread_local ThreadEnd threadEnd;

/// The connection is lost as a real one would be: the queue manager backs out, the handle is dead.
void BreakConnection(MQHCONN handle) {
    EnteredConnection entered;
    if (EnterConnection(handle, &entered).reason != MQRC_NONE) return;
    entered.connection->isBroken = true;
    DropStore(entered.connection.get());
}

void DoomUnit(MQHCONN handle, Verb verb) {
    EnteredConnection entered;
    if (EnterConnection(handle, &entered).reason != MQRC_NONE) return;
    std::string why;
    if (verb == Verb::Mqcmit || verb == Verb::Mqdisc)
        static_cast<void>(BackOutStore(entered.connection->store.get(), &why));
    else
        entered.connection->isDoomed = true;
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
    std::string why;
    if (!LoadFaultPlan(&why)) {
        NoteProblem(why);
        return Failed(mqi::MQRC_UNEXPECTED_ERROR);
    }
    const Fault fault = NextFault(verb);
    if (fault.kind == FaultKind::KillBefore) EndProcessAtOnce();
    Outcome outcome{fault.compCode, fault.reason};
    if (fault.kind != FaultKind::Fail) {
        const Outcome done = RunGuarded(call);
        if (fault.kind == FaultKind::KillAfter) EndProcessAtOnce();
        if (fault.kind == FaultKind::None) return done;
    }
    if (outcome.reason == mqi::MQRC_CONNECTION_BROKEN) BreakConnection(handle);
    if (outcome.reason == mqi::MQRC_BACKED_OUT) DoomUnit(handle, verb);
    return outcome;
}

}  // namespace

Outcome EnterConnection(MQHCONN handle, EnteredConnection* entered) {
    std::shared_ptr<Connection> connection;
    {
        ConnectionTable& table = Table();
        const std::lock_guard<std::mutex> lock(table.guard);
        const auto found = table.connections.find(handle);
        if (found == table.connections.end()) return Failed(mqi::MQRC_HCONN_ERROR);
        connection = found->second;
    }
    if (connection->sharing == HandleSharing::None && connection->threadId != ThreadId())
        return Failed(mqi::MQRC_HCONN_ERROR);
    std::unique_lock<std::mutex> guard(connection->busy, std::defer_lock);
    if (connection->sharing != HandleSharing::NoBlock)
        guard.lock();
    else if (!guard.try_lock())
        return Failed(mqi::MQRC_CALL_IN_PROGRESS);
    // Another thread may have disconnected while this one waited for its turn.
    if (connection->store == nullptr && !connection->isBroken) return Failed(mqi::MQRC_HCONN_ERROR);
    const bool isBroken = connection->isBroken;
    entered->connection = std::move(connection);
    entered->guard = std::move(guard);
    return isBroken ? Failed(mqi::MQRC_CONNECTION_BROKEN) : kOk;
}

void AddConnection(const std::shared_ptr<Connection>& connection) {
    ConnectionTable& table = Table();
    const std::lock_guard<std::mutex> lock(table.guard);
    connection->handle = table.next;
    table.next += 2;
    table.connections[connection->handle] = connection;
    if (connection->sharing == HandleSharing::None) threadEnd.isArmed = true;
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
        if (connection->sharing == HandleSharing::None && connection->threadId == ThreadId())
            return connection;
    }
    return nullptr;
}

void DropStore(Connection* connection) {
    for (auto& [handle, object] : connection->objects) {
        if (object.queue != nullptr) CloseStoreQueue(std::move(object.queue));
    }
    connection->objects.clear();
    if (connection->store != nullptr) DisconnectStore(std::move(connection->store));
}

Outcome CheckQueueManager(Connection* connection, bool failIfQuiescing) {
    std::string why;
    if (!RefreshAttributes(&connection->store->attributes, &why)) NoteProblem(why);
    switch (static_cast<QmgrState>(connection->store->attributes.values.state)) {
        case QmgrState::Running: break;
        case QmgrState::Quiescing: return failIfQuiescing ? Failed(mqi::MQRC_Q_MGR_QUIESCING) : kOk;
        case QmgrState::Stopping: return Failed(mqi::MQRC_Q_MGR_STOPPING);
        case QmgrState::Ended:
            connection->isBroken = true;
            DropStore(connection);
            return Failed(mqi::MQRC_CONNECTION_BROKEN);
    }
    return kOk;
}

Outcome FindObject(Connection* connection, MQHOBJ handle, OpenObject** object) {
    const auto found = connection->objects.find(handle);
    if (found == connection->objects.end()) return Failed(mqi::MQRC_HOBJ_ERROR);
    *object = &found->second;
    return kOk;
}

void NoteProblem(const std::string& text) {
    std::fprintf(stderr, "spoolmq: %s\n", text.c_str());
}

MQLONG ReasonOfStore(StoreStatus status, const std::string& why) {
    switch (status) {
        case StoreStatus::Ok: return MQRC_NONE;
        case StoreStatus::UnknownQueueManager: return MQRC_Q_MGR_NAME_ERROR;
        case StoreStatus::UnknownQueue: return MQRC_UNKNOWN_OBJECT_NAME;
        case StoreStatus::InUse: return MQRC_OBJECT_IN_USE;
        case StoreStatus::QueueDeleted: return mqi::MQRC_Q_DELETED;
        case StoreStatus::NoMessage: return MQRC_NO_MSG_AVAILABLE;
        case StoreStatus::Exists:
        case StoreStatus::Taken:
        case StoreStatus::Failed: break;
    }
    NoteProblem(why);
    return mqi::MQRC_RESOURCE_PROBLEM;
}

void RunVerb(Verb verb, MQHCONN handle, MQLONG* compCode, MQLONG* reason,
             const std::function<Outcome()>& call) {
    const Outcome outcome = RunPlanned(verb, handle, call);
    if (compCode != nullptr) *compCode = outcome.compCode;
    if (reason != nullptr) *reason = outcome.reason;
}

}  // namespace spoolmq
