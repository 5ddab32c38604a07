#include "spoolmq/store/admin.h"
#include "spoolmq/store/store.h"

namespace spoolmq {

namespace {

/// The default queue manager, empty when there is none.
std::string DefaultQueueManager(const std::string& root) {
    const std::vector<std::string> names = QueueManagerNames(root);
    if (names.size() == 1) return names.front();
    for (const std::string& name : names) {
        std::string content;
        QmgrAttributes attributes;
        std::string why;
        if (ReadWholeFile(root + '/' + FolderOfObject(name) + "/qmgr.ini", &content) == OsStatus::Ok &&
            ParseAttributes(content, &attributes, &why) && attributes.isDefault != 0)
            return name;
    }
    return {};
}

std::string NameListing(const std::vector<std::string>& names) {
    if (names.empty()) return "there is none";
    std::string text = "there are:";
    for (const std::string& name : names)
        text += ' ' + name;
    return text;
}

void AnnouncePublished(StoreConnection* connection, const std::vector<UnitMember>& published) {
    for (const UnitMember& member : published) {
        const auto state = connection->queues.find(member.queueFolder);
        MessageName name;
        if (state != connection->queues.end() && ParseMessageName(member.fileName, &name))
            NoteArrival(state->second->counters, name.stampNs);
    }
}

}  // namespace

StoreStatus ConnectStore(const std::string& root, const std::string& name,
                         std::unique_ptr<StoreConnection>* connection, std::string* why) {
    connection->reset();
    const std::string object = name.empty() ? DefaultQueueManager(root) : name;
    if (object.empty()) {
        *why = "no queue manager was named and none in \"" + root + "\" is the default; " +
               NameListing(QueueManagerNames(root));
        return StoreStatus::UnknownQueueManager;
    }
    auto fresh = std::make_unique<StoreConnection>();
    fresh->object = object;
    fresh->path = root + '/' + FolderOfObject(object);
    FileInfo info;
    if (!IsObjectName(object) || StatPath(fresh->path, &info) != OsStatus::Ok || !info.isFolder) {
        *why = "there is no queue manager " + object + " in \"" + root + "\"; " +
               NameListing(QueueManagerNames(root));
        return StoreStatus::UnknownQueueManager;
    }
    fresh->attributes.path = fresh->path + "/qmgr.ini";
    if (!RefreshAttributes(&fresh->attributes, why)) return StoreStatus::Failed;
    if (MapQmgrCounters(fresh->path + "/.state", &fresh->counters) != OsStatus::Ok) {
        *why = fresh->path + "/.state: " + LastOsErrorText();
        return StoreStatus::Failed;
    }
    if (OpenUnit(fresh->path, &fresh->unit) != OsStatus::Ok) {
        *why = UnitsPath(fresh->path) + ": " + LastOsErrorText();
        UnmapSharedFile(&fresh->counters.file);
        return StoreStatus::Failed;
    }
    static_cast<void>(RecoverDeadUnits(fresh->path, fresh->unit.id));
    fresh->lastRecoveryMs = MonotonicMs();
    *connection = std::move(fresh);
    return StoreStatus::Ok;
}

void DisconnectStore(std::unique_ptr<StoreConnection> connection) {
    std::string why;
    static_cast<void>(
        BackOutStore(connection.get(), &why));  // what fails here is recovered by the next program
    CloseUnit(&connection->unit);
    for (const auto& [folder, state] : connection->queues)
        UnmapSharedFile(&state->counters.file);
    UnmapSharedFile(&connection->counters.file);
}

std::size_t UncommittedCount(const StoreConnection& connection) {
    return connection.unit.members.size();
}

StoreStatus CommitStore(StoreConnection* connection, std::string* why) {
    std::vector<UnitMember> published;
    connection->unit.sync = connection->attributes.values.sync != 0;
    if (CommitUnit(&connection->unit, &published) != OsStatus::Ok) {
        *why =
            "commit in " + UnitsPath(connection->path) + '/' + connection->unit.id + ": " + LastOsErrorText();
        return StoreStatus::Failed;
    }
    AnnouncePublished(connection, published);
    return StoreStatus::Ok;
}

StoreStatus BackOutStore(StoreConnection* connection, std::string* why) {
    std::vector<UnitMember> returned;
    const OsStatus status = BackOutUnit(&connection->unit, &returned);
    ++connection->returnsHere;
    if (status != OsStatus::Ok)
        *why = "back-out in " + UnitsPath(connection->path) + ": " + LastOsErrorText();
    for (const UnitMember& member : returned) {
        const auto state = connection->queues.find(member.queueFolder);
        if (state != connection->queues.end()) NoteReturn(state->second->counters);
    }
    return status == OsStatus::Ok ? StoreStatus::Ok : StoreStatus::Failed;
}

}  // namespace spoolmq
