#include <cstring>

#include "spoolmq/store/crash_points.h"
#include "spoolmq/store/descriptor.h"
#include "spoolmq/store/store.h"

namespace spoolmq {

namespace {

std::string DescriptorFolder(const QueueState& state) {
    return state.path + "/.desc";
}

// The names of a clock tick; only counters that were lost in it can give one out twice.
constexpr int kNameTries = 1000;

/// Writes body and descriptor where nobody sees them. On failure both are gone again; Exists when another
/// message has the name, which is left alone.
OsStatus WriteUnseen(StoreQueue* queue, const std::string& fileName, const mqi::MQMD* descriptor,
                     const void* body, std::size_t bytes, std::string* path) {
    StoreConnection* connection = queue->connection;
    const bool sync = connection->attributes.values.sync != 0;
    // The body first: it is what recovery goes by, and it takes the descriptor with it.
    OsStatus status = StagePath(&connection->unit, UnitStage::Put, queue->state->folder, fileName, path);
    if (status == OsStatus::Ok) status = WriteNewFile(*path, body, bytes, sync);
    if (status != OsStatus::Ok) return status;
    PassStorePoint("put-body");
    if (descriptor == nullptr) return status;
    const std::string text = FormatDescriptor(*descriptor);
    const std::string descriptorPath = DescriptorFolder(*queue->state) + '/' + fileName;
    status = WriteNewFile(descriptorPath, text.data(), text.size(), sync);
    if (status == OsStatus::NotFound && MakeFolder(DescriptorFolder(*queue->state)) == OsStatus::Ok)
        status = WriteNewFile(descriptorPath, text.data(), text.size(), sync);
    if (status == OsStatus::Ok && sync) status = SyncFolder(DescriptorFolder(*queue->state));
    if (status == OsStatus::Ok) {
        PassStorePoint("put-ready");
        return status;
    }
    if (status == OsStatus::Exists) {
        static_cast<void>(RemoveFile(*path));
    } else {
        static_cast<void>(DeleteMessage(connection->path, queue->state->folder, fileName, *path));
    }
    return status;
}

/// Makes a message that is seen at once, or, in a unit, once that is committed. Exists as WriteUnseen has it.
OsStatus PutUnderName(StoreQueue* queue, const std::string& fileName, const mqi::MQMD* descriptor,
                      const void* body, std::size_t bytes, bool syncpoint, std::string* path) {
    OsStatus status = WriteUnseen(queue, fileName, descriptor, body, bytes, path);
    if (status != OsStatus::Ok || syncpoint) return status;
    status = RenameNew(*path, queue->state->path + '/' + fileName);
    if (status != OsStatus::Ok)
        static_cast<void>(DeleteMessage(queue->connection->path, queue->state->folder, fileName, *path));
    return status;
}

StoreStatus PutFailure(const StoreQueue& queue, const std::string& path, std::string* why) {
    *why = path + ": " + LastOsErrorText();
    FileInfo info;
    return StatPath(queue.state->path, &info) == OsStatus::NotFound ? StoreStatus::QueueDeleted
                                                                    : StoreStatus::Failed;
}

}  // namespace

StoreStatus PutMessage(StoreQueue* queue, const mqi::MQMD* descriptor, const void* body, std::size_t bytes,
                       bool syncpoint, std::string* why) {
    StoreConnection* connection = queue->connection;
    MessageName name;
    name.rest = "msg";
    std::string fileName;
    std::string path;
    OsStatus status = OsStatus::Exists;
    for (int i = 0; status == OsStatus::Exists && i < kNameTries; ++i) {
        name.stampNs = NextStamp(connection->counters);
        fileName = FormatMessageName(name);
        status = PutUnderName(queue, fileName, descriptor, body, bytes, syncpoint, &path);
    }
    if (status != OsStatus::Ok) return PutFailure(*queue, path, why);
    if (syncpoint) {
        connection->unit.members.push_back({UnitStage::Put, queue->state->folder, fileName});
        return StoreStatus::Ok;
    }
    if (connection->attributes.values.sync != 0) static_cast<void>(SyncFolder(queue->state->path));
    NoteArrival(queue->state->counters, name.stampNs);
    return StoreStatus::Ok;
}

void MakeIdentifier(const StoreConnection& connection, MQBYTE* identifier) {
    char text[16];
    FillField(text, 4, "AMQ ");
    FillField(text + 4, 12, connection.object);
    std::memcpy(identifier, text, sizeof text);
    const std::int64_t stamp = NextStamp(connection.counters);
    for (int i = 0; i < 8; ++i)
        identifier[16 + i] = static_cast<MQBYTE>(stamp >> (56 - 8 * i));
}

bool IsQueueFull(StoreQueue* queue) {
    const std::int64_t limit = queue->state->attributes.values.maxDepth;
    if (limit == 999999999) return false;
    return QueueDepth(queue->connection->path, queue->state->folder) >= limit;
}

}  // namespace spoolmq
