// SPDX-License-Identifier: Apache-2.0

// Opens and closes queues, and keeps track of who has them open for input.
#include <array>
#include <cstdio>

#include "platform/clock.h"
#include "platform/directory.h"
#include "platform/file.h"
#include "platform/lock.h"
#include "platform/process.h"
#include "platform/shared_file.h"
#include "spoolmq/store/process_lock.h"
#include "spoolmq/store/store.h"

namespace spoolmq {

namespace {

constexpr std::string_view kSharedEnding = ".shared";
constexpr std::string_view kExclusiveEnding = ".exclusive";
constexpr std::int32_t kNoDepthLimit = 999999999;

bool IsNameWithEnding(std::string_view text, std::string_view end) {
    return text.size() > end.size() && text.substr(text.size() - end.size()) == end;
}

std::string OpensPath(const std::string& queuePath) {
    return queuePath + "/.opens";
}

// Returns the path of the lock that is held while opens for input are counted or registered.
std::string OpensLockPath(const std::string& queuePath) {
    return OpensPath(queuePath) + "/.guard";
}

struct InputOpens {
    std::int32_t shared = 0;
    std::int32_t exclusive = 0;
};

// Counts the opens for input of live programs and removes those of dead programs.
InputOpens CountInputOpens(const std::string& queuePath) {
    InputOpens opens;
    std::vector<platform::DirectoryEntry> entries;
    if (platform::ListDirectory(OpensPath(queuePath), entries) != FileStatus::kOk) {
        return opens;
    }
    for (const platform::DirectoryEntry& entry : entries) {
        const bool isShared = IsNameWithEnding(entry.name, kSharedEnding);
        if (!isShared && !IsNameWithEnding(entry.name, kExclusiveEnding)) {
            continue;
        }
        const std::string path = OpensPath(queuePath) + '/' + entry.name;
        platform::LockHandle processLock = platform::kNoLock;
        if (AcquireProcessLock(path, processLock) == FileStatus::kOk) {
            platform::ReleaseLock(path, processLock);
        } else if (isShared) {
            ++opens.shared;
        } else {
            ++opens.exclusive;
        }
    }
    return opens;
}

Status CheckInput(const StoreQueue& queue, InputUse use) {
    const InputOpens opens = CountInputOpens(queue.state->path);
    if (opens.exclusive == 0 && (use != InputUse::kExclusive || opens.shared == 0)) {
        return {};
    }
    return {StatusCode::kInUse, "queue " + queue.state->object +
                                    " is open for input: " + std::to_string(opens.exclusive) +
                                    " exclusive, " + std::to_string(opens.shared) + " shared; see \"" +
                                    OpensPath(queue.state->path) + "\""};
}

Status LockInput(StoreQueue& queue, InputUse use) {
    std::array<char, 64> name{};
    std::snprintf(name.data(), name.size(), "/%lld-%08llx",
                  static_cast<long long>(platform::CurrentProcessId()),
                  static_cast<unsigned long long>(platform::RandomNumber() & 0xFFFFFFFF));
    queue.inputPath = OpensPath(queue.state->path) + name.data();
    queue.inputPath += use == InputUse::kExclusive ? kExclusiveEnding : kSharedEnding;
    if (AcquireProcessLock(queue.inputPath, queue.inputLock) != FileStatus::kOk) {
        return FileError(queue.inputPath);
    }
    return {};
}

// Registers an open for input if the other opens allow it.
Status RegisterInput(StoreQueue& queue, InputUse use) {
    if (platform::MakeDirectory(OpensPath(queue.state->path)) != FileStatus::kOk) {
        return FileError(OpensPath(queue.state->path));
    }
    const platform::LockHandle lock = platform::WaitForLock(OpensLockPath(queue.state->path));
    Status status = CheckInput(queue, use);
    if (status.IsOk()) {
        status = LockInput(queue, use);
    }
    platform::ReleaseLockKeepingFile(lock);
    return status;
}

// Maps the counters in the queue's current directory, which may not be the directory of an earlier open.
Status RefreshCounters(QueueState& state, std::uint64_t identity) {
    if (state.counters.file.memory != nullptr && state.identity == identity) {
        return {};
    }
    QueueCounters counters;
    if (MapQueueCounters(state.path + "/.state", counters) != FileStatus::kOk) {
        return FileError(state.path + "/.state");
    }
    // The queue is new to this connection, or was deleted and created again: nothing needs the old counters.
    platform::UnmapSharedFile(state.counters.file);
    state.counters = counters;
    state.identity = identity;
    return {};
}

// Sets `state` to what the connection knows about the queue. The state is created at the first call
// and then updated.
Status FindQueueState(StoreConnection& connection, const std::string& name, QueueState*& state) {
    const std::string directory = DirectoryOfObject(name);
    const std::string path = connection.path + '/' + directory;
    platform::FileInfo info;
    if (!IsObjectName(name) || platform::StatPath(path, info) != FileStatus::kOk || !info.isDirectory) {
        return {StatusCode::kUnknownQueue, "there is no queue " + name + " in \"" + connection.path + "\""};
    }
    std::unique_ptr<QueueState>& known = connection.queues[directory];
    if (known == nullptr) {
        known = std::make_unique<QueueState>();
        known->object = name;
        known->directory = directory;
        known->path = path;
        known->attributes.path = path + "/.queue.ini";
    }
    Status status = RefreshCounters(*known, info.identity);
    if (status.IsOk()) {
        state = known.get();
    } else if (known->counters.file.memory == nullptr) {
        // A state that has counters is kept, because a handle may be using it.
        connection.queues.erase(directory);
    }
    return status;
}

}  // namespace

Status OpenStoreQueue(StoreConnection& connection, const std::string& name, InputUse use,
                      std::unique_ptr<StoreQueue>& queue) {
    queue.reset();
    auto fresh = std::make_unique<StoreQueue>();
    fresh->connection = &connection;
    Status status = FindQueueState(connection, name, fresh->state);
    if (status.IsOk()) {
        status = RefreshAttributes(fresh->state->attributes);
    }
    if (!status.IsOk()) {
        return status;
    }
    if (use != InputUse::kNone) {
        status = RegisterInput(*fresh, use);
        if (!status.IsOk()) {
            return status;
        }
        if (RecoverDeadUnits(connection.path, connection.unit.id)) {
            ++connection.ownReturns;
        }
        connection.lastRecoveryMs = platform::MonotonicMs();
    }
    queue = std::move(fresh);
    return {};
}

void CloseStoreQueue(std::unique_ptr<StoreQueue> queue) {
    platform::ReleaseLock(queue->inputPath, queue->inputLock);
}

Status RefreshQueue(StoreQueue& queue) {
    return RefreshAttributes(queue.state->attributes);
}

std::int32_t InputOpenCount(const std::string& queuePath) {
    const platform::LockHandle lock = platform::WaitForLock(OpensLockPath(queuePath));
    const InputOpens opens = CountInputOpens(queuePath);
    platform::ReleaseLockKeepingFile(lock);
    return opens.shared + opens.exclusive;
}

std::int64_t QueueDepth(const std::string& qmgrPath, const std::string& queueDirectory) {
    std::vector<platform::DirectoryEntry> entries;
    std::int64_t depth = 0;
    const auto countFiles = [&](const std::string& path) {
        if (platform::ListDirectory(path, entries) != FileStatus::kOk) {
            return;
        }
        for (const platform::DirectoryEntry& entry : entries) {
            depth += entry.isFile && !IsIgnoredFile(entry.name) ? 1 : 0;
        }
    };
    std::vector<platform::DirectoryEntry> units;
    if (platform::ListDirectory(UnitsPath(qmgrPath), units) == FileStatus::kOk) {
        for (const platform::DirectoryEntry& unit : units) {
            if (!unit.isDirectory) {
                continue;
            }
            const std::string unitPath = UnitsPath(qmgrPath) + '/' + unit.name;
            for (const UnitStage stage : {UnitStage::kGot, UnitStage::kTaking, UnitStage::kPut}) {
                countFiles(unitPath + '/' + StageName(stage) + '/' + queueDirectory);
            }
        }
    }
    countFiles(qmgrPath + '/' + queueDirectory);
    return depth;
}

bool IsQueueFull(const StoreQueue& queue) {
    const std::int32_t limit = queue.state->attributes.values.maxDepth;
    if (limit == kNoDepthLimit) {
        return false;
    }
    return QueueDepth(queue.connection->path, queue.state->directory) >= limit;
}

}  // namespace spoolmq
