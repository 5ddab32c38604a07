// SPDX-License-Identifier: Apache-2.0

// These MQ reasons come only from a queue manager on z/OS.
#include "mqam/explain/mq_reason_tables.h"

namespace mqam {

namespace {

constexpr MqReason kZosReasons[] = {
    {2062, "MQRC_SECOND_MARK_NOT_ALLOWED", "G", Recovery::kPermanent,
     "a second message is marked to skip back-out", "An exit changed the call.",
     "Ask whoever installed the exit."},
    {2069, "MQRC_SIGNAL_OUTSTANDING", "GL", Recovery::kPermanent, "a signal is outstanding on this handle",
     "An exit changed the call; the module uses no signals.", "Ask whoever installed the exit."},
    {2070, "MQRC_SIGNAL_REQUEST_ACCEPTED", "G", Recovery::kPermanent, "the signal request was accepted",
     "An exit changed the call; the module uses no signals.", "Ask whoever installed the exit."},
    {2099, "MQRC_SIGNAL1_ERROR", "G", Recovery::kPermanent, "the signal field is not valid",
     "An exit changed the call; the module uses no signals.", "Ask whoever installed the exit."},
    {2127, "MQRC_ADAPTER_STORAGE_SHORTAGE", kAnyVerb, Recovery::kTransient, "the adapter has no storage left",
     "The address space is too small.", "Raise its region size, then start the load again."},
    {2129, "MQRC_ADAPTER_CONN_LOAD_ERROR", "C", Recovery::kPermanent,
     "the connection adapter could not be loaded",
     "The library of the adapter is not in the load library list.", "Correct STEPLIB of the job."},
    {2130, "MQRC_ADAPTER_SERV_LOAD_ERROR", kAnyVerb, Recovery::kPermanent,
     "the service adapter could not be loaded", "The library of the adapter is not in the load library list.",
     "Correct STEPLIB of the job."},
    {2131, "MQRC_ADAPTER_DEFS_ERROR", "CD", Recovery::kPermanent, "the subsystem definition is not valid",
     "CSQBDEFV does not contain what MQ expects.", "Correct CSQBDEFV, or STEPLIB of the job."},
    {2132, "MQRC_ADAPTER_DEFS_LOAD_ERROR", "C", Recovery::kPermanent,
     "the subsystem definition could not be loaded", "CSQBDEFV is not in the load library list.",
     "Correct STEPLIB of the job."},
    {2133, "MQRC_ADAPTER_CONV_LOAD_ERROR", "G", Recovery::kPermanent,
     "the conversion service could not be loaded",
     "The library of the conversion service is not in the load library list.",
     "Load without `--convert`, or correct STEPLIB of the job."},
    {2138, "MQRC_ADAPTER_DISC_LOAD_ERROR", "CD", Recovery::kPermanent,
     "the disconnection adapter could not be loaded",
     "The library of the adapter is not in the load library list.", "Correct STEPLIB of the job."},
    {2140, "MQRC_CICS_WAIT_FAILED", "CG", Recovery::kTransient, "CICS ended the wait",
     "The CICS transaction was cancelled.", "Start the load again."},
    {2157, "MQRC_ASID_MISMATCH", kAnyVerb, Recovery::kPermanent,
     "the call comes from the wrong address space",
     "The host calls the module from another address space than the one that opened it.",
     "Make all calls in one process."},
    {2160, "MQRC_CONN_ID_IN_USE", "C", Recovery::kTransient, "the connection identifier is in use",
     "A connection of the same name is not ended yet.", "Start the load again."},
    {2193, "MQRC_PAGESET_ERROR", "OGL", Recovery::kPermanent, "a page set cannot be used",
     "A page set of the queue manager is damaged or full.", "Read the job log of the queue manager."},
    {2204, "MQRC_ADAPTER_NOT_AVAILABLE", kAnyVerb, Recovery::kTransient, "the adapter is not available",
     "The adapter of the region is not active.", "Start the adapter, then start the load again."},
    {2271, "MQRC_CONN_TAG_IN_USE", "C", Recovery::kTransient, "the connection tag is in use",
     "Another program uses the connection tag.", "Wait until the other program has ended."},
    {2274, "MQRC_OPTION_ENVIRONMENT_ERROR", "G", Recovery::kPermanent, "the option is not allowed here",
     "The call is made inside a stored procedure.", "Run the load in a process of its own."},
    {2342, "MQRC_DB2_NOT_AVAILABLE", "OGL", Recovery::kTransient, "Db2 is not available",
     "The queue-sharing group needs Db2, which does not run.", "Start Db2, then start the load again."},
    {2343, "MQRC_OBJECT_NOT_UNIQUE", "O", Recovery::kPermanent, "the object is not unique",
     "A queue of this name exists both in the queue manager and in the queue-sharing group.",
     "Delete one of the two."},
    {2345, "MQRC_CF_NOT_AVAILABLE", "OGL", Recovery::kTransient, "the coupling facility is not available",
     "The coupling facility of the queue-sharing group does not answer.",
     "Read the job log of the queue manager, then start the load again."},
    {2346, "MQRC_CF_STRUC_IN_USE", "OGMBL", Recovery::kTransient, "the coupling facility structure is in use",
     "The structure is being recovered or is in use.", "Start the load again."},
    {2347, "MQRC_CF_STRUC_LIST_HDR_IN_USE", "OGL", Recovery::kTransient,
     "a list in the coupling facility structure is in use", "The structure is being recovered or is in use.",
     "Start the load again."},
    {2348, "MQRC_CF_STRUC_AUTH_FAILED", "OG", Recovery::kPermanent,
     "access to the coupling facility structure is not authorized",
     "The queue manager lacks the authority for the structure.",
     "Grant it in the security manager of the system."},
    {2349, "MQRC_CF_STRUC_ERROR", "OGL", Recovery::kPermanent, "the coupling facility structure is in error",
     "The name of the structure is wrong, or it was not defined.", "Check `DISPLAY CFSTRUCT(*) ALL`."},
    {2350, "MQRC_CONN_TAG_NOT_USABLE", "C", Recovery::kPermanent, "the connection tag cannot be used",
     "The tag contains characters that are not allowed, or the queue manager is not part of a "
     "queue-sharing group.",
     "Ask whoever set the tag; the module sets none."},
    {2360, "MQRC_OBJECT_LEVEL_INCOMPATIBLE", "OG", Recovery::kPermanent,
     "the object was made by a newer release", "A queue manager of a newer release changed the object.",
     "Use a queue manager of that release."},
    {2365, "MQRC_SEGMENTS_NOT_SUPPORTED", "G", Recovery::kPermanent,
     "segments are not supported on this queue", "The queue is indexed by group.",
     "Use a queue with `INDXTYPE(NONE)`."},
    {2366, "MQRC_WRONG_CF_LEVEL", "OG", Recovery::kPermanent,
     "the level of the coupling facility structure is too low",
     "The structure has a level that the queue does not support.",
     "Raise it: `ALTER CFSTRUCT(NAME) CFLEVEL(LEVEL)`."},
    {2373, "MQRC_CF_STRUC_FAILED", "COGMBL", Recovery::kPermanent, "the coupling facility structure failed",
     "The structure was lost.", "Recover it: `RECOVER CFSTRUCT(NAME)`."},
    {2394, "MQRC_Q_INDEX_TYPE_ERROR", "G", Recovery::kPermanent,
     "the index type of the queue is not suitable",
     "The queue is indexed in a way that does not fit the call.", "Use a queue with `INDXTYPE(NONE)`."},
};

}  // namespace

std::span<const MqReason> ZosReasons() {
    return kZosReasons;
}

}  // namespace mqam
