// SPDX-License-Identifier: Apache-2.0

// Does what every verb needs around its own work: it follows the fault plan, looks up the connection and
// keeps C++ exceptions inside the library.
#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "spoolmq/base/mqi_server.h"
#include "spoolmq/mqi/faults.h"
#include "spoolmq/store/store.h"

namespace spoolmq {

/// The completion code and reason of a verb.
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

/// Returns whether the options contain at most one of several that exclude each other.
inline bool HasAtMostOneBit(MQLONG options) {
    return (options & (options - 1)) == 0;
}

/// Returns whether an identifier is all zeros, which means that there is none.
inline bool IsZero(const MQBYTE* bytes, std::size_t count) {
    return std::all_of(bytes, bytes + count, [](MQBYTE byte) { return byte == 0; });
}

enum class HandleSharing { kNone, kBlock, kNoBlock };

struct OpenObject {
    std::unique_ptr<StoreQueue> queue;  ///< null for the queue manager itself
    MQLONG options = 0;
    BrowseCursor cursor;
};

struct Connection {
    MQHCONN handle = mqi::MQHC_UNUSABLE_HCONN;
    HandleSharing sharing = HandleSharing::kNone;
    std::uint64_t threadId = 0;
    std::string applName;
    bool isClient = false;
    MQLONG messageLimit = 0;                 ///< the largest message of a client's channel, in bytes
    std::mutex busy;                         ///< held by the call in progress; guards the members below
    std::unique_ptr<StoreConnection> store;  ///< null once the connection has ended or is broken
    std::map<MQHOBJ, OpenObject> objects;
    bool isBroken = false;
};

/// A connection whose `busy` this thread holds.
struct EnteredConnection {
    std::shared_ptr<Connection> connection;
    std::unique_lock<std::mutex> guard;
};

/// Looks up a handle and enters its connection for one call. Fails with 2018 or 2219; or with 2009 for a
/// broken connection, which is entered nevertheless.
[[nodiscard]] Outcome EnterConnection(MQHCONN handle, EnteredConnection& entered);
/// Adds a connection and assigns its handle.
void AddConnection(const std::shared_ptr<Connection>& connection);
void ForgetConnection(MQHCONN handle);
/// Returns the connection that only this thread can use, or null if there is none.
[[nodiscard]] std::shared_ptr<Connection> OwnConnectionOfThread();
/// Closes all objects and disconnects from the store, which backs out the unit of work. The caller holds
/// `busy`.
void DropStore(Connection& connection);

/// Checks whether the state of the queue manager allows the call; fails with 2161, 2162 or 2009.
[[nodiscard]] Outcome CheckQueueManager(Connection& connection, bool failIfQuiescing);
/// Checks whether the unit of work can take another message; fails with 2003 or 2024.
[[nodiscard]] Outcome CheckUnit(const Connection& connection);
/// Sets `object` to the open object of the handle; fails with 2019 if there is none.
[[nodiscard]] Outcome FindObject(Connection& connection, MQHOBJ handle, OpenObject*& object);

/// Prints an error on standard error, because a reason code cannot say enough.
void ReportProblem(const std::string& text);
/// Returns the reason code of a failed status. Prints the error if the code says too little.
[[nodiscard]] MQLONG ReasonOf(const Status& status);

/// Runs one verb under the fault plan. `handle` is MQHC_UNUSABLE_HCONN for a call without a connection.
void RunVerb(Verb verb, MQHCONN handle, MQLONG* compCode, MQLONG* reason,
             const std::function<Outcome()>& call);

}  // namespace spoolmq

#ifdef _WIN32
#define SPOOLMQ_EXPORT extern "C" __declspec(dllexport)
#else
#define SPOOLMQ_EXPORT extern "C" __attribute__((visibility("default")))
#endif
