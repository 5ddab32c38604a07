#include "mqam/explain/advice.h"

namespace mqam {

namespace {

constexpr const char* kUseDiskSpace =
    "Make room on the disk or name a file on another one. The process has ended without Close, so MQ puts "
    "back what was not committed.";

constexpr Remedy kTime = Remedy::kTime;
constexpr Remedy kChange = Remedy::kChange;

constexpr MessageAdvice kMessages[] = {
    {100, kTime,
     "Correct the keyword. `mqam load --help` lists every keyword with its option; in a parameter file the "
     "keyword stands in column 1."},
    {101, kTime, "Give a trace level of 0 to 4: --trace LEVEL FILE."},
    {103, kTime, "Choose a shorter trace path."},
    {106, kTime, "Give --max-record a number of bytes from 1 to 16777216."},
    {107, kTime, "Give --rwait -1 (wait for ever) or 1 to 600 seconds."},
    {108, kTime, "Give --otenacity 1 to 6000 seconds."},
    {109, kTime, "Give --owait 1 to 600 seconds."},
    {110, kTime, "Choose a shorter log path."},
    {112, kTime, "Give --tlf yes or no."},
    {114, kTime, "Give --tdm yes or no."},
    {115, kTime, "Give --convert yes, no or the number of a CCSID such as 1208."},
    {116, kTime, "Give --flush yes, no or t."},
    {117, kTime, "Choose a shorter checkpoint path."},
    {118, kTime, "A queue manager name has at most 48 characters: correct --qmgr."},
    {119, kTime, "A queue name has at most 48 characters: correct --queue."},
    {120, kTime, "A server connection name has at most 264 characters: correct --server."},
    {121, kTime, "A channel name has at most 20 characters: correct --channel."},
    {124, kTime, "Check the path after --parmfile and that you may read the file."},
    {125, kTime, "The parameter file could not be read to its end: check the disk or share that it is on."},
    {126, kTime, "Choose a shorter parameter file path."},
    {127, kTime, "Name the queue manager: --qmgr NAME, or QMGR in the parameter file."},
    {128, kTime, "Name the queue: --queue NAME, or QNM in the parameter file."},
    {132, kTime, "Check that the folder of the trace file exists and that you may write there."},
    {133, kTime, "Give both --channel and --server, or neither; with neither MQ takes both from MQSERVER."},
    {135, kTime, "Choose a shorter checkpoint path."},
    {137, kTime,
     "Check that the folder of the checkpoint file exists, that you may read and write there, and that "
     "nobody else uses the file."},
    {141, kTime, "Check that the folder of the log file exists and that you may write there."},
    {142, kTime,
     "What was read is in the target; the summary tells how the input had ended. Check the queue manager's "
     "error log."},
    {143, kTime,
     "The last message may come again: MQ puts it back unless the commit took effect. Keep the checkpoint "
     "file and start again when the queue manager answers."},
    {144, kTime,
     "What was read is in the target; the summary tells how the input had ended. Check the queue manager's "
     "error log."},
    {145, kTime,
     "MQ could not be told to put uncommitted messages back; it does so by itself when the process ends."},
    {148, kTime,
     "Check that you may create files in the folder of the checkpoint file and that the disk has room."},
    {150, kTime,
     "The records not yet loaded are in the temporary file MQAMtmp.<process id> beside the checkpoint file: "
     "keep it."},
    {151, kTime,
     "The old checkpoint file could not be replaced; the records not yet loaded are also in the temporary "
     "file MQAMtmp.<process id> beside it: keep both."},
    {157, kTime,
     "Another program has the queue open: find it with DISPLAY QSTATUS(queue) TYPE(HANDLE), or load without "
     "--exclusive (a load with restart information needs the queue alone). It can be a life of this load "
     "that "
     "the queue manager has not ended yet; --otenacity and --owait set how long the open is tried."},
    {158, kTime,
     "Check the queue's name (upper and lower case differ) and that it is defined on this queue manager."},
    {160, kTime, "Open failed or was not called; look at the failure before this one."},
    {161, kChange, "The message is still on the queue. Raise --max-record above its length and start again."},
    {164, kTime, "Give the keyword its value."},
    {165, kTime, "MQGET ended with this reason; the message it concerns was not delivered."},
};

constexpr ReasonAdvice kReasons[] = {
    {2003, kTime, "MQRC_BACKED_OUT", "the unit of work was backed out",
     "The messages since the last commit are on the queue again: start the load again."},
    {2009, kTime, "MQRC_CONNECTION_BROKEN", "the connection to the queue manager was lost",
     "Check that the queue manager runs and the network to it works; what was not committed is back on the "
     "queue. "
     "Start the load again."},
    {2010, kChange, "MQRC_DATA_LENGTH_ERROR", "the buffer is larger than the channel allows",
     "Lower --max-record to the channel's maximum message length (MAXMSGL), or raise that."},
    {2012, kChange, "MQRC_ENVIRONMENT_ERROR", "the call is not valid in this environment",
     "Check that the MQ client is completely installed and not mixed from several versions."},
    {2016, kTime, "MQRC_GET_INHIBITED", "getting is inhibited on the queue",
     "Allow it: ALTER QLOCAL(queue) GET(ENABLED)."},
    {2017, kTime, "MQRC_HANDLE_NOT_AVAILABLE", "no more handles are allowed",
     "Raise the queue manager's MAXHANDS."},
    {2018, kTime, "MQRC_HCONN_ERROR", "the connection handle is not valid",
     "The connection had ended before this call: look at the failure before it."},
    {2019, kTime, "MQRC_HOBJ_ERROR", "the queue handle is not valid",
     "The queue had been closed before this call: look at the failure before it."},
    {2024, kTime, "MQRC_SYNCPOINT_LIMIT_REACHED", "the unit of work holds too many messages",
     "Raise the queue manager's MAXUMSGS, or take checkpoints (--checkpoint-every)."},
    {2025, kTime, "MQRC_MAX_CONNS_LIMIT_REACHED", "the queue manager has no connection left",
     "Wait for other programs to end or raise the limit."},
    {2033, kTime, "MQRC_NO_MSG_AVAILABLE", "the queue is empty",
     "Nothing: put messages, or wait longer with --rwait."},
    {2035, kChange, "MQRC_NOT_AUTHORIZED", "the user may not do this",
     "Ask for connect authority to the queue manager and get authority to the queue (setmqaut -t queue -n "
     "QUEUE "
     "-p USER +get +inq); the queue manager's error log names the missing one."},
    {2041, kTime, "MQRC_OBJECT_CHANGED", "the queue's definition was changed meanwhile",
     "Start the load again."},
    {2042, kTime, "MQRC_OBJECT_IN_USE", "another program has the queue open",
     "Find it with DISPLAY QSTATUS(queue) TYPE(HANDLE), or load without --exclusive and without restart "
     "information."},
    {2045, kChange, "MQRC_OPTION_NOT_VALID_FOR_TYPE", "the queue is of a kind that cannot be read",
     "Name a local queue, or an alias of one."},
    {2052, kTime, "MQRC_Q_DELETED", "the queue was deleted meanwhile", "Have the queue defined again."},
    {2057, kChange, "MQRC_Q_TYPE_ERROR", "the queue is of a kind that cannot be read",
     "Name a local queue, or an alias of one."},
    {2058, kChange, "MQRC_Q_MGR_NAME_ERROR", "no queue manager of this name is known",
     "Check --qmgr (upper and lower case differ; dspmq lists the local ones). For a remote one give "
     "--channel and "
     "--server or set MQSERVER: without them a local one is looked for. With the stand-in, check "
     "SPOOLMQ_DIR."},
    {2059, kTime, "MQRC_Q_MGR_NOT_AVAILABLE", "the queue manager cannot be reached",
     "Start it (strmqm NAME), or check its listener, channel and host name."},
    {2063, kTime, "MQRC_SECURITY_ERROR", "a security component failed",
     "Look into the queue manager's error log."},
    {2071, kTime, "MQRC_STORAGE_NOT_AVAILABLE", "MQ has no memory left",
     "Free memory, or lower --max-record."},
    {2080, kChange, "MQRC_TRUNCATED_MSG_FAILED", "the message is longer than the buffer",
     "The message is still on the queue. Raise --max-record above its length and start again."},
    {2082, kChange, "MQRC_UNKNOWN_ALIAS_BASE_Q", "the alias points to a queue that does not exist",
     "Correct the alias's definition."},
    {2085, kChange, "MQRC_UNKNOWN_OBJECT_NAME", "no queue of this name is known",
     "Check --queue (upper and lower case differ) and that the queue is defined on this queue manager."},
    {2087, kChange, "MQRC_UNKNOWN_REMOTE_Q_MGR", "the queue points to an unknown queue manager",
     "Name a local queue, or an alias of one."},
    {2101, kTime, "MQRC_OBJECT_DAMAGED", "the queue is damaged",
     "Have the queue manager's administrator recover it from its log."},
    {2102, kTime, "MQRC_RESOURCE_PROBLEM", "the queue manager lacks a system resource",
     "Look into its error log; a full log disk is a usual cause."},
    {2110, kChange, "MQRC_FORMAT_ERROR", "the message's format cannot be converted",
     "Load without --convert, or have the senders set the right format."},
    {2111, kChange, "MQRC_SOURCE_CCSID_ERROR", "the message's character set is unknown",
     "Load without --convert, or have the senders set the right CCSID."},
    {2115, kChange, "MQRC_TARGET_CCSID_ERROR", "the wanted character set is unknown",
     "Give --convert a CCSID that the queue manager knows."},
    {2119, kChange, "MQRC_NOT_CONVERTED", "the message could not be converted",
     "Load without --convert, or check the message's format and CCSID."},
    {2120, kChange, "MQRC_CONVERTED_MSG_TOO_BIG", "the converted message is longer than the buffer",
     "Raise --max-record."},
    {2139, kChange, "MQRC_CNO_ERROR", "the MQ library refuses the connect options",
     "Install a current MQ client."},
    {2161, kTime, "MQRC_Q_MGR_QUIESCING", "the queue manager is being shut down",
     "Start the load again when it runs again."},
    {2162, kTime, "MQRC_Q_MGR_STOPPING", "the queue manager is being shut down",
     "Start the load again when it runs again; what was not committed is back on the queue."},
    {2195, kTime, "MQRC_UNEXPECTED_ERROR", "MQ met an internal error", "Look into the MQ error logs."},
    {2202, kTime, "MQRC_CONNECTION_QUIESCING", "the connection is being shut down",
     "Start the load again when the queue manager runs again."},
    {2203, kTime, "MQRC_CONNECTION_STOPPING", "the connection is being shut down",
     "Start the load again when the queue manager runs again; what was not committed is back on the queue."},
    {2217, kChange, "MQRC_CONNECTION_NOT_AUTHORIZED", "the user may not connect",
     "Ask for connect authority to the queue manager."},
    {2277, kChange, "MQRC_CD_ERROR", "the channel definition is not valid", "Check --channel and --server."},
    {2278, kChange, "MQRC_CLIENT_CONN_ERROR", "the channel's address is not valid",
     "Check --channel and --server."},
    {2279, kTime, "MQRC_CHANNEL_STOPPED_BY_USER", "an operator stopped the channel",
     "Have the channel started, then start the load again."},
    {2298, kChange, "MQRC_FUNCTION_NOT_SUPPORTED", "MQ does not support the call here",
     "Check the MQ installation."},
    {2393, kChange, "MQRC_SSL_INITIALIZATION_ERROR", "the TLS handshake failed",
     "Check key repository, certificates and cipher of the channel."},
    {2495, kChange, "MQRC_MODULE_NOT_FOUND", "the MQ library could not be loaded",
     "Install the MQ client, add it to the library path, or name the library in the environment variable "
     "MQAMOD_MQ_LIBRARY. With --trace 1 FILE the trace names what was tried and why it failed."},
    {2497, kChange, "MQRC_MODULE_ENTRY_NOT_FOUND", "the MQ library lacks a call",
     "The library that was found is no MQ library or a damaged one: check the library path and "
     "MQAMOD_MQ_LIBRARY."},
    {2537, kTime, "MQRC_CHANNEL_NOT_AVAILABLE", "the channel is stopped or has no instance left",
     "Have the channel started or its instance limit raised."},
    {2538, kTime, "MQRC_HOST_NOT_AVAILABLE", "nothing answers at the host and port",
     "Check --server (host(port)), the network, and that the listener runs."},
    {2539, kChange, "MQRC_CHANNEL_CONFIG_ERROR", "the two ends of the channel do not agree",
     "Compare the channel's definition on both sides."},
    {2540, kChange, "MQRC_UNKNOWN_CHANNEL_NAME", "the server knows no channel of this name",
     "Check --channel (upper and lower case differ)."},
    {2577, kChange, "MQRC_CHANNEL_BLOCKED", "channel authentication rules block this client",
     "Ask the queue manager's administrator to allow user and address on the channel."},
    {2583, kChange, "MQRC_INSTALLATION_MISMATCH",
     "library and queue manager belong to different installations",
     "Use the library of the queue manager's installation (setmqenv)."},
};

constexpr TextAdvice kTexts[] = {
    {"Queue Manager open", nullptr,
     "The connection worked but the queue could not be opened, and the module does not tell MQ's reason. "
     "Check "
     "authority to the queue (get), whether another program has it open exclusively, and the queue manager's "
     "error log."},
    {"Error received from MQCONNX", nullptr, "The queue manager could not be connected; nothing was read."},
    {"Empty initialization string", nullptr, "Give at least --qmgr and --queue, or --parmfile."},
    {"Too many init string parameters", nullptr, "Move keywords into a parameter file: --parmfile FILE."},
    {"memory allocation failed", nullptr, "Lower --max-record, or free memory."},
    {"Checkpoint support NOT requested", nullptr,
     "Name a checkpoint file (--ckfile), or load without "
     "--checkpoint-every."},
    {"requested sequence prior to checkpoint file", nullptr,
     "The checkpoint file belongs to a later checkpoint than the position: keep both for analysis."},
    {"empty checkpoint file", nullptr,
     "No byte of the checkpoint file could be read: it holds no checkpoint, or its disk cannot read it. Look "
     "for MQAMtmp.* beside it before you delete anything."},
    {"reposition", "fsetpos", "The checkpoint file does not fit the position: keep both for analysis."},
    {"checkpoint", "fgetpos", "The place in the checkpoint file could not be asked for: check its disk."},
    {"checkpoint", "fwrite", kUseDiskSpace},
    {"checkpoint", "fflush", kUseDiskSpace},
    {"appending last record read", nullptr, kUseDiskSpace},
    {"prepending last record read", nullptr, kUseDiskSpace},
    {"after log write", nullptr, kUseDiskSpace},
    {" ", "fwrite",
     "The message log could not be written: make room on its disk, or load with --tlf no to go on "
     "without a log."},
    {"continuing without Log", nullptr, "The load goes on, but later messages are not in the log."},
    {"not initialized", nullptr, "The host called the module out of order: report this."},
    {"already initialized", nullptr, "The host called the module out of order: report this."},
};

bool Fits(const TextAdvice& row, const ErrorText& error) {
    const std::string_view beginning = row.beginning;
    const bool textFits = beginning == " " ? error.message == " " : error.message.starts_with(beginning);
    return textFits && (row.failingCall == nullptr || error.failingCall == row.failingCall);
}

}  // namespace

std::span<const MessageAdvice> AllMessageAdvice() {
    return kMessages;
}
std::span<const ReasonAdvice> AllReasonAdvice() {
    return kReasons;
}
std::span<const TextAdvice> AllTextAdvice() {
    return kTexts;
}

const ReasonAdvice* FindReasonAdvice(int reason) {
    for (const ReasonAdvice& row : kReasons) {
        if (row.reason == reason) return &row;
    }
    return nullptr;
}

bool StaysSo(const ErrorText& error) {
    const ReasonAdvice* reason = FindReasonAdvice(error.mqReason);
    if (reason != nullptr && reason->remedy == kChange) return true;
    for (const MessageAdvice& row : kMessages) {
        if (row.number == error.messageNumber) return row.remedy == kChange;
    }
    return false;
}

std::vector<std::string> FindAdvice(const ErrorText& error) {
    std::vector<std::string> advice;
    if (error.messageNumber != 0) {
        for (const MessageAdvice& row : kMessages) {
            if (row.number == error.messageNumber) advice.emplace_back(row.next);
        }
    } else {
        for (const TextAdvice& row : kTexts) {
            if (!Fits(row, error)) continue;
            advice.emplace_back(row.next);
            break;
        }
    }
    const ReasonAdvice* reason = FindReasonAdvice(error.mqReason);
    // Message 158 and reason 2085 say the same; so do 161 and 2080.
    if (reason != nullptr && error.messageNumber != 158 && error.messageNumber != 157) {
        advice.emplace_back(reason->next);
    }
    return advice;
}

}  // namespace mqam
