// SPDX-License-Identifier: Apache-2.0

// Implements the store: queue managers, queues and messages as directories and files, shared by any number of
// processes. The verbs of the MQI and `mqam queue` are built on it.
//
//     $SPOOLMQ_DIR/                      the root
//       QM1/                             a queue manager: any directory; its attributes are in qmgr.ini
//         ORDERS/                        a queue: any directory in it; its attributes are in .queue.ini
//           20260131-235959-123456789.msg    a message: the file is its body, nothing else
//           20260131-235959-987654321~2.msg  a message that was backed out twice
//           orders.csv                       a file that someone copied in, which is a message too
//           .desc/                       descriptors of messages, as text
//           .opens/                      who has the queue open for input
//         .units/                        units of work in progress, see unit.h
//
// The error of a failed Status says what failed, why and, if that is known, what to do. A connection is used
// by one thread at a time. Different connections are independent.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/file.h"
#include "platform/lock.h"
#include "spoolmq/attributes/attribute_file.h"
#include "spoolmq/base/mqi_server.h"
#include "spoolmq/base/status.h"
#include "spoolmq/store/counters.h"
#include "spoolmq/store/listing.h"
#include "spoolmq/store/names.h"
#include "spoolmq/store/unit.h"

namespace spoolmq {

/// What a connection knows about a queue, shared by its open handles.
struct QueueState {
    std::string object;     ///< "A/B"
    std::string directory;  ///< "A%2FB"
    std::string path;
    std::uint64_t identity = 0;
    AttributeFile<QueueAttributes> attributes;
    QueueCounters counters;
};

struct StoreConnection {
    std::string object;  ///< name of the queue manager
    std::string path;
    AttributeFile<QmgrAttributes> attributes;
    QmgrCounters counters;
    Unit unit;
    std::map<std::string, std::unique_ptr<QueueState>> queues;  ///< the key is the directory
    std::int64_t lastRecoveryMs = 0;
    std::uint64_t ownReturns = 0;  ///< raised whenever this connection has returned messages to their queues
};

enum class InputUse { kNone, kShared, kExclusive };

struct StoreQueue {
    StoreConnection* connection = nullptr;
    QueueState* state = nullptr;
    Listing listing;
    std::string inputPath;                               ///< lock file of an open for input
    platform::LockHandle inputLock = platform::kNoLock;  ///< kNoLock when the queue is not open for input
};

/// Connects to a queue manager and recovers the units of work of dead processes. A blank name means the
/// default queue manager: the only one there is, or the one whose qmgr.ini says so. `connection` is null on
/// failure. Errors: kUnknownQueueManager, kFailed.
Status ConnectStore(const std::string& root, const std::string& name,
                    std::unique_ptr<StoreConnection>& connection);
/// Backs out the unit of work and releases everything. All queues must have been closed.
void DisconnectStore(std::unique_ptr<StoreConnection> connection);

/// Opens a queue, which must be closed before the connection ends. `queue` is null on failure.
/// Errors: kUnknownQueue, kInUse (opens for input only), kFailed.
Status OpenStoreQueue(StoreConnection& connection, const std::string& name, InputUse use,
                      std::unique_ptr<StoreQueue>& queue);
void CloseStoreQueue(std::unique_ptr<StoreQueue> queue);

/// Reads the queue's attributes again if they have changed. Returns kFailed if the file cannot be read or is
/// not valid; the last valid values then apply.
Status RefreshQueue(StoreQueue& queue);

/// Says whether an operation is part of the connection's unit of work, or takes effect immediately.
enum class Syncpoint { kNo, kYes };

struct NewMessage {
    /// Every field of the descriptor has its final value. The pointer is null for a message that the queue's
    /// attributes describe, like a copied-in file.
    const mqi::MQMD* descriptor = nullptr;
    const void* body = nullptr;
    std::size_t bytes = 0;
};

/// Puts a message, completely or not at all. Under syncpoint it becomes available with the commit, otherwise
/// immediately. Errors, which leave the queue as it was: kQueueDeleted, kFailed.
Status PutMessage(StoreQueue& queue, const NewMessage& message, Syncpoint syncpoint);

/// Fills the 24 bytes of a MsgId or CorrelId: "AMQ ", the queue manager's name, and 8 bytes that are never
/// repeated.
void MakeIdentifier(const StoreConnection& connection, MQBYTE* identifier);

struct Selection {
    const unsigned char* msgId = nullptr;     ///< 24 bytes; null for any
    const unsigned char* correlId = nullptr;  ///< 24 bytes; null for any
};

/// The position of a browse: the message with this stamp and file name.
struct BrowseCursor {
    bool isSet = false;
    std::int64_t stampNs = 0;
    std::string fileName;
};

/// A message that was found and that any reader may still claim. ReleaseFound closes its file.
struct FoundMessage {
    std::string fileName;
    MessageName name;  ///< its name once the store has handled it
    bool isCopiedIn = false;
    platform::FileHandle file = platform::kNoFile;
    std::int64_t bytes = 0;
    std::uint64_t identity = 0;
    mqi::MQMD descriptor{};  ///< complete, BackoutCount included
};

/// Finds the first selected message in order of arrival, after the cursor if that is set. After kOk, `found`
/// must be released. Errors: kNoMessage, kQueueDeleted, kFailed.
Status FindMessage(StoreQueue& queue, const Selection& selection, const BrowseCursor& after,
                   FoundMessage& found);
/// Finds the message at the cursor if it still exists. After kOk, `found` must be released.
/// Errors: kNoMessage, kFailed.
Status FindUnderCursor(StoreQueue& queue, const BrowseCursor& cursor, FoundMessage& found);
/// Copies up to `bytes` bytes of the message's body into the buffer. Error: kFailed.
Status ReadFound(const FoundMessage& found, void* buffer, std::size_t bytes);
void ReleaseFound(FoundMessage& found);

/// Takes the message away from all other readers. Under syncpoint it becomes part of the unit of work;
/// otherwise FinishGet or UndoClaim must follow. Errors: kMessageGone, kFailed.
Status ClaimMessage(StoreQueue& queue, FoundMessage& found, Syncpoint syncpoint);
/// Deletes a message that was claimed without syncpoint. Error: kFailed.
Status FinishGet(StoreQueue& queue, FoundMessage& found);
/// Returns the message that was claimed last to its queue, with an unchanged back-out count. If that fails,
/// the message stays in the unit, and recovery returns it; under syncpoint the unit of work becomes
/// rollback-only.
void UndoClaim(StoreQueue& queue, FoundMessage& found, Syncpoint syncpoint);

/// Sleeps until something may have changed in the queue, but no longer than `milliseconds` and no longer than
/// 10 ms.
void WaitForArrival(const StoreQueue& queue, std::int64_t milliseconds);

[[nodiscard]] std::size_t UncommittedCount(const StoreConnection& connection);
/// Commits the unit of work. Returns kFailed if the commit could not be written or the unit is rollback-only;
/// nothing is then committed, and the unit is as it was.
Status CommitStore(StoreConnection& connection);
/// Backs out the unit of work. Returns kFailed if some messages will return to their queues only with the
/// next recovery.
Status BackOutStore(StoreConnection& connection);

/// Returns the number of messages of the queue, including those got or put in uncommitted units of work.
[[nodiscard]] std::int64_t QueueDepth(const std::string& qmgrPath, const std::string& queueDirectory);
/// Returns how often the queue is open for input, in all processes together.
[[nodiscard]] std::int32_t InputOpenCount(const std::string& queuePath);
/// Returns whether the queue has reached max_depth. The messages are not counted while max_depth has its
/// default value.
[[nodiscard]] bool IsQueueFull(const StoreQueue& queue);

}  // namespace spoolmq
