// SPDX-License-Identifier: Apache-2.0
#include "spoolmq/store/admin.h"

#include <algorithm>

#include "platform/directory.h"
#include "platform/file.h"

namespace spoolmq {

namespace {

std::vector<std::string> ObjectsIn(const std::string& path) {
    std::vector<platform::DirectoryEntry> entries;
    std::vector<std::string> names;
    if (platform::ListDirectory(path, entries) != FileStatus::kOk) {
        return names;
    }
    for (const platform::DirectoryEntry& entry : entries) {
        if (!entry.isDirectory || entry.name[0] == '.') {
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
    platform::FileInfo info;
    return platform::StatPath(path, info) == FileStatus::kOk && info.isDirectory;
}

// Creates a directory and the directories on the way to it.
FileStatus CreateDirectories(const std::string& path) {
    for (std::size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1)) {
        // Creating a directory that already exists may be forbidden, so only a failure to create the last one
        // counts.
        static_cast<void>(platform::MakeDirectory(path.substr(0, end)));
    }
    return platform::MakeDirectory(path);
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
    if (CreateDirectories(path) != FileStatus::kOk) {
        return FileError(path);
    }
    const std::string iniPath = path + '/' + iniName;
    if (platform::WriteNewFile(iniPath, ini.data(), ini.size(), false) != FileStatus::kOk) {
        return FileError(iniPath);
    }
    return {};
}

FileStatus RemoveTree(const std::string& path) {
    std::vector<platform::DirectoryEntry> entries;
    FileStatus status = platform::ListDirectory(path, entries);
    if (status == FileStatus::kNotFound) {
        return FileStatus::kOk;
    }
    for (const platform::DirectoryEntry& entry : entries) {
        if (status != FileStatus::kOk) {
            return status;
        }
        const std::string entryPath = path + '/' + entry.name;
        // A link to a directory is removed like a file: what it leads to does not belong to the queue.
        status = platform::RemoveFile(entryPath);
        if (status != FileStatus::kOk && entry.isDirectory) {
            status = RemoveTree(entryPath);
        }
    }
    return status == FileStatus::kOk ? platform::RemoveEmptyDirectory(path) : status;
}

std::int64_t MessagesInUnits(const std::string& qmgrPath, const std::string& queueDirectory) {
    std::vector<platform::DirectoryEntry> units;
    std::vector<platform::DirectoryEntry> messages;
    std::int64_t count = 0;
    if (platform::ListDirectory(UnitsPath(qmgrPath), units) != FileStatus::kOk) {
        return 0;
    }
    for (const platform::DirectoryEntry& unit : units) {
        if (!unit.isDirectory) {
            continue;
        }
        const std::string unitPath = UnitsPath(qmgrPath) + '/' + unit.name;
        for (const UnitStage stage : {UnitStage::kGot, UnitStage::kTaking, UnitStage::kPut}) {
            if (platform::ListDirectory(unitPath + '/' + StageName(stage) + '/' + queueDirectory, messages) ==
                FileStatus::kOk) {
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
    const std::string programs =
        std::to_string(opens) + (opens == 1 ? " program has" : " programs have") + " it open for input, ";
    const std::string messages =
        std::to_string(inUnits) + (inUnits == 1 ? " message is" : " messages are") + " in units of work";
    return {StatusCode::kInUse,
            "queue " + name + " is in use: " + programs + messages + "; end those programs first"};
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
    if (status.IsOk() && RemoveTree(path) != FileStatus::kOk) {
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
    std::vector<platform::DirectoryEntry> units;
    static_cast<void>(RecoverDeadUnits(path, ""));
    if (platform::ListDirectory(UnitsPath(path), units) == FileStatus::kOk && !units.empty()) {
        return {StatusCode::kInUse, "programs are connected to queue manager " + name +
                                        "; end them first, see \"" + UnitsPath(path) + "\""};
    }
    return RemoveTree(path) == FileStatus::kOk ? Status() : FileError(path);
}

}  // namespace spoolmq
