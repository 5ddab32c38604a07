#include "spoolmq/store/admin.h"

#include <algorithm>

namespace spoolmq {

namespace {

std::vector<std::string> ObjectsIn(const std::string& path) {
    std::vector<FolderEntry> entries;
    std::vector<std::string> names;
    if (ListFolder(path, &entries) != OsStatus::Ok) return names;
    for (const FolderEntry& entry : entries) {
        if (!entry.isFolder || entry.name[0] == '.') continue;
        std::string name = ObjectOfFolder(entry.name);
        if (!name.empty()) names.push_back(std::move(name));
    }
    std::sort(names.begin(), names.end());
    return names;
}

StoreStatus Failure(const std::string& path, std::string* why) {
    *why = path + ": " + LastOsErrorText();
    return StoreStatus::Failed;
}

/// Makes a folder and the folders on the way to it.
OsStatus MakeFolders(const std::string& path) {
    for (std::size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1)) {
        // A folder on the way that is there already may not be ours to make: only the last one's failure
        // counts.
        static_cast<void>(MakeFolder(path.substr(0, end)));
    }
    return MakeFolder(path);
}

bool IsFolder(const std::string& path) {
    FileInfo info;
    return StatPath(path, &info) == OsStatus::Ok && info.isFolder;
}

StoreStatus CreateObject(const std::string& path, const std::string& name, const std::string& iniName,
                         const std::string& ini, std::string* why) {
    if (!IsObjectName(name)) {
        *why = "\"" + name + "\" is not a name: 1 to 48 of the characters A-Z a-z 0-9 . / _ %";
        return StoreStatus::Failed;
    }
    if (IsFolder(path)) {
        *why = name + " is already there, in \"" + path + "\"";
        return StoreStatus::Exists;
    }
    if (MakeFolders(path) != OsStatus::Ok) return Failure(path, why);
    const std::string iniPath = path + '/' + iniName;
    if (WriteNewFile(iniPath, ini.data(), ini.size(), false) != OsStatus::Ok) return Failure(iniPath, why);
    return StoreStatus::Ok;
}

/// Removes a folder with everything in it, the attribute file last so that what is left after a failure still
/// is what it was.
OsStatus RemoveTree(const std::string& path) {
    std::vector<FolderEntry> entries;
    OsStatus status = ListFolder(path, &entries);
    if (status == OsStatus::NotFound) return OsStatus::Ok;
    for (const FolderEntry& entry : entries) {
        if (status != OsStatus::Ok) return status;
        // A link to a folder goes as a file does: what it leads to is not the queue's.
        status = RemoveFile(path + '/' + entry.name);
        if (status != OsStatus::Ok && entry.isFolder) status = RemoveTree(path + '/' + entry.name);
    }
    return status == OsStatus::Ok ? RemoveEmptyFolder(path) : status;
}

std::int64_t MessagesInUnits(const std::string& qmgrPath, const std::string& folder) {
    std::vector<FolderEntry> units;
    std::vector<FolderEntry> messages;
    std::int64_t count = 0;
    if (ListFolder(UnitsPath(qmgrPath), &units) != OsStatus::Ok) return 0;
    for (const FolderEntry& unit : units) {
        if (!unit.isFolder) continue;
        for (const UnitStage stage : {UnitStage::Got, UnitStage::Taking, UnitStage::Put}) {
            const std::string path =
                UnitsPath(qmgrPath) + '/' + unit.name + '/' + StageName(stage) + '/' + folder;
            if (ListFolder(path, &messages) == OsStatus::Ok)
                count += static_cast<std::int64_t>(messages.size());
        }
    }
    return count;
}

StoreStatus CheckUnused(const std::string& qmgrPath, const std::string& name, std::string* why) {
    const std::string folder = FolderOfObject(name);
    static_cast<void>(RecoverDeadUnits(qmgrPath, ""));
    const std::int32_t opens = InputOpenCount(qmgrPath + '/' + folder);
    const std::int64_t inUnits = MessagesInUnits(qmgrPath, folder);
    if (opens == 0 && inUnits == 0) return StoreStatus::Ok;
    *why = "queue " + name + " is in use: " + std::to_string(opens) + " programs have it open for input, " +
           std::to_string(inUnits) + " messages are in units of work; end those programs first";
    return StoreStatus::InUse;
}

}  // namespace

std::vector<std::string> QueueManagerNames(const std::string& root) {
    return ObjectsIn(root);
}

std::vector<std::string> QueueNames(const std::string& root, const std::string& qmgr) {
    return ObjectsIn(root + '/' + FolderOfObject(qmgr));
}

StoreStatus CreateQueueManager(const std::string& root, const std::string& name,
                               const QmgrAttributes& attributes, std::string* why) {
    return CreateObject(root + '/' + FolderOfObject(name), name, "qmgr.ini", FormatAttributes(attributes),
                        why);
}

StoreStatus CreateQueue(const std::string& root, const std::string& qmgr, const std::string& name,
                        const QueueAttributes& attributes, std::string* why) {
    const std::string qmgrPath = root + '/' + FolderOfObject(qmgr);
    if (!IsObjectName(qmgr) || !IsFolder(qmgrPath)) {
        *why = "there is no queue manager " + qmgr + " in \"" + root + "\"";
        return StoreStatus::UnknownQueueManager;
    }
    return CreateObject(qmgrPath + '/' + FolderOfObject(name), name, ".queue.ini",
                        FormatAttributes(attributes), why);
}

StoreStatus DeleteQueue(const std::string& root, const std::string& qmgr, const std::string& name,
                        std::string* why) {
    const std::string qmgrPath = root + '/' + FolderOfObject(qmgr);
    const std::string path = qmgrPath + '/' + FolderOfObject(name);
    if (!IsObjectName(name) || !IsFolder(path)) {
        *why = "there is no queue " + name + " in \"" + qmgrPath + "\"";
        return StoreStatus::UnknownQueue;
    }
    const StoreStatus status = CheckUnused(qmgrPath, name, why);
    if (status != StoreStatus::Ok) return status;
    return RemoveTree(path) == OsStatus::Ok ? StoreStatus::Ok : Failure(path, why);
}

StoreStatus DeleteQueueManager(const std::string& root, const std::string& name, std::string* why) {
    const std::string path = root + '/' + FolderOfObject(name);
    if (!IsObjectName(name) || !IsFolder(path)) {
        *why = "there is no queue manager " + name + " in \"" + root + "\"";
        return StoreStatus::UnknownQueueManager;
    }
    for (const std::string& queue : QueueNames(root, name)) {
        const StoreStatus status = CheckUnused(path, queue, why);
        if (status != StoreStatus::Ok) return status;
    }
    std::vector<FolderEntry> units;
    static_cast<void>(RecoverDeadUnits(path, ""));
    if (ListFolder(UnitsPath(path), &units) == OsStatus::Ok && !units.empty()) {
        *why = "programs are connected to queue manager " + name + "; end them first, see \"" +
               UnitsPath(path) + "\"";
        return StoreStatus::InUse;
    }
    return RemoveTree(path) == OsStatus::Ok ? StoreStatus::Ok : Failure(path, why);
}

}  // namespace spoolmq
