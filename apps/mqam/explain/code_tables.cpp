// SPDX-License-Identifier: Apache-2.0
#include "mqam/explain/code_tables.h"

#include <algorithm>

namespace mqam {

namespace {

constexpr ReturnCodeRow kReturnCodes[] = {
    {pmrcOK, "pmrcOK", "the request was carried out", "Every request can return it.", "Nothing.",
     Recovery::kWarning},
    {pmrcEOF, "pmrcEOF", "the end of the input: Read returns no record",
     "The queue was empty for the read wait interval. A duplicate, an empty message, or an MQGET that fails "
     "without data ends the input in the same way.",
     "Nothing. A load is done only after a second attempt has found nothing new (H6, H20, H23); `mqam load` "
     "with restart information makes that attempt.",
     Recovery::kWarning},
    {pmrcBadVersion, "pmrcBadVersion", "the module has another version of the interface",
     "Init was called with interface versions other than 1001 and 2001. There is no error text.",
     "Use a host and a module of the same release.", Recovery::kPermanent},
    {pmrcNotSupported, "pmrcNotSupported", "the module does not support the request",
     "The option number is unknown, or the request is Write or GetAttribute.",
     "Report it to the author of the host.", Recovery::kPermanent},
    {pmrcBadAttrName, "pmrcBadAttrName", "the module does not know an attribute of this name",
     "PutAttribute was called with a name that is not among the module's attributes.",
     "Correct the name. The documentation of the host lists the attributes that it sets.",
     Recovery::kPermanent},
    {pmrcFailure, "pmrcFailure", "the request failed",
     "The error text of the request block contains the message, and for a failed system or MQ call its "
     "reason.",
     "Look up the message: `mqam explain MQA0143`, or the reason: `mqam explain 2009`.", Recovery::kByReason},
    {pmrcBadAttrValue, "pmrcBadAttrValue", "the module refuses this value of the attribute",
     "PutAttribute was called with a value that the attribute does not accept.",
     "Correct the value. For the time-out give a number of seconds.", Recovery::kPermanent},
    {pmrcTimeout, "pmrcTimeout", "the read time-out expired",
     "A Read waited longer for messages than the attribute TIMEOUT_SECONDS allows, which someone gave with "
     "`--attribute`. `mqam` measures `--timeout` itself.",
     "Run the same command again when there are messages, or give a longer time-out. The host must not "
     "call Read again in the same process (H12).",
     Recovery::kTransient},
};

constexpr ExitCodeRow kExitCodes[] = {
    {kExitDone, "done: the input was read to its end and every record is in the target",
     "The command succeeded. Of a load with restart information this is G5: two attempts in a row found the "
     "queue empty.",
     "Nothing.", true},
    {kExitNotStarted,
     "nothing was started or resumed: an option is wrong, or files of an earlier load prevent it",
     "An option, its value or a name is wrong; or the target, the checkpoint file or the restart information "
     "belong to another load, are damaged, or are in use by another command.",
     "Read the message: it names the option or the file and says what to do. Nothing was changed.", true},
    {kExitModuleFailed,
     "the module failed or refused a request; the records that the summary names are in the target",
     "The queue or the queue manager does not exist, an authority is missing, or a "
     "message is too long. A load without restart information ends with this code after every failure of the "
     "module.",
     "Correct what the lines after \"next\" say, then run the same command again. `mqam explain CODE` "
     "explains the message and the reason.",
     true},
    {kExitTargetFailed,
     "the target, or another file of a load with restart information, could not be opened or written",
     "A disk is full, a permission is missing, a database is locked, or a directory does not exist. "
     "Other subcommands end with this code if they cannot write their output.",
     "Read the message, remove the cause, and run the same command again. With restart information nothing "
     "is lost, and `--retry-for SECONDS` tries again by itself.",
     true},
    {kExitModuleMissing, "the module could not be loaded",
     "libmqamod.so or mqamod.dll is not next to `mqam`, or one of the libraries that it needs is missing.",
     "Name it: `--module PATH`.", true},
    {kExitInterrupted,
     "stopped on request (Ctrl-C, SIGTERM, SIGHUP); every record read is in the target, or kept for the restart",
     "Someone pressed Ctrl-C, ended the process in an orderly way, closed its terminal or console, logged off, or shut "
     "the system down.",
     "With restart information run the same command again: it resumes the load.", true},
    {kExitTimeout,
     "the time-out (--timeout) expired; every record read is in the target, or kept for the restart",
     "A Read waited longer for messages than `--timeout` allows.",
     "With restart information run the same command again: it resumes the load. Or give a longer "
     "`--timeout`.",
     true},
    {kExitStoppedImmediately,
     "stopped immediately (a second Ctrl-C); the target may lack the last records read",
     "Someone pressed Ctrl-C twice, or sent SIGTERM twice.",
     "With restart information run the same command again: nothing is lost. Without it the records read "
     "since the target was last written are lost.",
     true},
    {kExitEndedEarly,
     "the input ended before the read wait interval had passed; every record read is in the target, but the "
     "queue may hold more",
     "An empty message or a duplicate ended the input, or MQGETs fail at once, as on a queue that inhibits "
     "get.",
     "Look at the queue: `DISPLAY QLOCAL(QUEUE) GET CURDEPTH` in runmqsc. Then run the same command again.",
     true},
    {kExitRestart,
     "a failure that may pass by itself interrupted a load with restart information: run the same command "
     "again",
     "The queue manager ended, the network failed, another program had the queue open, a file of the module "
     "could not be written, or the worker process was killed. Nothing is lost.",
     "Run the same command again: it resumes the load. With `--retry-for SECONDS` it does so by itself.",
     true},
    {kExitDamaged, "mqam checkpoint: the file is incomplete, damaged or cannot be repaired",
     "`mqam checkpoint verify` found a record that is not complete, or a length that is wrong; `mqam "
     "checkpoint repair` found nothing that it can repair safely; or `mqam checkpoint export` could write only a part.",
     "`mqam checkpoint verify FILE` shows what is intact and what is not; `mqam checkpoint export FILE --to OUT` "
     "saves the records that can be read.",
     false},
    {kExitNothingToDo,
     "nothing to do: this load was already complete, so nothing was loaded now; the queue may hold more",
     "The same command was run after its load was complete, without `--append`. Messages that have arrived since stay on "
     "the queue.",
     "For a load that is repeated give `--append`, from the first run on. To load from scratch, move the target away.",
     true},
};

}  // namespace

std::span<const ReturnCodeRow> AllReturnCodes() {
    return kReturnCodes;
}

std::span<const ExitCodeRow> AllExitCodes() {
    return kExitCodes;
}

const ReturnCodeRow* FindReturnCode(ReturnCode code) {
    const auto* const row = std::ranges::find(kReturnCodes, code, &ReturnCodeRow::code);
    return row == std::end(kReturnCodes) ? nullptr : row;
}

}  // namespace mqam
