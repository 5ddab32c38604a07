#include "spoolmq/store/admin.h"

#include <algorithm>

namespace spoolmq {

namespace {

std::vector<std::string> ObjectsIn(const std::string& path) {
    std::vector<FolderEntry> entries;
    std::vector<std::string> names;
    if (ListFolder(path, &entries) != OsStatus::Ok) {
        return names;
    }
    for (const FolderEntry& entry : entries) {
        if (!entry.isFolder || entry.name[0] == '.') {
            continue;
        }
        std::string name = ObjectOfDirectory(entry.name);
        if (!name.empty()) {
            names.push_back(std::move(name));
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

bool IsDirectory(const std::string& path) {
    FileInfo info;
    return StatPath(path, &info) == OsStatus::Ok && info.isFolder;
}

// Creates a directory and the directories on the way to it.
OsStatus CreateDirectories(const std::string& path) {
    for (std::size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1)) {
        // Creating one that already exists may be forbidden, so only a failure with the last one counts.
        static_cast<void>(MakeFolder(path.substr(0, end)));
    }
    return MakeFolder(path);
}

Status CreateObject(const std::string& path, const std::string& name, const std::string& iniName,
                    const std::string& ini) {
    if (!IsObjectName(name)) {
        return {StatusCode::kFailed,
                "\"" + name + "\" is not a name: a name has 1 to 48 of the characters A-Z a-z 0-9 . / _ %"};
    }
    if (IsDirectory(path)) {
        return {StatusCode::kAlreadyExists, name + " already exists in \"" + path + "\""};
    }
    if (CreateDirectories(path) != OsStatus::Ok) {
        return FileError(path);
    }
    const std::string iniPath = path + '/' + iniName;
    if (WriteNewFile(iniPath, ini.data(), ini.size(), false) != OsStatus::Ok) {
        return FileError(iniPath);
    }
    return {};
}

OsStatus RemoveTree(const std::string& path) {
    std::vector<FolderEntry> entries;
    OsStatus status = ListFolder(path, &entries);
    if (status == OsStatus::NotFound) {
        return OsStatus::Ok;
    }
    for (const FolderEntry& entry : entries) {
        if (status != OsStatus::Ok) {
            return status;
        }
        const std::string entryPath = path + '/' + entry.name;
        // A link to a directory is removed like a file: what it leads to does not belong to the queue.
        status = RemoveFile(entryPath);
        if (status != OsStatus::Ok && entry.isFolder) {
            status = RemoveTree(entryPath);
        }
    }
    return status == OsStatus::Ok ? RemoveEmptyFolder(path) : status;
}

std::int64_t MessagesInUnits(const std::string& qmgrPath, const std::string& queueDirectory) {
    std::vector<FolderEntry> units;
    std::vector<FolderEntry> messages;
    std::int64_t count = 0;
    if (ListFolder(UnitsPath(qmgrPath), &units) != OsStatus::Ok) {
        return 0;
    }
    for (const FolderEntry& unit : units) {
        if (!unit.isFolder) {
            continue;
        }
        const std::string unitPath = UnitsPath(qmgrPath) + '/' + unit.name;
        for (const UnitStage stage : {UnitStage::kGot, UnitStage::kTaking, UnitStage::kPut}) {
            if (ListFolder(unitPath + '/' + StageName(stage) + '/' + queueDirectory, &messages) ==
                OsStatus::Ok) {
                count += static_cast<std::int64_t>(messages.size());
            }
        }
    }
    return count;
}

Status CheckUnused(const std::string& qmgrPath, const std::string& name) {
    const std::string directory = DirectoryOfObject(name);
    static_cast<void>(RecoverDeadUnits(qmgrPath, ""));
    const std::int32_t opens = InputOpenCount(qmgrPath + '/' + directory);
    const std::int64_t inUnits = MessagesInUnits(qmgrPath, directory);
    if (opens == 0 && inUnits == 0) {
        return {};
    }
    return {StatusCode::kInUse, "queue " + name + " is in use: " + std::to_string(opens) +
                                    " programs have it open for input, " + std::to_string(inUnits) +
                                    " messages are in units of work; end those programs first"};
}

Status UnknownQueueManager(const std::string& root, const std::string& name) {
    return {StatusCode::kUnknownQueueManager, "there is no queue manager " + name + " in \"" + root + "\""};
}

}  // namespace

std::vector<std::string> QueueManagerNames(const std::string& root) {
    return ObjectsIn(root);
}

std::vector<std::string> QueueNames(const std::string& root, const std::string& qmgr) {
    return ObjectsIn(root + '/' + DirectoryOfObject(qmgr));
}

Status CreateQueueManager(const std::string& root, const std::string& name,
                          const QmgrAttributes& attributes) {
    return CreateObject(root + '/' + DirectoryOfObject(name), name, "qmgr.ini", FormatAttributes(attributes));
}

Status CreateQueue(const std::string& root, const std::string& qmgr, const std::string& name,
                   const QueueAttributes& attributes) {
    const std::string qmgrPath = root + '/' + DirectoryOfObject(qmgr);
    if (!IsObjectName(qmgr) || !IsDirectory(qmgrPath)) {
        return UnknownQueueManager(root, qmgr);
    }
    return CreateObject(qmgrPath + '/' + DirectoryOfObject(name), name, ".queue.ini",
                        FormatAttributes(attributes));
}

Status DeleteQueue(const std::string& root, const std::string& qmgr, const std::string& name) {
    const std::string qmgrPath = root + '/' + DirectoryOfObject(qmgr);
    const std::string path = qmgrPath + '/' + DirectoryOfObject(name);
    if (!IsObjectName(name) || !IsDirectory(path)) {
        return {StatusCode::kUnknownQueue, "there is no queue " + name + " in \"" + qmgrPath + "\""};
    }
    Status status = CheckUnused(qmgrPath, name);
    if (status.IsOk() && RemoveTree(path) != OsStatus::Ok) {
        status = FileError(path);
    }
    return status;
}

Status DeleteQueueManager(const std::string& root, const std::string& name) {
    const std::string path = root + '/' + DirectoryOfObject(name);
    if (!IsObjectName(name) || !IsDirectory(path)) {
        return UnknownQueueManager(root, name);
    }
    for (const std::string& queue : QueueNames(root, name)) {
        Status status = CheckUnused(path, queue);
        if (!status.IsOk()) {
            return status;
        }
    }
    std::vector<FolderEntry> units;
    static_cast<void>(RecoverDeadUnits(path, ""));
    if (ListFolder(UnitsPath(path), &units) == OsStatus::Ok && !units.empty()) {
        return {StatusCode::kInUse, "programs are connected to queue manager " + name +
                                        "; end them first, see \"" + UnitsPath(path) + "\""};
    }
    return RemoveTree(path) == OsStatus::Ok ? Status() : FileError(path);
}

}  // namespace spoolmq
