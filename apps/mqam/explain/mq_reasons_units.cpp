// SPDX-License-Identifier: Apache-2.0

// These MQ reasons concern units of work, transaction managers and API exits.
#include "mqam/explain/mq_reason_tables.h"

namespace mqam {

namespace {

constexpr MqReason kUnitReasons[] = {
    {900, "MQRC_APPL_FIRST", kAnyVerb, Recovery::kPermanent,
     "an exit or an application returned a code of its own",
     "The codes 900 to 999 are not MQ's. An API exit or a channel exit made this one up.",
     "Ask whoever installed the exit."},
    {2123, "MQRC_OUTCOME_MIXED", "MBD", Recovery::kPermanent,
     "some resources committed and others backed out",
     "A transaction manager or a second resource takes part in the unit of work.",
     "An administrator must compare both sides. Run the load outside a transaction manager."},
    {2124, "MQRC_OUTCOME_PENDING", "MBD", Recovery::kTransient,
     "the outcome of the unit of work is not known yet",
     "A transaction manager or a second resource takes part in the unit of work, and has not answered.",
     "Enter `dspmqtrn -m QMGR`. When the transaction has been resolved, start the load again."},
    {2128, "MQRC_UOW_IN_PROGRESS", "M", Recovery::kPermanent, "a unit of work is already in progress",
     "A transaction manager started a unit of work on the connection.",
     "Run the load outside a transaction manager."},
    {2163, "MQRC_DUPLICATE_RECOV_COORD", "C", Recovery::kPermanent,
     "a recovery coordinator of this name exists already", "Two transaction managers use the same name.",
     "Run the load outside a transaction manager."},
    {2182, "MQRC_API_EXIT_NOT_FOUND", kAnyVerb, Recovery::kPermanent, "an API exit was not found",
     "The function that ApiExitLocal or ApiExitCommon names does not exist.",
     "Correct the stanza in qm.ini or mqs.ini, then restart the queue manager."},
    {2183, "MQRC_API_EXIT_LOAD_ERROR", kAnyVerb, Recovery::kPermanent, "an API exit could not be loaded",
     "The library that ApiExitLocal or ApiExitCommon names is missing, may not be read, or has the wrong "
     "number of bits.",
     "Correct the stanza in qm.ini or mqs.ini, then restart the queue manager."},
    {2232, "MQRC_UNIT_OF_WORK_NOT_STARTED", "GM", Recovery::kPermanent, "no unit of work was started",
     "An external coordinator owns the unit of work and has not begun one.",
     "Run the load outside a transaction manager."},
    {2255, "MQRC_UOW_NOT_AVAILABLE", "G", Recovery::kPermanent, "a unit of work cannot be started here",
     "An external coordinator owns the units of work of this process.",
     "Run the load outside a transaction manager."},
    {2297, "MQRC_UOW_CANCELED", "M", Recovery::kTransient, "the unit of work was cancelled",
     "The queue manager or its coordinator cancelled it; the messages are on the queue again.",
     "Start the load again."},
    {2344, "MQRC_CONN_TAG_NOT_RELEASED", "CD", Recovery::kWarning, "the connection tag is not released yet",
     "Another program still uses the connection tag.", "Nothing."},
    {2351, "MQRC_GLOBAL_UOW_CONFLICT", "G", Recovery::kPermanent, "global units of work conflict",
     "Two coordinators use the connection.", "Run the load outside a transaction manager."},
    {2352, "MQRC_LOCAL_UOW_CONFLICT", "G", Recovery::kPermanent,
     "a local unit of work conflicts with a global one", "A coordinator uses the connection of the load.",
     "Run the load outside a transaction manager."},
    {2353, "MQRC_HANDLE_IN_USE_FOR_UOW", "G", Recovery::kPermanent,
     "the handle is in use for another unit of work", "A coordinator uses the connection of the load.",
     "Run the load outside a transaction manager."},
    {2354, "MQRC_UOW_ENLISTMENT_ERROR", "G", Recovery::kTransient,
     "the global unit of work could not be joined", "The coordinator does not answer.",
     "Read AMQERR01.LOG of the queue manager, then start the load again. Run the load outside a "
     "transaction manager."},
    {2355, "MQRC_UOW_MIX_NOT_SUPPORTED", "G", Recovery::kPermanent,
     "units of work are mixed in a way that is not supported",
     "A coordinator uses the connection of the load.", "Run the load outside a transaction manager."},
    {2374, "MQRC_API_EXIT_ERROR", kAnyVerb, Recovery::kPermanent, "an API exit failed",
     "An API exit of the queue manager or the client returned an error.",
     "Ask whoever installed the exit. AMQERR01.LOG names it."},
    {2375, "MQRC_API_EXIT_INIT_ERROR", "CD", Recovery::kPermanent, "an API exit could not be initialized",
     "An API exit of the queue manager or the client returned an error when it was started.",
     "Ask whoever installed the exit. AMQERR01.LOG names it."},
    {2376, "MQRC_API_EXIT_TERM_ERROR", "CD", Recovery::kPermanent, "an API exit could not be ended",
     "An API exit of the queue manager or the client returned an error when it was ended.",
     "Ask whoever installed the exit. AMQERR01.LOG names it."},
    {2377, "MQRC_EXIT_REASON_ERROR", kAnyVerb, Recovery::kPermanent, "an exit returned an invalid reason",
     "An exit returned a code that MQ does not allow.",
     "Ask whoever installed the exit. AMQERR01.LOG names it."},
    {2378, "MQRC_RESERVED_VALUE_ERROR", kAnyVerb, Recovery::kPermanent, "a reserved value is not valid",
     "An exit changed a reserved field.", "Ask whoever installed the exit."},
    {2408, "MQRC_UOW_COMMITTED", "M", Recovery::kWarning, "the unit of work was committed",
     "A coordinator committed the unit of work earlier.", "Nothing."},
};

}  // namespace

std::span<const MqReason> UnitReasons() {
    return kUnitReasons;
}

}  // namespace mqam
