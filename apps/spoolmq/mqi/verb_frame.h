// What every verb goes through: the fault plan, the look-up of its connection, and the guard that no C++
// exception leaves the library.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "spoolmq/base/mqi_server.h"
#include "spoolmq/mqi/faults.h"
#include "spoolmq/store/store.h"

namespace spoolmq {

struct Outcome {
    MQLONG compCode = MQCC_OK;
    MQLONG reason = MQRC_NONE;
};

inline Outcome Failed(MQLONG reason) {
    return {MQCC_FAILED, reason};
}
inline Outcome Warning(MQLONG reason) {
    return {MQCC_WARNING, reason};
}
inline constexpr Outcome kOk{};

enum class HandleSharing { None, Block, NoBlock };

struct OpenObject {
    std::unique_ptr<StoreQueue> queue;  ///< null for the queue manager itself
    MQLONG options = 0;
    BrowseCursor cursor;
};

struct Connection {
    MQHCONN handle = mqi::MQHC_UNUSABLE_HCONN;
    HandleSharing sharing = HandleSharing::None;
    std::uint64_t threadId = 0;
    std::string applName;
    bool isClient = false;
    MQLONG messageLimit = 0;                 ///< of a client's channel, bytes
    std::mutex busy;                         ///< held by the call in progress; guards all that follows
    std::unique_ptr<StoreConnection> store;  ///< null once disconnected or broken
    std::map<MQHOBJ, OpenObject> objects;
    bool isBroken = false;
    bool isDoomed = false;  ///< its unit of work can only be backed out
};

/// A connection with its guard held.
struct EnteredConnection {
    std::shared_ptr<Connection> connection;
    std::unique_lock<std::mutex> guard;
};

/// The connection of a handle, for one call. 2018, 2219; 2009 for a broken one, which is entered all the
/// same.
[[nodiscard]] Outcome EnterConnection(MQHCONN handle, EnteredConnection* entered);
/// Adds a connection and gives it its handle.
void AddConnection(const std::shared_ptr<Connection>& connection);
void ForgetConnection(MQHCONN handle);
/// The connection that this thread holds for itself; null when it has none.
[[nodiscard]] std::shared_ptr<Connection> OwnConnectionOfThread();
/// Closes all objects and lets go of the store, which backs out what is uncommitted. The guard must be held.
void DropStore(Connection* connection);

/// Whether the call can go on as far as the queue manager's state is concerned: 2161, 2162, 2009.
[[nodiscard]] Outcome CheckQueueManager(Connection* connection, bool failIfQuiescing);
/// 2019 when there is no such object.
[[nodiscard]] Outcome FindObject(Connection* connection, MQHOBJ handle, OpenObject** object);

/// Says on stderr what a completion code cannot.
void NoteProblem(const std::string& text);
/// The reason for a store's failure; the text goes to stderr where the reason alone would leave one in the
/// dark.
[[nodiscard]] MQLONG ReasonOfStore(StoreStatus status, const std::string& why);

/// Runs one verb through the fault plan. handle is MQHC_UNUSABLE_HCONN for calls that have none yet.
void RunVerb(Verb verb, MQHCONN handle, MQLONG* compCode, MQLONG* reason,
             const std::function<Outcome()>& call);

}  // namespace spoolmq

#ifdef _WIN32
#define SPOOLMQ_EXPORT extern "C" __declspec(dllexport)
#else
#define SPOOLMQ_EXPORT extern "C" __attribute__((visibility("default")))
#endif
