// Opening and closing queues, and who has them open for input.
#include <array>
#include <cstdio>

#include "spoolmq/store/admin.h"
#include "spoolmq/store/store.h"

namespace spoolmq {

namespace {

constexpr std::string_view kSharedEnding = ".shared";
constexpr std::string_view kExclusiveEnding = ".exclusive";

bool EndsWith(std::string_view text, std::string_view end) {
    return text.size() > end.size() && text.substr(text.size() - end.size()) == end;
}

std::string OpensPath(const std::string& queuePath) {
    return queuePath + "/.opens";
}

struct InputOpens {
    std::int32_t shared = 0;
    std::int32_t exclusive = 0;
};

/// Counts the opens that belong to living programs and clears the others away.
InputOpens CountInputOpens(const std::string& queuePath) {
    InputOpens opens;
    std::vector<FolderEntry> entries;
    if (ListFolder(OpensPath(queuePath), &entries) != OsStatus::Ok) return opens;
    for (const FolderEntry& entry : entries) {
        const bool isShared = EndsWith(entry.name, kSharedEnding);
        if (!isShared && !EndsWith(entry.name, kExclusiveEnding)) continue;
        const std::string path = OpensPath(queuePath) + '/' + entry.name;
        OsFile presence = kNoFile;
        if (AcquirePresence(path, &presence) == OsStatus::Ok)
            ReleasePresence(path, presence);
        else if (isShared)
            ++opens.shared;
        else
            ++opens.exclusive;
    }
    return opens;
}

/// Decides whether the open for input is possible and registers it. The guard keeps two programs from
/// deciding at the same time.
StoreStatus RegisterInput(StoreQueue* queue, InputUse use, std::string* why) {
    const std::string folder = OpensPath(queue->state->path);
    if (MakeFolder(folder) != OsStatus::Ok) {
        *why = folder + ": " + LastOsErrorText();
        return StoreStatus::Failed;
    }
    const OsFile guard = EnterGuard(folder + "/.guard");
    const InputOpens opens = CountInputOpens(queue->state->path);
    const bool isExclusive = use == InputUse::Exclusive;
    StoreStatus result = StoreStatus::Ok;
    if (opens.exclusive > 0 || (isExclusive && opens.shared > 0)) {
        *why = "queue " + queue->state->object + " is open for input: " + std::to_string(opens.exclusive) +
               " exclusive, " + std::to_string(opens.shared) + " shared; see \"" + folder + "\"";
        result = StoreStatus::InUse;
    } else {
        std::array<char, 64> name{};
        std::snprintf(name.data(), name.size(), "/%lld-%08llx", static_cast<long long>(ProcessId()),
                      static_cast<unsigned long long>(RandomNumber() & 0xFFFFFFFF));
        queue->inputPath = folder + name.data() + std::string(isExclusive ? kExclusiveEnding : kSharedEnding);
        if (AcquirePresence(queue->inputPath, &queue->inputPresence) != OsStatus::Ok) {
            *why = queue->inputPath + ": " + LastOsErrorText();
            result = StoreStatus::Failed;
        }
    }
    LeaveGuard(guard);
    return result;
}

/// What the connection knows of the queue, made or renewed. Null when there is no such queue or *why says
/// otherwise.
QueueState* StateOfQueue(StoreConnection* connection, const std::string& name, std::string* why) {
    const std::string folder = FolderOfObject(name);
    const std::string path = connection->path + '/' + folder;
    FileInfo info;
    if (!IsObjectName(name) || StatPath(path, &info) != OsStatus::Ok || !info.isFolder) return nullptr;
    std::unique_ptr<QueueState>& state = connection->queues[folder];
    if (state == nullptr) {
        state = std::make_unique<QueueState>();
        state->object = name;
        state->folder = folder;
        state->path = path;
        state->attributes.path = path + "/.queue.ini";
    }
    // Deleted and created anew since: the old counters belong to nobody any more.
    if (state->counters.file.memory == nullptr || state->identity != info.identity) {
        QueueCounters counters;
        if (MapQueueCounters(path + "/.state", &counters) != OsStatus::Ok) {
            *why = path + "/.state: " + LastOsErrorText();
            // One that has counters may be open: it stays with them.
            if (state->counters.file.memory == nullptr) connection->queues.erase(folder);
            return nullptr;
        }
        UnmapSharedFile(&state->counters.file);
        state->counters = counters;
        state->identity = info.identity;
    }
    return state.get();
}

}  // namespace

StoreStatus OpenStoreQueue(StoreConnection* connection, const std::string& name, InputUse use,
                           std::unique_ptr<StoreQueue>* queue, std::string* why) {
    queue->reset();
    why->clear();
    QueueState* state = StateOfQueue(connection, name, why);
    if (state == nullptr && !why->empty()) return StoreStatus::Failed;
    if (state == nullptr) {
        *why = "there is no queue " + name + " in \"" + connection->path + "\"";
        return StoreStatus::UnknownQueue;
    }
    auto fresh = std::make_unique<StoreQueue>();
    fresh->connection = connection;
    fresh->state = state;
    if (!RefreshAttributes(&state->attributes, why)) return StoreStatus::Failed;
    if (use != InputUse::None) {
        const StoreStatus status = RegisterInput(fresh.get(), use, why);
        if (status != StoreStatus::Ok) return status;
        if (RecoverDeadUnits(connection->path, connection->unit.id)) ++connection->returnsHere;
        connection->lastRecoveryMs = MonotonicMs();
    }
    *queue = std::move(fresh);
    return StoreStatus::Ok;
}

void CloseStoreQueue(std::unique_ptr<StoreQueue> queue) {
    ReleasePresence(queue->inputPath, queue->inputPresence);
}

bool RefreshQueue(StoreQueue* queue, std::string* why) {
    return RefreshAttributes(&queue->state->attributes, why);
}

std::int32_t InputOpenCount(const std::string& queuePath) {
    const OsFile guard = EnterGuard(OpensPath(queuePath) + "/.guard");
    const InputOpens opens = CountInputOpens(queuePath);
    LeaveGuard(guard);
    return opens.shared + opens.exclusive;
}

std::int64_t QueueDepth(const std::string& qmgrPath, const std::string& queueFolder) {
    std::vector<FolderEntry> entries;
    std::int64_t depth = 0;
    const auto countFiles = [&](const std::string& path) {
        if (ListFolder(path, &entries) != OsStatus::Ok) return;
        for (const FolderEntry& entry : entries)
            depth += entry.isFile && !IsIgnoredFile(entry.name) ? 1 : 0;
    };
    std::vector<FolderEntry> units;
    if (ListFolder(UnitsPath(qmgrPath), &units) == OsStatus::Ok) {
        for (const FolderEntry& unit : units) {
            if (!unit.isFolder) continue;
            for (const UnitStage stage : {UnitStage::Got, UnitStage::Taking, UnitStage::Put})
                countFiles(UnitsPath(qmgrPath) + '/' + unit.name + '/' + StageName(stage) + '/' +
                           queueFolder);
        }
    }
    countFiles(qmgrPath + '/' + queueFolder);
    return depth;
}

}  // namespace spoolmq
