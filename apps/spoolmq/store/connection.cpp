// SPDX-License-Identifier: Apache-2.0

// Connects to a queue manager, and commits and backs out its unit of work.
#include "platform/clock.h"
#include "platform/file.h"
#include "platform/shared_file.h"
#include "spoolmq/store/admin.h"
#include "spoolmq/store/store.h"

namespace spoolmq {

namespace {

// Returns the name of the default queue manager, or an empty string when there is none.
std::string DefaultQueueManager(const std::string& root) {
    const std::vector<std::string> names = QueueManagerNames(root);
    if (names.size() == 1) {
        return names.front();
    }
    for (const std::string& name : names) {
        std::string text;
        QmgrAttributes attributes;
        if (platform::ReadWholeFile(root + '/' + DirectoryOfObject(name) + "/qmgr.ini", text) ==
                FileStatus::kOk &&
            ParseAttributes(text, attributes).IsOk() && attributes.isDefault != 0) {
            return name;
        }
    }
    return {};
}

std::string FormatNames(const std::vector<std::string>& names) {
    if (names.empty()) {
        return "there is none";
    }
    std::string text = "there are:";
    for (const std::string& name : names) {
        text += ' ' + name;
    }
    return text;
}

Status CheckQueueManager(const std::string& root, const std::string& name, const std::string& path) {
    platform::FileInfo info;
    if (IsObjectName(name) && platform::StatPath(path, info) == FileStatus::kOk && info.isDirectory) {
        return {};
    }
    return {StatusCode::kUnknownQueueManager, "there is no queue manager " + name + " in \"" + root + "\"; " +
                                                  FormatNames(QueueManagerNames(root))};
}

void AnnouncePublished(const StoreConnection& connection, const std::vector<UnitMember>& published) {
    for (const UnitMember& member : published) {
        const auto state = connection.queues.find(member.queueDirectory);
        MessageName name;
        if (state != connection.queues.end() && ParseMessageName(member.fileName, name)) {
            CountArrival(state->second->counters, name.stampNs);
        }
    }
}

}  // namespace

Status ConnectStore(const std::string& root, const std::string& name,
                    std::unique_ptr<StoreConnection>& connection) {
    connection.reset();
    const std::string object = name.empty() ? DefaultQueueManager(root) : name;
    if (object.empty()) {
        return {StatusCode::kUnknownQueueManager, "no queue manager was named and none in \"" + root +
                                                      "\" is the default; " +
                                                      FormatNames(QueueManagerNames(root))};
    }
    auto fresh = std::make_unique<StoreConnection>();
    fresh->object = object;
    fresh->path = root + '/' + DirectoryOfObject(object);
    fresh->attributes.path = fresh->path + "/qmgr.ini";
    Status status = CheckQueueManager(root, object, fresh->path);
    if (status.IsOk()) {
        status = RefreshAttributes(fresh->attributes);
    }
    if (!status.IsOk()) {
        return status;
    }
    if (MapQmgrCounters(fresh->path + "/.state", fresh->counters) != FileStatus::kOk) {
        return FileError(fresh->path + "/.state");
    }
    if (OpenUnit(fresh->path, fresh->unit) != FileStatus::kOk) {
        status = FileError(UnitsPath(fresh->path));
        platform::UnmapSharedFile(fresh->counters.file);
        return status;
    }
    static_cast<void>(RecoverDeadUnits(fresh->path, fresh->unit.id));
    fresh->lastRecoveryMs = platform::MonotonicMs();
    connection = std::move(fresh);
    return {};
}

void DisconnectStore(std::unique_ptr<StoreConnection> connection) {
    // If the back-out fails, the next program recovers the rest.
    static_cast<void>(BackOutStore(*connection));
    CloseUnit(connection->unit);
    for (const auto& [directory, state] : connection->queues) {
        platform::UnmapSharedFile(state->counters.file);
    }
    platform::UnmapSharedFile(connection->counters.file);
}

std::size_t UncommittedCount(const StoreConnection& connection) {
    return connection.unit.members.size();
}

Status CommitStore(StoreConnection& connection) {
    if (connection.unit.isRollbackOnly && !connection.unit.members.empty()) {
        return {StatusCode::kFailed, "the unit of work can only be backed out"};
    }
    std::vector<UnitMember> published;
    connection.unit.sync = connection.attributes.values.sync != 0;
    if (CommitUnit(connection.unit, published) != FileStatus::kOk) {
        return FileError("commit in " + UnitsPath(connection.path) + '/' + connection.unit.id);
    }
    AnnouncePublished(connection, published);
    return {};
}

Status BackOutStore(StoreConnection& connection) {
    std::vector<UnitMember> returned;
    Status status;
    if (BackOutUnit(connection.unit, returned) != FileStatus::kOk) {
        status = FileError("back-out in " + UnitsPath(connection.path));
    }
    ++connection.ownReturns;
    for (const UnitMember& member : returned) {
        const auto state = connection.queues.find(member.queueDirectory);
        if (state != connection.queues.end()) {
            CountReturn(state->second->counters);
        }
    }
    return status;
}

}  // namespace spoolmq
