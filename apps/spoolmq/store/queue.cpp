// Opening and closing queues, and who has them open for input.
#include <array>
#include <cstdio>

#include "spoolmq/store/store.h"

namespace spoolmq {

namespace {

constexpr std::string_view kSharedEnding = ".shared";
constexpr std::string_view kExclusiveEnding = ".exclusive";
constexpr std::int32_t kNoDepthLimit = 999999999;

bool EndsWith(std::string_view text, std::string_view end) {
    return text.size() > end.size() && text.substr(text.size() - end.size()) == end;
}

std::string OpensPath(const std::string& queuePath) {
    return queuePath + "/.opens";
}

// Holding this lock keeps other programs from registering an open for input.
std::string OpensLockPath(const std::string& queuePath) {
    return OpensPath(queuePath) + "/.guard";
}

struct InputOpens {
    std::int32_t shared = 0;
    std::int32_t exclusive = 0;
};

// Counts the opens of living programs and removes those of dead ones.
InputOpens CountInputOpens(const std::string& queuePath) {
    InputOpens opens;
    std::vector<FolderEntry> entries;
    if (ListFolder(OpensPath(queuePath), &entries) != OsStatus::Ok) {
        return opens;
    }
    for (const FolderEntry& entry : entries) {
        const bool isShared = EndsWith(entry.name, kSharedEnding);
        if (!isShared && !EndsWith(entry.name, kExclusiveEnding)) {
            continue;
        }
        const std::string path = OpensPath(queuePath) + '/' + entry.name;
        OsFile processLock = kNoFile;
        if (AcquirePresence(path, &processLock) == OsStatus::Ok) {
            ReleasePresence(path, processLock);
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
    std::snprintf(name.data(), name.size(), "/%lld-%08llx", static_cast<long long>(ProcessId()),
                  static_cast<unsigned long long>(RandomNumber() & 0xFFFFFFFF));
    queue.inputPath = OpensPath(queue.state->path) + name.data();
    queue.inputPath += use == InputUse::kExclusive ? kExclusiveEnding : kSharedEnding;
    if (AcquirePresence(queue.inputPath, &queue.inputLock) != OsStatus::Ok) {
        return FileError(queue.inputPath);
    }
    return {};
}

// Registers an open for input if the other opens allow it.
Status RegisterInput(StoreQueue& queue, InputUse use) {
    if (MakeFolder(OpensPath(queue.state->path)) != OsStatus::Ok) {
        return FileError(OpensPath(queue.state->path));
    }
    const OsFile lock = EnterGuard(OpensLockPath(queue.state->path));
    Status status = CheckInput(queue, use);
    if (status.IsOk()) {
        status = LockInput(queue, use);
    }
    LeaveGuard(lock);
    return status;
}

// Maps the counters of the queue's present directory, which may not be the one of an earlier open.
Status RefreshCounters(QueueState& state, std::uint64_t identity) {
    if (state.counters.file.memory != nullptr && state.identity == identity) {
        return {};
    }
    QueueCounters counters;
    if (MapQueueCounters(state.path + "/.state", counters) != OsStatus::Ok) {
        return FileError(state.path + "/.state");
    }
    // The queue is new to this connection, or was deleted and created again: nothing needs the old counters.
    UnmapSharedFile(&state.counters.file);
    state.counters = counters;
    state.identity = identity;
    return {};
}

// Sets `state` to what the connection knows about the queue, created or updated.
Status FindQueueState(StoreConnection& connection, const std::string& name, QueueState*& state) {
    const std::string directory = DirectoryOfObject(name);
    const std::string path = connection.path + '/' + directory;
    FileInfo info;
    if (!IsObjectName(name) || StatPath(path, &info) != OsStatus::Ok || !info.isFolder) {
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
    const Status status = RefreshCounters(*known, info.identity);
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
        connection.lastRecoveryMs = MonotonicMs();
    }
    queue = std::move(fresh);
    return {};
}

void CloseStoreQueue(std::unique_ptr<StoreQueue> queue) {
    ReleasePresence(queue->inputPath, queue->inputLock);
}

Status RefreshQueue(StoreQueue& queue) {
    return RefreshAttributes(queue.state->attributes);
}

std::int32_t InputOpenCount(const std::string& queuePath) {
    const OsFile lock = EnterGuard(OpensLockPath(queuePath));
    const InputOpens opens = CountInputOpens(queuePath);
    LeaveGuard(lock);
    return opens.shared + opens.exclusive;
}

std::int64_t QueueDepth(const std::string& qmgrPath, const std::string& queueDirectory) {
    std::vector<FolderEntry> entries;
    std::int64_t depth = 0;
    const auto countFiles = [&](const std::string& path) {
        if (ListFolder(path, &entries) != OsStatus::Ok) {
            return;
        }
        for (const FolderEntry& entry : entries) {
            depth += entry.isFile && !IsIgnoredFile(entry.name) ? 1 : 0;
        }
    };
    std::vector<FolderEntry> units;
    if (ListFolder(UnitsPath(qmgrPath), &units) == OsStatus::Ok) {
        for (const FolderEntry& unit : units) {
            if (!unit.isFolder) {
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
