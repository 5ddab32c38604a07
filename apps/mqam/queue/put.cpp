// SPDX-License-Identifier: Apache-2.0
#include "mqam/queue/put.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "mqam/base/exit_codes.h"
#include "mqam/base/progress.h"
#include "mqam/queue/message_source.h"
#include "mqam/queue/order_generator.h"
#include "platform/clock.h"
#include "platform/process.h"
#include "platform/standard_streams.h"
#include "platform/terminal.h"
#include "spoolmq/base/appl_type.h"
#include "spoolmq/store/descriptor.h"
#include "spoolmq/store/store.h"

namespace mqam {

namespace {

using Clock = std::chrono::steady_clock;

// Keeps the state of a put in progress.
struct Putting {
    std::unique_ptr<spoolmq::StoreConnection> connection;
    std::unique_ptr<spoolmq::StoreQueue> queue;
    bool hasDescriptor = false;
    mqi::MQMD descriptor{};
    std::FILE* record = nullptr;
    ProgressCounters counters;
};

void PrintError(const std::string& error) {
    PrintMessage("mqam queue put: " + error + "\n");
}

bool OpenTarget(const QueuePutOptions& options, Putting& putting) {
    spoolmq::Status status = ConnectStore(options.spool, options.queueManager, putting.connection);
    if (status.IsOk())
        status = OpenStoreQueue(*putting.connection, options.queue, spoolmq::InputUse::kNone, putting.queue);
    if (status.IsOk()) return true;
    PrintError(status.error);
    if (status.code == spoolmq::StatusCode::kUnknownQueueManager ||
        status.code == spoolmq::StatusCode::kUnknownQueue)
        PrintMessage("  create it with: mqam queue create " + options.queueManager + " " + options.queue +
                     "\n");
    return false;
}

void ComposeDescriptor(const QueuePutOptions& options, Putting& putting) {
    putting.hasDescriptor = !options.format.empty() || options.ccsid != 0;
    if (!putting.hasDescriptor) return;
    const spoolmq::QueueAttributes& attributes = putting.queue->state->attributes.values;
    putting.descriptor = spoolmq::ParseDescriptor("");
    mqi::MQMD& md = putting.descriptor;
    spoolmq::FillField(md.Format, sizeof md.Format, options.format);
    md.CodedCharSetId = options.ccsid != 0 ? options.ccsid : putting.connection->attributes.values.ccsid;
    md.Persistence = attributes.defaultPersistence;
    md.Priority = attributes.defaultPriority;
    spoolmq::FillField(md.UserIdentifier, sizeof md.UserIdentifier, platform::UserName());
    spoolmq::FillField(md.PutApplName, sizeof md.PutApplName, "mqam");
    md.PutApplType = spoolmq::kPlatformApplType;
}

bool PutOne(const QueuePutOptions& options, const std::string& message, Putting& putting) {
    spoolmq::NewMessage newMessage = {nullptr, message.data(), message.size()};
    if (putting.hasDescriptor) {
        spoolmq::FormatPutDateTime(platform::FileClockNs(), putting.descriptor.PutDate,
                                   putting.descriptor.PutTime);
        spoolmq::MakeIdentifier(*putting.connection, putting.descriptor.MsgId);
        newMessage.descriptor = &putting.descriptor;
    }
    const spoolmq::Status status = PutMessage(*putting.queue, newMessage, spoolmq::Syncpoint::kNo);
    if (!status.IsOk()) {
        PrintError(status.error + "\n  only the messages counted below are on the queue");
        return false;
    }
    if (putting.record != nullptr && !WriteFramed(putting.record, message)) {
        PrintError("--record " + options.recordPath + ": " + std::strerror(errno));
        return false;
    }
    ++putting.counters.records;
    putting.counters.bytes += message.size();
    return true;
}

int PutFile(const QueuePutOptions& options, const std::string& path, Putting& putting) {
    const bool isStandardInput = path == "-";
    std::FILE* file = isStandardInput ? stdin : std::fopen(path.c_str(), "rb");
    if (file == nullptr) {
        PrintError(path + ": " + std::strerror(errno) + "; nothing of it was put");
        return kExitNotStarted;
    }
    const MessageFraming framing = options.framed  ? MessageFraming::kLength
                                   : options.lines ? MessageFraming::kLines
                                                   : MessageFraming::kWhole;
    std::string message;
    std::string error;
    int result = kExitDone;
    for (bool isFirst = true; result == kExitDone; isFirst = false) {
        const SourceResult got = ReadMessage(file, framing, isFirst, message, error);
        if (got == SourceResult::kEnd) break;
        if (got == SourceResult::kFailed) {
            PrintError((isStandardInput ? "standard input" : path) + ": " + error);
            result = kExitNotStarted;
        } else if (!PutOne(options, message, putting)) {
            result = kExitTargetFailed;
        }
    }
    if (!isStandardInput) std::fclose(file);
    return result;
}

int PutGenerated(const QueuePutOptions& options, Putting& putting) {
    GeneratorSettings settings;
    settings.seed = options.seed;
    settings.binaryPercent = options.binaryPercent;
    if (const std::size_t dash = options.sizes.find('-'); dash != std::string::npos) {
        settings.hasSizes = true;
        settings.bytesMin = std::strtoull(options.sizes.c_str(), nullptr, 10);
        settings.bytesMax = std::strtoull(options.sizes.c_str() + dash + 1, nullptr, 10);
    }
    for (std::uint64_t index = 0; index < options.count; ++index) {
        if (!PutOne(options, MakeMessage(settings, index), putting)) return kExitTargetFailed;
    }
    return kExitDone;
}

int PutAll(const QueuePutOptions& options, Putting& putting) {
    int result = kExitDone;
    for (const std::string& path : options.files) {
        if (result == kExitDone) result = PutFile(options, path, putting);
    }
    if (result == kExitDone && options.count > 0) result = PutGenerated(options, putting);
    if (options.files.empty() && options.count == 0) result = PutFile(options, "-", putting);
    return result;
}

int PutAndTell(const QueuePutOptions& options, Putting& putting) {
    const Clock::time_point start = Clock::now();
    const bool isLive = !options.quiet && platform::IsStandardErrorTerminal();
    StartProgress(isLive ? ProgressStyle::kLiveLine : ProgressStyle::kNone, putting.counters);
    const int result = PutAll(options, putting);
    StopProgress();
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    const std::string summary = "put " + FormatCount(putting.counters.records) + " messages, " +
                                FormatBytes(putting.counters.bytes) + ", on " + options.queue + " of " +
                                putting.connection->object + " in " + FormatElapsed(seconds);
    if (!options.quiet || result != kExitDone) PrintMessage("mqam queue put: " + summary + "\n");
    return result;
}

}  // namespace

int RunQueuePut(const QueuePutOptions& options) {
    Putting putting;
    if (!OpenTarget(options, putting)) return kExitNotStarted;
    ComposeDescriptor(options, putting);
    int result = kExitDone;
    if (!options.recordPath.empty()) {
        putting.record = std::fopen(options.recordPath.c_str(), "ab");
        if (putting.record == nullptr) {
            PrintError("--record " + options.recordPath + ": " + std::strerror(errno) + "; nothing was put");
            result = kExitNotStarted;
        }
    }
    platform::SetBinaryStreams();
    if (result == kExitDone) result = PutAndTell(options, putting);
    if (putting.record != nullptr && std::fclose(putting.record) != 0 && result == kExitDone) {
        PrintError("--record " + options.recordPath + ": " + std::strerror(errno));
        result = kExitTargetFailed;
    }
    CloseStoreQueue(std::move(putting.queue));
    DisconnectStore(std::move(putting.connection));
    return result;
}

}  // namespace mqam
