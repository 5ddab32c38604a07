// SPDX-License-Identifier: Apache-2.0

// Puts messages on a queue.
#include <cstring>

#include "platform/directory.h"
#include "platform/file.h"
#include "spoolmq/store/crash_points.h"
#include "spoolmq/store/descriptor.h"
#include "spoolmq/store/store.h"

namespace spoolmq {

namespace {

// The most names that are tried for one message. A name is already in use only if the counters were lost
// within a clock tick, and then far fewer attempts are needed.
constexpr int kMaxNameAttempts = 1000;

std::string DescriptorDirectory(const QueueState& state) {
    return state.path + "/.desc";
}

FileStatus WriteDescriptor(const StoreQueue& queue, const std::string& fileName,
                           const mqi::MQMD& descriptor) {
    const bool sync = queue.connection->attributes.values.sync != 0;
    const std::string text = FormatDescriptor(descriptor);
    const std::string directory = DescriptorDirectory(*queue.state);
    const std::string path = directory + '/' + fileName;
    FileStatus status = platform::WriteNewFile(path, text.data(), text.size(), sync);
    if (status == FileStatus::kNotFound && platform::MakeDirectory(directory) == FileStatus::kOk) {
        status = platform::WriteNewFile(path, text.data(), text.size(), sync);
    }
    if (status == FileStatus::kOk && sync) {
        status = platform::SyncDirectory(directory);
    }
    return status;
}

// Writes body and descriptor of the member where no reader sees them, the body to `path`. On failure both are
// deleted again. Returns kExists when another message has the name; that one is left unchanged.
FileStatus WriteUnseen(const StoreQueue& queue, const UnitMember& member, const NewMessage& message,
                       std::string& path) {
    StoreConnection& connection = *queue.connection;
    const bool sync = connection.attributes.values.sync != 0;
    // The body comes first: recovery deletes a body together with its descriptor.
    FileStatus status = MakeMemberPath(connection.unit, member, path);
    if (status == FileStatus::kOk) {
        status = platform::WriteNewFile(path, message.body, message.bytes, sync);
    }
    if (status != FileStatus::kOk) {
        return status;
    }
    ReachCrashPoint("put-body");
    if (message.descriptor == nullptr) {
        return status;
    }
    status = WriteDescriptor(queue, member.fileName, *message.descriptor);
    if (status == FileStatus::kOk) {
        ReachCrashPoint("put-ready");
    } else if (status == FileStatus::kExists) {
        static_cast<void>(platform::RemoveFile(path));
    } else {
        static_cast<void>(DeleteMessage(connection.path, member, path));
    }
    return status;
}

// Makes a written message available.
FileStatus Publish(const StoreQueue& queue, const UnitMember& member, const std::string& path) {
    const FileStatus status = platform::RenameNoReplace(path, queue.state->path + '/' + member.fileName);
    if (status != FileStatus::kOk) {
        static_cast<void>(DeleteMessage(queue.connection->path, member, path));
    }
    return status;
}

Status PutError(const StoreQueue& queue, const std::string& path) {
    Status status = FileError(path);
    platform::FileInfo info;
    if (platform::StatPath(queue.state->path, info) == FileStatus::kNotFound) {
        status.code = StatusCode::kQueueDeleted;
    }
    return status;
}

}  // namespace

Status PutMessage(StoreQueue& queue, const NewMessage& message, Syncpoint syncpoint) {
    StoreConnection& connection = *queue.connection;
    MessageName name;
    name.rest = "msg";
    UnitMember member = {UnitStage::kPut, queue.state->directory, {}};
    std::string path;
    FileStatus status = FileStatus::kExists;
    for (int attempt = 0; status == FileStatus::kExists && attempt < kMaxNameAttempts; ++attempt) {
        name.stampNs = NextStamp(connection.counters);
        member.fileName = FormatMessageName(name);
        status = WriteUnseen(queue, member, message, path);
        if (status == FileStatus::kOk && syncpoint == Syncpoint::kNo) {
            status = Publish(queue, member, path);
        }
    }
    if (status != FileStatus::kOk) {
        return PutError(queue, path);
    }
    if (syncpoint == Syncpoint::kYes) {
        connection.unit.members.push_back(member);
        return {};
    }
    if (connection.attributes.values.sync != 0) {
        static_cast<void>(platform::SyncDirectory(queue.state->path));
    }
    CountArrival(queue.state->counters, name.stampNs);
    return {};
}

void MakeIdentifier(const StoreConnection& connection, MQBYTE* identifier) {
    char text[16];
    FillField(text, 4, "AMQ ");
    FillField(text + 4, 12, connection.object);
    std::memcpy(identifier, text, sizeof text);
    const std::int64_t stamp = NextStamp(connection.counters);
    for (int i = 0; i < 8; ++i) {
        identifier[16 + i] = static_cast<MQBYTE>(stamp >> (56 - 8 * i));
    }
}

}  // namespace spoolmq
