// The store: queue managers, queues and messages as folders and files, shared by any number of processes. The
// MQI library and `mqam queue` stand on it.
//
//     $SPOOLMQ_DIR/                      the root
//       QM1/                             a queue manager: any folder; attributes in qmgr.ini
//         ORDERS/                        a queue: any folder in it; attributes in .queue.ini
//           20260131-235959-123456789.msg    a message: the file is its body, nothing else
//           20260131-235959-987654321~2.msg  one that was backed out twice
//           orders.csv                       a file that somebody copied in: a message, too
//           .desc/                       descriptors of messages, as text
//           .opens/                      who has the queue open for input
//         .units/                        units of work in progress, see unit.h
//
// Every routine that can fail says why in *why: the thing, the reason, where it helps the next step. A
// connection is used by one thread at a time; different connections are independent.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "spoolmq/attributes/attributes.h"
#include "spoolmq/base/mqi_server.h"
#include "spoolmq/store/counters.h"
#include "spoolmq/store/listing.h"
#include "spoolmq/store/names.h"
#include "spoolmq/store/unit.h"

namespace spoolmq {

enum class StoreStatus {
    Ok,
    UnknownQueueManager,
    UnknownQueue,
    Exists,        ///< creating what is there
    InUse,         ///< opened for input in a way that excludes this
    QueueDeleted,  ///< the folder of an open queue is gone
    NoMessage,
    Taken,   ///< another reader was faster; look again
    Failed,  ///< the file system refused, or an attribute file is wrong
};

/// A queue as its connection knows it, shared by its open handles.
struct QueueState {
    std::string object;  ///< "A/B"
    std::string folder;  ///< "A%2FB"
    std::string path;
    std::uint64_t identity = 0;
    WatchedAttributes<QueueAttributes> attributes;
    QueueCounters counters;
};

struct StoreConnection {
    std::string object;  ///< name of the queue manager
    std::string path;
    WatchedAttributes<QmgrAttributes> attributes;
    QmgrCounters counters;
    Unit unit;
    std::map<std::string, std::unique_ptr<QueueState>> queues;  ///< by folder
    std::int64_t lastRecoveryMs = 0;
    std::uint64_t returnsHere = 0;  ///< raised when this connection has put messages back
};

enum class InputUse { None, Shared, Exclusive };

struct StoreQueue {
    StoreConnection* connection = nullptr;
    QueueState* state = nullptr;
    Listing listing;
    std::string inputPath;  ///< lock file of an open for input
    OsFile inputPresence = kNoFile;
};

/// The connection to the queue manager's folder. A blank name means the default one: the only one there is or
/// the one whose qmgr.ini says so. Dead programs' units of work are put in order. UnknownQueueManager,
/// Failed. On failure *connection is null.
[[nodiscard]] StoreStatus ConnectStore(const std::string& root, const std::string& name,
                                       std::unique_ptr<StoreConnection>* connection, std::string* why);
/// Backs out what is uncommitted and releases everything. Queues must have been closed.
void DisconnectStore(std::unique_ptr<StoreConnection> connection);

/// UnknownQueue, InUse (opens for input only), Failed. On failure *queue is null.
[[nodiscard]] StoreStatus OpenStoreQueue(StoreConnection* connection, const std::string& name, InputUse use,
                                         std::unique_ptr<StoreQueue>* queue, std::string* why);
void CloseStoreQueue(std::unique_ptr<StoreQueue> queue);

/// The attributes as they are now. False when the file is wrong: the last good values are in force.
[[nodiscard]] bool RefreshQueue(StoreQueue* queue, std::string* why);

/// Puts a message: the body as given, the descriptor with every field in its final form, or null for a
/// message that is described like a copied-in file, by its queue. Under syncpoint it becomes available with
/// the commit, else at once; in either case wholly or not at all.
/// QueueDeleted, Failed; the queue is then as it was.
[[nodiscard]] StoreStatus PutMessage(StoreQueue* queue, const mqi::MQMD* descriptor, const void* body,
                                     std::size_t bytes, bool syncpoint, std::string* why);

/// Fills the 24 bytes of a MsgId or CorrelId: "AMQ ", the queue manager's name, and 8 bytes that never come
/// again.
void MakeIdentifier(const StoreConnection& connection, MQBYTE* identifier);

struct Selection {
    const unsigned char* msgId = nullptr;     ///< 24 bytes, null for any
    const unsigned char* correlId = nullptr;  ///< 24 bytes, null for any
};

/// Where a browse stands: behind the message of this stamp and name.
struct BrowseCursor {
    bool isSet = false;
    std::int64_t stampNs = 0;
    std::string fileName;
};

/// A message that was found and is still everybody's. Released with ReleaseFound.
struct FoundMessage {
    std::string fileName;
    MessageName name;  ///< as it will be called from its first get on
    bool isForeign = false;
    OsFile file = kNoFile;
    std::int64_t bytes = 0;
    std::uint64_t identity = 0;
    mqi::MQMD descriptor{};  ///< whole, BackoutCount included
};

/// The first message in order of arrival that is selected; behind the cursor if there is one.
/// NoMessage, QueueDeleted, Failed. *found is to be released after Ok.
[[nodiscard]] StoreStatus FindMessage(StoreQueue* queue, const Selection& selection,
                                      const BrowseCursor* behind, FoundMessage* found, std::string* why);
/// The very message that the cursor stands on, if it is still there. NoMessage, QueueDeleted, Failed.
[[nodiscard]] StoreStatus FindUnderCursor(StoreQueue* queue, const BrowseCursor& cursor, FoundMessage* found,
                                          std::string* why);
/// Copies up to `bytes` of the body.
[[nodiscard]] StoreStatus ReadFound(const FoundMessage& found, void* buffer, std::size_t bytes,
                                    std::string* why);
/// Makes the message this connection's: part of its unit of work under syncpoint, else in its hands until
/// FinishTake or UndoClaim. Taken, Failed.
[[nodiscard]] StoreStatus ClaimMessage(StoreQueue* queue, FoundMessage* found, bool syncpoint,
                                       std::string* why);
/// Deletes a message claimed without syncpoint.
[[nodiscard]] StoreStatus FinishTake(StoreQueue* queue, FoundMessage* found, std::string* why);
/// Puts a message that was just claimed back as it was; it does not count as a back-out.
void UndoClaim(StoreQueue* queue, FoundMessage* found, bool syncpoint);
void ReleaseFound(FoundMessage* found);

/// Sleeps until something may have changed in the queue, for at most this long and at most 10 ms.
void WaitForArrival(const StoreQueue& queue, std::int64_t milliseconds);

[[nodiscard]] std::size_t UncommittedCount(const StoreConnection& connection);
/// Failed: nothing was committed, the unit of work is as it was.
[[nodiscard]] StoreStatus CommitStore(StoreConnection* connection, std::string* why);
/// Failed: some messages will be back only when the next program looks.
[[nodiscard]] StoreStatus BackOutStore(StoreConnection* connection, std::string* why);

/// Messages in the queue, those in uncommitted units of work (puts and gets) counted.
[[nodiscard]] std::int64_t QueueDepth(const std::string& qmgrPath, const std::string& queueFolder);
/// Opens for input by anybody.
[[nodiscard]] std::int32_t InputOpenCount(const std::string& queuePath);
/// Whether a put would exceed max_depth. Counts the queue only when it is near its limit.
[[nodiscard]] bool IsQueueFull(StoreQueue* queue);

}  // namespace spoolmq
