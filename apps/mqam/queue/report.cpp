// SPDX-License-Identifier: Apache-2.0
#include "mqam/queue/report.h"

#include <algorithm>
#include <cstdio>
#include <sstream>

#include "mqam/base/answer.h"
#include "mqam/base/exit_codes.h"
#include "mqam/base/json_writer.h"
#include "mqam/base/progress.h"
#include "platform/file.h"
#include "platform/standard_streams.h"
#include "spoolmq/store/admin.h"
#include "spoolmq/store/descriptor.h"
#include "spoolmq/store/store.h"

namespace mqam {

namespace {

constexpr std::size_t kPreviewBytes = 60;

struct OpenedQueue {
    std::unique_ptr<spoolmq::StoreConnection> connection;
    std::unique_ptr<spoolmq::StoreQueue> queue;
};

int Refuse(const std::string& command, const std::string& error) {
    PrintMessage("mqam queue " + command + ": " + error + "\n");
    return kExitNotStarted;
}

void CloseAll(OpenedQueue& opened) {
    if (opened.queue != nullptr) CloseStoreQueue(std::move(opened.queue));
    if (opened.connection != nullptr) DisconnectStore(std::move(opened.connection));
}

// Returns the beginning of the bytes as one line, with a dot for each control character.
std::string Preview(const std::string& bytes) {
    std::string text = bytes.substr(0, kPreviewBytes);
    for (char& c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (code < ' ' || code == 0x7F) c = '.';
    }
    return text + (bytes.size() > kPreviewBytes ? "..." : "");
}

std::string BodyOf(const spoolmq::FoundMessage& found, std::size_t bytesMax) {
    std::string body(std::min(bytesMax, static_cast<std::size_t>(found.bytes)), '\0');
    const spoolmq::Status status = ReadFound(found, body.data(), body.size());
    return status.IsOk() ? body : "(" + status.error + ")";
}

template <typename Row, typename Attributes>
void WriteAttributes(JsonWriter& json, const std::vector<Row>& table, const Attributes& values) {
    json.Key("attributes").BeginObject();
    for (const Row& row : table) {
        json.Key(row.name);
        if (row.number != nullptr && row.words == nullptr) {
            json.SignedNumber(values.*row.number);
        } else {
            json.Text(AttributeText(row, values));
        }
    }
    json.EndObject();
}

template <typename Row, typename Attributes>
void PrintAttributes(const std::vector<Row>& table, const Attributes& values) {
    for (const Row& row : table) {
        const std::string text = AttributeText(row, values);
        std::printf("  %-28s %s\n", row.name, text.empty() ? "-" : text.c_str());
    }
}

std::string FormatOf(const spoolmq::FoundMessage& found) {
    return std::string(spoolmq::FieldText(found.descriptor.Format, sizeof found.descriptor.Format));
}

void WriteMessageMembers(JsonWriter& json, const spoolmq::FoundMessage& found, const std::string& begins) {
    json.TextMember("message", found.fileName).Key("bytes").SignedNumber(found.bytes);
    json.Key("backout_count").SignedNumber(found.descriptor.BackoutCount);
    json.TextMember("format", FormatOf(found)).TextMember("begins", begins.substr(0, kPreviewBytes));
}

void PrintMessageLine(const spoolmq::FoundMessage& found) {
    const mqi::MQMD& md = found.descriptor;
    const std::string format = FormatOf(found);
    std::printf("  %-36s %10lld  %7d  %-8s  %s\n", found.fileName.c_str(),
                static_cast<long long>(found.bytes), static_cast<int>(md.BackoutCount), format.c_str(),
                Preview(BodyOf(found, kPreviewBytes + 1)).c_str());
}

// Calls `use` for at most `limit` messages, in order of arrival. Returns whether there are more.
template <typename Use>
bool ForEachMessage(spoolmq::StoreQueue& queue, std::uint64_t limit, Use use) {
    spoolmq::BrowseCursor cursor;
    for (std::uint64_t count = 0; count < limit; ++count) {
        spoolmq::FoundMessage found;
        if (!FindMessage(queue, {}, cursor, found).IsOk()) return false;
        use(found);
        cursor.isSet = true;
        cursor.stampNs = found.name.stampNs;
        cursor.fileName = found.fileName;
        ReleaseFound(found);
    }
    spoolmq::FoundMessage more;
    if (!FindMessage(queue, {}, cursor, more).IsOk()) return false;
    ReleaseFound(more);
    return true;
}

void PrintMessages(spoolmq::StoreQueue& queue, std::uint64_t limit) {
    bool hasHeading = false;
    const bool hasMore = ForEachMessage(queue, limit, [&hasHeading](const spoolmq::FoundMessage& found) {
        if (!hasHeading)
            std::printf("\n  %-36s %10s  %7s  %-8s  %s\n", "message", "bytes", "backout", "format", "begins");
        hasHeading = true;
        PrintMessageLine(found);
    });
    if (hasMore) std::printf("  ... and more: --limit N shows N messages\n");
}

int ShowQueueAsJson(const QueueShowOptions& options, spoolmq::StoreQueue& queue) {
    const spoolmq::QueueState& state = *queue.state;
    JsonWriter json;
    json.BeginObject().TextMember("queue_manager", queue.connection->object);
    json.TextMember("queue", state.object).TextMember("path", state.path).Key("messages");
    json.SignedNumber(spoolmq::QueueDepth(queue.connection->path, state.directory)).Key("readers");
    json.SignedNumber(spoolmq::InputOpenCount(state.path));
    WriteAttributes(json, spoolmq::QueueAttributeTable(), state.attributes.values);
    json.Key("listed").BeginArray();
    const bool hasMore = ForEachMessage(queue, options.limit, [&json](const spoolmq::FoundMessage& found) {
        json.BeginObject();
        WriteMessageMembers(json, found, BodyOf(found, kPreviewBytes));
        json.EndObject();
    });
    json.EndArray().BoolMember("more", hasMore).EndObject();
    return PrintAnswer("mqam queue show", json.Line() + "\n");
}

int ShowMessageAsJson(const spoolmq::FoundMessage& found, const std::string& body) {
    JsonWriter json;
    json.BeginObject();
    WriteMessageMembers(json, found, body);
    json.Key("descriptor").BeginObject();
    std::istringstream lines(spoolmq::FormatDescriptor(found.descriptor));
    for (std::string line; std::getline(lines, line);) {
        const std::size_t equals = line.find('=');
        if (equals != std::string::npos) json.TextMember(line.substr(0, equals), line.substr(equals + 1));
    }
    json.EndObject().EndObject();
    return PrintAnswer("mqam queue show", json.Line() + "\n");
}

int ShowMessage(const QueueShowOptions& options, spoolmq::StoreQueue& queue) {
    spoolmq::BrowseCursor cursor;
    cursor.isSet = true;
    cursor.fileName = options.message;
    spoolmq::MessageName name;
    platform::FileInfo info;
    if (ParseMessageName(options.message, name)) {
        cursor.stampNs = name.stampNs;
    } else if (platform::StatPath(queue.state->path + '/' + options.message, info) ==
               platform::FileStatus::kOk) {
        // The stamp of a copied-in file is its change time.
        cursor.stampNs = info.changeTimeNs;
    }
    spoolmq::FoundMessage found;
    if (!FindUnderCursor(queue, cursor, found).IsOk())
        return Refuse("show", "there is no message \"" + options.message + "\" in " + options.queue +
                                  "; `mqam queue show " + options.queueManager + " " + options.queue +
                                  "` lists the messages");
    const std::string body = BodyOf(found, static_cast<std::size_t>(found.bytes));
    if (options.json) {
        const int exitCode = ShowMessageAsJson(found, body);
        ReleaseFound(found);
        return exitCode;
    }
    if (options.body) {
        platform::SetBinaryStreams();
        std::fwrite(body.data(), 1, body.size(), stdout);
    } else {
        std::printf("%s, %s, backed out %s\n%s\n%s\n", found.fileName.c_str(),
                    FormatCountOf(static_cast<std::uint64_t>(found.bytes), "byte").c_str(),
                    FormatCountOf(static_cast<std::uint64_t>(found.descriptor.BackoutCount), "time").c_str(),
                    spoolmq::FormatDescriptor(found.descriptor).c_str(), Preview(body).c_str());
    }
    ReleaseFound(found);
    return FinishAnswer("mqam queue show");
}

int ShowQueue(const QueueShowOptions& options, spoolmq::StoreQueue& queue) {
    if (options.json) return ShowQueueAsJson(options, queue);
    const spoolmq::QueueState& state = *queue.state;
    std::printf("queue %s of %s, in %s\n", state.object.c_str(), queue.connection->object.c_str(),
                state.path.c_str());
    std::printf("  %-28s %lld\n  %-28s %d\n", "messages",
                static_cast<long long>(spoolmq::QueueDepth(queue.connection->path, state.directory)),
                "open for input", spoolmq::InputOpenCount(state.path));
    PrintAttributes(spoolmq::QueueAttributeTable(), state.attributes.values);
    PrintMessages(queue, options.limit);
    return FinishAnswer("mqam queue show");
}

// Writes the queues of a queue manager as an array.
void WriteQueues(JsonWriter& json, const std::string& spool, const std::string& queueManager) {
    const std::string path = spool + '/' + spoolmq::DirectoryOfObject(queueManager);
    static_cast<void>(spoolmq::RecoverDeadUnits(path, ""));
    json.Key("queues").BeginArray();
    for (const std::string& queue : spoolmq::QueueNames(spool, queueManager)) {
        const std::string directory = spoolmq::DirectoryOfObject(queue);
        json.BeginObject().TextMember("name", queue).Key("messages");
        json.SignedNumber(spoolmq::QueueDepth(path, directory)).Key("readers");
        json.SignedNumber(spoolmq::InputOpenCount(path + '/' + directory)).EndObject();
    }
    json.EndArray();
}

int ListAsJson(const std::string& spool, const std::vector<std::string>& queueManagers) {
    JsonWriter json;
    json.BeginObject().TextMember("spool", spool).Key("queue_managers").BeginArray();
    for (const std::string& name : queueManagers) {
        json.BeginObject().TextMember("name", name);
        WriteQueues(json, spool, name);
        json.EndObject();
    }
    return PrintAnswer("mqam queue list", json.EndArray().EndObject().Line() + "\n");
}

int ShowQueueManagerAsJson(const QueueShowOptions& options, const spoolmq::StoreConnection& connection) {
    JsonWriter json;
    json.BeginObject().TextMember("queue_manager", connection.object).TextMember("path", connection.path);
    WriteAttributes(json, spoolmq::QmgrAttributeTable(), connection.attributes.values);
    WriteQueues(json, options.spool, connection.object);
    return PrintAnswer("mqam queue show", json.EndObject().Line() + "\n");
}

}  // namespace

int RunQueueList(const QueueListOptions& options) {
    const std::string& spool = options.spool;
    const std::string& queueManager = options.queueManager;
    std::vector<std::string> names = spoolmq::QueueManagerNames(spool);
    if (!queueManager.empty()) {
        if (std::find(names.begin(), names.end(), queueManager) == names.end())
            return Refuse("list", "there is no queue manager " + queueManager + " in \"" + spool + "\"");
        names = {queueManager};
    }
    if (options.json) return ListAsJson(spool, names);
    if (names.empty()) {
        std::printf("no queue manager in \"%s\"; create one with: mqam queue create QM1 ORDERS\n",
                    spool.c_str());
        return FinishAnswer("mqam queue list");
    }
    std::printf("%-48s %10s %7s\n", "queue manager, queue", "messages", "readers");
    for (const std::string& name : names) {
        const std::string path = spool + '/' + spoolmq::DirectoryOfObject(name);
        static_cast<void>(spoolmq::RecoverDeadUnits(path, ""));
        std::printf("%s\n", name.c_str());
        for (const std::string& queue : spoolmq::QueueNames(spool, name)) {
            const std::string directory = spoolmq::DirectoryOfObject(queue);
            std::printf("  %-46s %10lld %7d\n", queue.c_str(),
                        static_cast<long long>(spoolmq::QueueDepth(path, directory)),
                        spoolmq::InputOpenCount(path + '/' + directory));
        }
    }
    return FinishAnswer("mqam queue list");
}

int RunQueueShow(const QueueShowOptions& options) {
    OpenedQueue opened;
    spoolmq::Status status = ConnectStore(options.spool, options.queueManager, opened.connection);
    if (status.IsOk() && options.queue.empty()) {
        if (options.json) {
            const int exitCode = ShowQueueManagerAsJson(options, *opened.connection);
            CloseAll(opened);
            return exitCode;
        }
        std::printf("queue manager %s, in %s\n", opened.connection->object.c_str(),
                    opened.connection->path.c_str());
        PrintAttributes(spoolmq::QmgrAttributeTable(), opened.connection->attributes.values);
        CloseAll(opened);
        return RunQueueList({options.spool, options.queueManager});
    }
    if (status.IsOk())
        status = OpenStoreQueue(*opened.connection, options.queue, spoolmq::InputUse::kNone, opened.queue);
    int result = kExitDone;
    if (!status.IsOk())
        result = Refuse("show", status.error);
    else if (options.message.empty())
        result = ShowQueue(options, *opened.queue);
    else
        result = ShowMessage(options, *opened.queue);
    CloseAll(opened);
    return result;
}

}  // namespace mqam
