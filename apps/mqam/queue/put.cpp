// SPDX-License-Identifier: Apache-2.0
#include "mqam/queue/put.h"

#include <algorithm>
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
#include "platform/system.h"
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

constexpr const char* kReadingTerminal =
    platform::kIsWindows
        ? "mqam queue put: reading from the terminal; Ctrl-Z and Enter end it\n"
        : "mqam queue put: reading from the terminal; Ctrl-D at the beginning of a line ends it\n";

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

// Returns why the message cannot be put and what to do, or an empty string if it can. All checks but the last
// are those of MQPUT, so that mqam puts only what a program could have put.
std::string FindObstacle(const QueuePutOptions& options, const std::string& message, Putting& putting) {
    const spoolmq::Status refreshed = RefreshQueue(*putting.queue);
    if (!refreshed.IsOk()) return refreshed.error;
    const spoolmq::QueueAttributes& attributes = putting.queue->state->attributes.values;
    const std::string ini = putting.queue->state->path + "/.queue.ini";
    if (attributes.putInhibited != 0) {
        return "the queue does not take messages (put=disabled); set put=enabled in " + ini;
    }
    const std::int32_t bytesMax =
        std::min(attributes.maxMessageLength, putting.connection->attributes.values.maxMessageLength);
    if (message.size() > static_cast<std::size_t>(bytesMax)) {
        return "a message of " + FormatCountOf(message.size(), "byte") +
               " is too long for the queue; raise " + "max_message_length=" + std::to_string(bytesMax) +
               " of the queue or its queue manager";
    }
    if (IsQueueFull(*putting.queue)) {
        return "the queue is full (max_depth=" + std::to_string(attributes.maxDepth) +
               "); load its messages, or " + "raise max_depth in " + ini;
    }
    if (message.empty() && !options.allowsEmpty) {
        return "a message is empty, and an empty message ends the next load early; use --empty to put it all the same";
    }
    return "";
}

bool PutOne(const QueuePutOptions& options, const std::string& message, Putting& putting) {
    const std::string obstacle = FindObstacle(options, message, putting);
    if (!obstacle.empty()) {
        PrintError(obstacle);
        return false;
    }
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
    constexpr int kStandardInput = 0;
    if (isStandardInput && !options.quiet && platform::IsTerminal(kStandardInput)) {
        PrintMessage(kReadingTerminal);
    }
    std::FILE* file = isStandardInput ? stdin : std::fopen(path.c_str(), "rb");
    if (file == nullptr) {
        PrintError(path + ": " + std::strerror(errno) + "; none of it was put");
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
    if (result == kExitDone && options.generates) result = PutGenerated(options, putting);
    if (options.files.empty() && !options.generates) result = PutFile(options, "-", putting);
    return result;
}

int PutAndTell(const QueuePutOptions& options, Putting& putting) {
    const Clock::time_point start = Clock::now();
    const bool isLive = !options.quiet && platform::IsStandardErrorTerminal();
    StartProgress(isLive ? ProgressStyle::kLiveLine : ProgressStyle::kNone, putting.counters);
    const int result = PutAll(options, putting);
    StopProgress();
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    const std::string summary = "put " + FormatCountOf(putting.counters.records, "message") + ", " +
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
