// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/queue_command.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <cstdio>
#include <memory>

#include "mqam/base/answer.h"
#include "mqam/base/exit_codes.h"
#include "mqam/base/progress.h"
#include "mqam/cli/option_values.h"
#include "mqam/queue/message_source.h"
#include "mqam/queue/put.h"
#include "mqam/queue/report.h"
#include "spoolmq/store/admin.h"

namespace mqam {

namespace {

constexpr const char* kQueueExamples =
    "A queue manager is a directory in the spool directory, a queue is a directory in that, and a message is a\n"
    "file: whatever you copy into the directory of a queue is a message. Programs see it as IBM MQ if they load\n"
    "the stand-in's libraries (bin/spoolmq/) while SPOOLMQ_DIR names the spool directory.\n"
    "\n"
    "Examples:\n"
    "  export SPOOLMQ_DIR=/tmp/spool\n"
    "  mqam queue create QM1 ORDERS\n"
    "  mqam queue put QM1 ORDERS --count 1000\n"
    "  mqam queue list\n"
    "  ls /tmp/spool/QM1/ORDERS\n";

constexpr const char* kExitCodes =
    "\n"
    "Exit codes: 0 done, 1 nothing was done, or a file could not be read: the message says what to do, 3 the queue or\n"
    "standard output could not be written.\n";

constexpr const char* kCreateExamples =
    "Examples:\n"
    "  mqam queue create QM1 ORDERS\n      a queue, and its queue manager if that does not exist yet\n"
    "  mqam queue create QM1 TEXTS --set file_format=MQSTR --set max_depth=5000\n"
    "      files copied into it are text; the 5001st message is refused\n"
    "\n"
    "The attributes are explained in QM1/qmgr.ini and QM1/ORDERS/.queue.ini and can be changed at any time;\n"
    "running programs see the change at their next call.\n";

constexpr const char* kPutExamples =
    "Examples:\n"
    "  mqam queue put QM1 ORDERS order1.xml order2.xml\n"
    "      each file is a message\n"
    "  mqam queue put QM1 ORDERS --lines orders.txt\n"
    "      each line is a message\n"
    "  printf hello | mqam queue put QM1 ORDERS\n"
    "      standard input is a message\n"
    "  mqam queue put QM1 ORDERS --count 50000 --sizes 1-102400 --binary 10 --record put.bin\n      generated orders of 1 byte to 100 KB, one in ten of them binary; put.bin receives what was put, in the\n"
    "      form of `mqam load --format length`\n"
    "  mqam queue put QM1 ORDERS --length put.bin\n      puts the same messages again\n";

constexpr const char* kQueueShowExamples =
    "Examples:\n"
    "  mqam queue show QM1\n"
    "      attributes and queues of the queue manager\n"
    "  mqam queue show QM1 ORDERS\n"
    "      attributes and first messages of the queue\n"
    "  mqam queue show QM1 ORDERS 20260131-235959-123456789.msg\n      the descriptor and the first bytes of one message\n"
    "  mqam queue show QM1 ORDERS 20260131-235959-123456789.msg --body > message.bin\n"
    "      its bytes\n";

constexpr const char* kDeleteExamples =
    "Examples:\n"
    "  mqam queue delete QM1 ORDERS\n"
    "      an empty queue\n"
    "  mqam queue delete QM1 ORDERS --force\n"
    "      with its messages\n"
    "  mqam queue delete QM1 --force\n"
    "      the queue manager with everything in it\n";

constexpr const char* kJsonHelp = "one JSON object on one line, for programs";

struct CreateOptions {
    std::string spool;
    std::string queueManager;
    std::string queue;
    std::vector<std::string> settings;
};

struct DeleteOptions {
    std::string spool;
    std::string queueManager;
    std::string queue;
    bool force = false;
};

int Refuse(const std::string& command, const std::string& error) {
    PrintMessage("mqam queue " + command + ": " + error + "\n");
    return kExitNotStarted;
}

/// Applies the --set options: to the queue when one is named, else to the queue manager.
template <typename Attributes>
spoolmq::Status ApplySettings(const std::vector<std::string>& settings, Attributes& attributes) {
    for (const std::string& setting : settings) {
        const std::size_t equals = setting.find('=');
        spoolmq::Status status = {spoolmq::StatusCode::kFailed, "takes NAME=VALUE"};
        if (equals != std::string::npos) {
            status = spoolmq::SetAttribute(setting.substr(0, equals), setting.substr(equals + 1), attributes);
        }
        if (!status.IsOk()) return {status.code, "--set " + setting + ": " + status.error};
    }
    return {};
}

int RunCreate(const CreateOptions& options) {
    spoolmq::QmgrAttributes qmgr;
    spoolmq::QueueAttributes queue;
    const bool isQueue = !options.queue.empty();
    spoolmq::Status status =
        isQueue ? ApplySettings(options.settings, queue) : ApplySettings(options.settings, qmgr);
    if (!status.IsOk()) return Refuse("create", status.error);
    status = spoolmq::CreateQueueManager(options.spool, options.queueManager, qmgr);
    if (status.IsOk())
        std::printf("queue manager %s created in %s\n", options.queueManager.c_str(), options.spool.c_str());
    if (isQueue && (status.IsOk() || status.code == spoolmq::StatusCode::kAlreadyExists)) {
        status = spoolmq::CreateQueue(options.spool, options.queueManager, options.queue, queue);
        if (status.IsOk())
            std::printf("queue %s created in %s/%s\n", options.queue.c_str(), options.spool.c_str(),
                        spoolmq::DirectoryOfObject(options.queueManager).c_str());
    }
    return status.IsOk() ? FinishAnswer("mqam queue create") : Refuse("create", status.error);
}

int RunDelete(const DeleteOptions& options) {
    const std::string qmgrPath = options.spool + '/' + spoolmq::DirectoryOfObject(options.queueManager);
    std::vector<std::string> queues = {options.queue};
    if (options.queue.empty()) queues = spoolmq::QueueNames(options.spool, options.queueManager);
    for (const std::string& queue : queues) {
        const std::int64_t depth = spoolmq::QueueDepth(qmgrPath, spoolmq::DirectoryOfObject(queue));
        if (depth > 0 && !options.force)
            return Refuse("delete", "queue " + queue + " contains " +
                                        FormatCountOf(static_cast<std::uint64_t>(depth), "message") +
                                        "; --force deletes them with it");
    }
    const spoolmq::Status status =
        options.queue.empty() ? spoolmq::DeleteQueueManager(options.spool, options.queueManager)
                              : spoolmq::DeleteQueue(options.spool, options.queueManager, options.queue);
    if (!status.IsOk()) return Refuse("delete", status.error);
    std::printf("%s deleted\n", options.queue.empty() ? options.queueManager.c_str() : options.queue.c_str());
    return FinishAnswer("mqam queue delete");
}

/// Checks a range such as 1-100k, and writes it in bytes.
std::string TransformSizes(std::string& text) {
    constexpr NumberRule kMessageBytes = {NumberUnit::kBytes, 1, kMessageBytesMax};
    const std::size_t dash = text.find('-');
    std::int64_t smallest = 0;
    std::int64_t largest = 0;
    Status read = dash == std::string::npos ? Status::Refused("'" + text + "' is not a range")
                                            : ReadNumber(text.substr(0, dash), kMessageBytes, smallest);
    if (read.IsOk()) read = ReadNumber(text.substr(dash + 1), kMessageBytes, largest);
    if (read.IsOk() && smallest > largest) read = Status::Refused("'" + text + "' ends before it begins");
    if (!read.IsOk()) return read.Error() + "; a range is MIN-MAX, for instance 1-100k";
    text = std::to_string(smallest) + "-" + std::to_string(largest);
    return "";
}

/// Adds the option that all of the subcommands have.
void AddSpool(CLI::App& command, std::string& spool) {
    command.add_option("--spool", spool, "the spool directory. Default: $SPOOLMQ_DIR")
        ->type_name("DIR")
        ->envname("SPOOLMQ_DIR")
        ->required();
}

void AddCreate(CLI::App& parent, int& exitCode) {
    CLI::App* command = parent.add_subcommand("create", "Create a queue manager, or a queue in it");
    const auto options = std::make_shared<CreateOptions>();
    AddSpool(*command, options->spool);
    command->add_option("QMGR", options->queueManager, "name of the queue manager")->required();
    command->add_option("QUEUE", options->queue, "name of the queue");
    command->add_option("--set", options->settings, "set an attribute of what is created; may be repeated")
        ->type_name("NAME=VALUE")
        ->expected(1)
        ->allow_extra_args(false)
        ->take_all();
    command->footer(std::string(kCreateExamples) + kExitCodes);
    command->callback([options, &exitCode] { exitCode = RunCreate(*options); });
}

void AddPut(CLI::App& parent, int& exitCode) {
    CLI::App* command =
        parent.add_subcommand("put", "Put messages: files, lines, standard input, or generated orders");
    const auto options = std::make_shared<QueuePutOptions>();
    AddSpool(*command, options->spool);
    command->add_option("QMGR", options->queueManager, "name of the queue manager")->required();
    command->add_option("QUEUE", options->queue, "name of the queue")->required();
    command->add_option("FILE", options->files, "files to put, each as one message; - is standard input");
    CLI::Option* lines = command->add_flag("--lines", options->lines, "each line is a message");
    command->add_flag("--length", options->framed, "each message follows its length, 4 bytes little-endian")
        ->excludes(lines);
    CLI::Option* count = command->add_option("--count", options->count, "put N generated sample orders")
                             ->type_name("N")
                             ->transform(NumberIn({NumberUnit::kNone, 0, 999999999}));
    command->add_option("--seed", options->seed, "the same number makes the same orders (1)")
        ->type_name("N")
        ->transform(NumberIn({}))
        ->needs(count);
    command->add_option("--sizes", options->sizes, "range of their sizes in bytes, both ends included")
        ->type_name("MIN-MAX")
        ->transform(CLI::Validator(TransformSizes, ""))
        ->needs(count);
    command
        ->add_option("--binary", options->binaryPercent, "percentage of messages that are random bytes (0)")
        ->type_name("PERCENT")
        ->transform(NumberIn({NumberUnit::kNone, 0, 100}))
        ->needs(count);
    command
        ->add_option("--record", options->recordPath,
                     "append what was put to this file, in the --length framing")
        ->type_name("FILE");
    command->add_option("--format", options->format, "format of the messages, for instance MQSTR for text")
        ->type_name("NAME")
        ->check([](const std::string& text) {
            return text.size() > 8 ? std::string("a format has at most 8 characters") : std::string();
        });
    command->add_option("--ccsid", options->ccsid, "character set of the messages (the queue manager's)")
        ->type_name("N")
        ->transform(NumberIn({NumberUnit::kNone, 1, 65535}));
    command->add_flag("-q,--quiet", options->quiet, "no progress and no summary");
    command->footer(std::string(kPutExamples) + kExitCodes);
    command->add_flag("--empty", options->allowsEmpty,
                      "put messages without bytes, too; an empty message ends the next load early");
    command->callback([options, count, &exitCode] {
        options->generates = count->count() > 0;
        exitCode = RunQueuePut(*options);
    });
}

void AddList(CLI::App& parent, int& exitCode) {
    CLI::App* command = parent.add_subcommand("list", "List queue managers and queues with their depths");
    const auto options = std::make_shared<QueueListOptions>();
    AddSpool(*command, options->spool);
    command->add_option("QMGR", options->queueManager, "only this queue manager");
    command->add_flag("--json", options->json, kJsonHelp);
    command->footer(kExitCodes + 1);
    command->callback([options, &exitCode] { exitCode = RunQueueList(*options); });
}

void AddShow(CLI::App& parent, int& exitCode) {
    CLI::App* command = parent.add_subcommand("show", "Show attributes and messages, or one message");
    const auto options = std::make_shared<QueueShowOptions>();
    AddSpool(*command, options->spool);
    command->add_option("QMGR", options->queueManager, "name of the queue manager")->required();
    command->add_option("QUEUE", options->queue, "name of the queue");
    command->add_option("MESSAGE", options->message, "file name of a message");
    CLI::Option* body = command->add_flag("--body", options->body, "write the message's bytes, nothing else");
    command->add_flag("--json", options->json, kJsonHelp)->excludes(body);
    command->add_option("--limit", options->limit, "messages to list (20)")
        ->type_name("N")
        ->transform(NumberIn({}));
    command->footer(std::string(kQueueShowExamples) + kExitCodes);
    command->callback([options, &exitCode] { exitCode = RunQueueShow(*options); });
}

void AddDelete(CLI::App& parent, int& exitCode) {
    CLI::App* command = parent.add_subcommand("delete", "Delete a queue, or a queue manager");
    const auto options = std::make_shared<DeleteOptions>();
    AddSpool(*command, options->spool);
    command->add_option("QMGR", options->queueManager, "name of the queue manager")->required();
    command->add_option("QUEUE", options->queue, "name of the queue");
    command->add_flag("--force", options->force, "even if it contains messages");
    command->footer(std::string(kDeleteExamples) + kExitCodes);
    command->callback([options, &exitCode] { exitCode = RunDelete(*options); });
}

}  // namespace

void AddQueueCommand(CLI::App& app, int& exitCode) {
    CLI::App* command =
        app.add_subcommand("queue", "Create, fill and show queues of the stand-in queue manager");
    command->require_subcommand(1);
    command->footer(kQueueExamples);
    AddCreate(*command, exitCode);
    AddPut(*command, exitCode);
    AddList(*command, exitCode);
    AddShow(*command, exitCode);
    AddDelete(*command, exitCode);
}

}  // namespace mqam
