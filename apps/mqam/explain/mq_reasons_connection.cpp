// SPDX-License-Identifier: Apache-2.0

// These MQ reasons concern the connection to the queue manager: names, addresses, channels, libraries,
// authority and the end of a queue manager.
#include "mqam/explain/mq_reason_tables.h"

namespace mqam {

namespace {

constexpr MqReason kConnectionReasons[] = {
    {0, "MQRC_NONE", "", Recovery::kWarning, "there is no reason to report", "The call succeeded.",
     "Nothing."},
    {2002, "MQRC_ALREADY_CONNECTED", "C", Recovery::kPermanent,
     "the thread is already connected to this queue manager",
     "The host, or a library in it, holds an MQ connection of its own on the thread that calls the "
     "module, or an Open is repeated after one that connected and then failed.",
     "Use a process, or at least a thread, of its own for the load. After a failed Open call Shut before "
     "the next Open; `mqam` starts a new process for each attempt."},
    {2005, "MQRC_BUFFER_LENGTH_ERROR", "CG", Recovery::kPermanent, "the buffer length is not valid",
     "At MQCONNX the channel's maximum message length is smaller than the calls themselves need; at "
     "MQGET the record buffer has a length that MQ does not accept.",
     "Raise the channel's limit: `ALTER CHANNEL(CHANNEL) CHLTYPE(SVRCONN) MAXMSGL(4194304)`."},
    {2009, "MQRC_CONNECTION_BROKEN", kAnyVerb, Recovery::kTransient,
     "the connection to the queue manager was lost",
     "The queue manager ended, the network failed, or someone stopped the channel or the connection. "
     "What was not committed is back on the queue. The call that failed may have been carried out.",
     "Check that the queue manager runs (`dspmq`) and that the network to it works. Start the load "
     "again. If it recurs, the reason is in AMQERR01.LOG of the queue manager."},
    {2012, "MQRC_ENVIRONMENT_ERROR", "COGMB", Recovery::kPermanent,
     "the call is not valid in this environment",
     "The MQ client is incomplete or mixed from several versions, a client library was asked for a local "
     "queue manager, or an external coordinator owns the unit of work.",
     "Check the installation with `dspmqver -i`, and that library and queue manager belong together "
     "(`setmqenv -m QMGR`). Run the load outside a transaction manager."},
    {2018, "MQRC_HCONN_ERROR", kAnyVerb, Recovery::kTransient, "the connection handle is not valid",
     "The connection had ended before this call, or the host calls the module from another thread than "
     "the one that opened it.",
     "Read the failure before this one. A host must make all calls from one thread; `mqam` does."},
    {2025, "MQRC_MAX_CONNS_LIMIT_REACHED", "C", Recovery::kTransient,
     "the queue manager has no connection left",
     "Too many programs are connected, or programs connect again and again without disconnecting. The "
     "limit is MaxChannels, MAXINST or MAXINSTC of the channel, or a limit of the queue manager.",
     "Wait for other programs to end. Find them with `DISPLAY CONN(*) TYPE(CONN) APPLTAG`, and raise the "
     "limit if all of them are needed."},
    {2035, "MQRC_NOT_AUTHORIZED", "COL", Recovery::kPermanent, "the user is not authorized",
     "At MQCONNX: the password is missing or wrong, a channel authentication rule blocks the client, or "
     "the connect authority is missing. At MQOPEN: the user lacks get authority for the queue. The "
     "client does not learn which.",
     "Read AMQERR01.LOG of the queue manager: AMQ5534, AMQ5540 to AMQ5542 a password, AMQ9776 or AMQ9777 "
     "a channel rule, AMQ8077 a missing authority. Grant authorities with `setmqaut -m QMGR -t qmgr -g "
     "GROUP +connect` and `setmqaut -m QMGR -n QUEUE -t queue -g GROUP +get +inq`. The module sends no "
     "password: supply one with IBM's mqccred exit in a channel table (MQCCDTURL), without `--channel` "
     "and `--server`."},
    {2058, "MQRC_Q_MGR_NAME_ERROR", "COGLD", Recovery::kPermanent, "no queue manager of this name was found",
     "The name is wrong (upper and lower case differ), the queue manager belongs to another installation "
     "or machine, no entry of the channel table has this name, or another queue manager answered at the "
     "address. With the stand-in the directory is wrong.",
     "Check `--qmgr`; `dspmq` lists the local ones. For a queue manager on another machine give "
     "`--channel` and `--server`, or set MQSERVER: otherwise a local one is looked for. With the "
     "stand-in check SPOOLMQ_DIR."},
    {2059, "MQRC_Q_MGR_NOT_AVAILABLE", "COGMLD", Recovery::kTransient, "the queue manager cannot be reached",
     "It does not run, its listener does not run, the channel could not be started, or the channel table "
     "was not found.",
     "Start it: `strmqm QMGR`, and `START LISTENER(LISTENER)` for clients. Check `--server` and "
     "`--channel`. AMQERR01.LOG of the client (/var/mqm/errors) often names the cause, for example "
     "AMQ9202 or AMQ9518."},
    {2063, "MQRC_SECURITY_ERROR", "COL", Recovery::kPermanent, "a security component failed",
     "The authorisation service, or an exit that checks the user, returned an error. This is not the "
     "same as a missing authority (2035).",
     "Read AMQERR01.LOG of the queue manager, correct the component, and then enter `REFRESH SECURITY "
     "TYPE(AUTHSERV)`."},
    {2071, "MQRC_STORAGE_NOT_AVAILABLE", kAnyVerb, Recovery::kTransient, "MQ has no memory left",
     "The machine or the process has too little memory, or its limit (ulimit, a container) is low.",
     "Free memory or raise the limit. A smaller `--max-record` needs less."},
    {2102, "MQRC_RESOURCE_PROBLEM", kAnyVerb, Recovery::kTransient,
     "the queue manager lacks a system resource",
     "The log or its disk is full, or too few semaphores, shared memory segments, processes or files are "
     "allowed.",
     "Read AMQERR01.LOG. A full log (AMQ7463) needs space or an end of long units of work: `DISPLAY "
     "CONN(*) TYPE(CONN) WHERE(UOWSTATE NE NONE) UOWSTDA UOWSTTI APPLTAG`. On Linux check the limits "
     "with `mqconfig`."},
    {2103, "MQRC_ANOTHER_Q_MGR_CONNECTED", "C", Recovery::kPermanent,
     "the thread is already connected to another queue manager",
     "The host, or a library in it, holds an MQ connection on the thread that calls the module.",
     "Use a process of its own for the load."},
    {2109, "MQRC_SUPPRESSED_BY_EXIT", kAnyVerb, Recovery::kPermanent, "an exit suppressed the call",
     "A channel exit or an API exit of the queue manager or the client forbids the call.",
     "Ask whoever installed the exit. The queue manager's error log names it."},
    {2137, "MQRC_OPEN_FAILED", "C", Recovery::kPermanent, "a queue or another object could not be opened",
     "MQ could not open an object that it needs for the call.", "Read AMQERR01.LOG of the queue manager."},
    {2139, "MQRC_CNO_ERROR", "C", Recovery::kPermanent, "the MQ library refuses the connect options",
     "The installed MQ library is older than the options that the module uses, or it is not the library "
     "that it seems to be.",
     "Install a current MQ client. Check which library is used: `--trace 1 FILE` names it."},
    {2161, "MQRC_Q_MGR_QUIESCING", "COG", Recovery::kTransient, "the queue manager is shutting down",
     "Someone entered `endmqm`. The queue manager waits for its programs to disconnect.",
     "Start the load again when the queue manager runs again. With `--retry-for` the load waits for it."},
    {2162, "MQRC_Q_MGR_STOPPING", kAnyVerb, Recovery::kTransient, "the queue manager is stopping",
     "Someone entered `endmqm -i`. Calls in progress are ended. The call that failed may have been "
     "carried out.",
     "Start the load again when the queue manager runs again. What was not committed is back on the "
     "queue."},
    {2187, "MQRC_CICS_BRIDGE_RESTRICTION", "C", Recovery::kPermanent,
     "the call is not allowed in a CICS bridge", "The load runs inside a CICS bridge transaction (z/OS).",
     "Run the load in a process of its own."},
    {2195, "MQRC_UNEXPECTED_ERROR", kAnyVerb, Recovery::kTransient, "MQ encountered an unexpected error",
     "There is an error inside MQ or its installation, or a file of MQ is damaged or not readable. MQ "
     "writes a report (AMQ*.FDC). With the stand-in its directory cannot be written.",
     "Read AMQERR01.LOG and the newest AMQ*.FDC in /var/mqm/errors. Start the load again; if the error "
     "recurs, report it to IBM. With the stand-in read the line that begins with \"spoolmq:\"."},
    {2202, "MQRC_CONNECTION_QUIESCING", "COG", Recovery::kTransient, "the connection is shutting down",
     "The queue manager or the channel was asked to end (`endmqm`, `STOP CHANNEL`).",
     "Start the load again when the queue manager and the channel run again."},
    {2203, "MQRC_CONNECTION_STOPPING", kAnyVerb, Recovery::kTransient, "the connection is stopping",
     "The queue manager or the channel is being ended at once. The call that failed may have been "
     "carried out.",
     "Start the load again when the queue manager and the channel run again. What was not committed is "
     "back on the queue."},
    {2208, "MQRC_FILE_SYSTEM_ERROR", kAnyVerb, Recovery::kPermanent, "the file system returned an error",
     "MQ could not use a file of the queue.",
     "Read AMQERR01.LOG of the queue manager, and check the disk and the permissions of its data "
     "directory."},
    {2217, "MQRC_CONNECTION_NOT_AUTHORIZED", kAnyVerb, Recovery::kPermanent, "the user may not connect",
     "The user lacks the authority to connect to the queue manager (z/OS).",
     "Grant it in the security manager of the system, for example a RACF profile QMGR.BATCH in class "
     "MQCONN."},
    {2219, "MQRC_CALL_IN_PROGRESS", kAnyVerb, Recovery::kPermanent,
     "another MQ call is in progress on this connection",
     "The host calls the module from two threads at once, or from inside an exit.",
     "Make one call at a time, all of them from one thread."},
    {2223, "MQRC_Q_MGR_NOT_ACTIVE", "C", Recovery::kTransient, "the queue manager is not active",
     "The queue manager does not run.", "Start it: `strmqm QMGR`."},
    {2273, "MQRC_CONNECTION_ERROR", "C", Recovery::kTransient, "the connection could not be made",
     "MQ failed while it was connecting, for a reason that no other code describes.",
     "Read AMQERR01.LOG on both sides. Start the load again."},
    {2277, "MQRC_CD_ERROR", "C", Recovery::kPermanent, "the channel definition is not valid",
     "The channel name is blank or too long, or the server name has a form that MQ does not accept. An "
     "old MQ client may also refuse the version of the definition.",
     "Check `--channel` and `--server`: `--server` is `HOST(PORT)`, or several of them separated by "
     "commas."},
    {2278, "MQRC_CLIENT_CONN_ERROR", "C", Recovery::kPermanent, "the channel definition cannot be used",
     "The channel definition was passed to MQ in two ways, or in memory that MQ cannot read.",
     "Check `--channel` and `--server`. If both are right, this is an error in the module: report it."},
    {2279, "MQRC_CHANNEL_STOPPED_BY_USER", kAnyVerb, Recovery::kTransient,
     "the channel was stopped by an operator", "Someone entered `STOP CHANNEL`.",
     "Enter `START CHANNEL(CHANNEL)`, then start the load again."},
    {2291, "MQRC_USER_ID_NOT_AVAILABLE", "C", Recovery::kPermanent, "the user identifier cannot be found",
     "The operating system does not know the user that the load runs as, for example in a container.",
     "Run the load as a user that the system knows (`getent passwd USER`)."},
    {2298, "MQRC_FUNCTION_NOT_SUPPORTED", kAnyVerb, Recovery::kPermanent, "MQ does not support the call here",
     "The MQ library, or the queue manager, is too old or lacks the function.",
     "Check the installation with `dspmqver` and install a current MQ client."},
    {2391, "MQRC_SSL_ALREADY_INITIALIZED", "C", Recovery::kWarning,
     "TLS is already initialized in this process",
     "The process has made a TLS connection before. Its TLS settings stay in force.",
     "Nothing, unless the load needs other TLS settings: use a process of its own then."},
    {2406, "MQRC_CLIENT_EXIT_LOAD_ERROR", "C", Recovery::kPermanent, "a channel exit could not be loaded",
     "The exit that the channel names is not in the exit directory, has the wrong number of bits, or may "
     "not be read.",
     "Copy it to the directory in ClientExitPath (ExitsDefaultPath64) of mqclient.ini, and check its "
     "permissions."},
    {2407, "MQRC_CLIENT_EXIT_ERROR", "C", Recovery::kPermanent, "a channel exit failed",
     "The exit returned an error or ended the channel.",
     "Ask whoever installed the exit. Its own trace and AMQERR01.LOG of the client say more."},
    {2423, "MQRC_CLIENT_CHANNEL_CONFLICT", "C", Recovery::kPermanent,
     "the channel settings contradict the connect options",
     "The channel table or mqclient.ini asks for something that this connection cannot do.",
     "Correct the entry in the channel table, or the stanza in mqclient.ini."},
    {2495, "MQRC_MODULE_NOT_FOUND", "C", Recovery::kPermanent, "the MQ library could not be loaded",
     "No MQ client is installed, it is not in the library path, or the environment variable "
     "MQAMOD_MQ_LIBRARY names a wrong file.",
     "Install the MQ client, add it to the library path, or name the library in MQAMOD_MQ_LIBRARY. With "
     "`--trace 1 FILE` the trace lists what was tried and the error of each attempt."},
    {2496, "MQRC_MODULE_INVALID", "C", Recovery::kPermanent, "a library is not a valid MQ module",
     "The library has the wrong number of bits, or its installation is incomplete.",
     "Install the 64-bit MQ client completely."},
    {2497, "MQRC_MODULE_ENTRY_NOT_FOUND", "C", Recovery::kPermanent, "the MQ library lacks a function",
     "The library that was found is not an MQ library, or it is damaged.",
     "Check the library path and MQAMOD_MQ_LIBRARY. With `--trace 1 FILE` the trace names the library "
     "and the function."},
    {2537, "MQRC_CHANNEL_NOT_AVAILABLE", "C", Recovery::kTransient, "the channel is not available",
     "The channel is stopped, or all of its instances are in use (MAXINST, MAXINSTC, MaxChannels).",
     "Enter `DISPLAY CHSTATUS(CHANNEL)`, then `START CHANNEL(CHANNEL)`, or raise the limit."},
    {2538, "MQRC_HOST_NOT_AVAILABLE", "C", Recovery::kTransient, "nothing answers at the host and port",
     "The host name or the port is wrong, the listener does not run, or a firewall is in between.",
     "Check `--server`, which is `HOST(PORT)`. On the server enter `DISPLAY LSSTATUS(*)` and `START "
     "LISTENER(LISTENER)`. Try the port from here, for example with `nc -vz HOST PORT`."},
    {2539, "MQRC_CHANNEL_CONFIG_ERROR", "C", Recovery::kPermanent, "the two ends of the channel do not agree",
     "The channel definitions differ, qm.ini or mqclient.ini contains an error, or the server does not "
     "have the client's code page.",
     "Read AMQERR01.LOG on both sides. For a code page set MQCCSID, for example `MQCCSID=1208`."},
    {2540, "MQRC_UNKNOWN_CHANNEL_NAME", "C", Recovery::kPermanent,
     "the server does not know a channel of this name", "There is no server-connection channel of this name.",
     "Check `--channel` (upper and lower case differ). On the server: `DISPLAY CHANNEL(*) "
     "CHLTYPE(SVRCONN)`."},
    {2543, "MQRC_STANDBY_Q_MGR", "C", Recovery::kTransient,
     "this is the standby instance of the queue manager",
     "The active instance runs elsewhere, or is just moving.",
     "Name all addresses: `--server 'HOST1(1414),HOST2(1414)'`. Start the load again."},
    {2544, "MQRC_RECONNECTING", kAnyVerb, Recovery::kWarning, "the client is reconnecting",
     "Automatic reconnection is on, and the connection was lost.",
     "Wait. A load needs no automatic reconnection: `DefRecon=DISABLED` in mqclient.ini."},
    {2545, "MQRC_RECONNECTED", kAnyVerb, Recovery::kWarning, "the client has reconnected",
     "Automatic reconnection is on, and the connection was made again.",
     "Nothing. What was not committed is back on the queue."},
    {2546, "MQRC_RECONNECT_QMID_MISMATCH", kAnyVerb, Recovery::kPermanent,
     "MQ reconnected to another queue manager",
     "The client reconnected, but to a queue manager with another identity.",
     "Switch automatic reconnection off: `DefRecon=DISABLED` in the CHANNELS stanza of mqclient.ini."},
    {2547, "MQRC_RECONNECT_INCOMPATIBLE", kAnyVerb, Recovery::kPermanent,
     "an option cannot be used on a reconnectable connection",
     "Automatic reconnection is on in mqclient.ini or in the channel table.",
     "Switch it off: `DefRecon=DISABLED` in the CHANNELS stanza of mqclient.ini."},
    {2548, "MQRC_RECONNECT_FAILED", kAnyVerb, Recovery::kTransient, "the client could not reconnect",
     "Automatic reconnection is on, and all attempts failed.",
     "Start the load again when the queue manager runs again. A load needs no automatic reconnection: "
     "`DefRecon=DISABLED` in mqclient.ini."},
    {2549, "MQRC_CALL_INTERRUPTED", "MBD", Recovery::kTransient, "the connection broke during the call",
     "The client was reconnecting. Whether the unit of work was committed is not known.",
     "Start the load again: it finds out. Switch automatic reconnection off: `DefRecon=DISABLED` in "
     "mqclient.ini."},
    {2556, "MQRC_RECONNECT_TIMED_OUT", kAnyVerb, Recovery::kTransient, "reconnecting took too long",
     "Automatic reconnection is on, and the queue manager did not return in time.",
     "Start the load again when the queue manager runs again."},
    {2568, "MQRC_CONNECTION_NOT_AVAILABLE", kAnyVerb, Recovery::kTransient,
     "the connection is not available at the moment", "MQ cannot use the connection now.",
     "Start the load again."},
    {2573, "MQRC_PRECONN_EXIT_LOAD_ERROR", "C", Recovery::kPermanent,
     "a pre-connect exit could not be loaded",
     "The library in the PreConnect stanza of mqclient.ini is missing or may not be read.",
     "Correct the PreConnect stanza of mqclient.ini."},
    {2574, "MQRC_PRECONN_EXIT_NOT_FOUND", "C", Recovery::kPermanent, "a pre-connect exit was not found",
     "The function in the PreConnect stanza of mqclient.ini is not in its library.",
     "Correct the PreConnect stanza of mqclient.ini."},
    {2575, "MQRC_PRECONN_EXIT_ERROR", "C", Recovery::kPermanent, "a pre-connect exit failed",
     "The exit could not look up the channel definition.", "Ask whoever installed the exit."},
    {2576, "MQRC_CD_ARRAY_ERROR", "C", Recovery::kPermanent,
     "a pre-connect exit returned invalid channel definitions",
     "The exit returned a list that MQ cannot use.", "Ask whoever installed the exit."},
    {2577, "MQRC_CHANNEL_BLOCKED", "C", Recovery::kPermanent,
     "channel authentication rules block this client",
     "A CHLAUTH rule blocks the address, the user or the certificate.",
     "Enter `DISPLAY CHLAUTH(CHANNEL) MATCH(RUNCHECK) ADDRESS('ADDRESS') CLNTUSER('USER')` to see which "
     "rule it is, and have it changed with `SET CHLAUTH`."},
    {2583, "MQRC_INSTALLATION_MISMATCH", "C", Recovery::kPermanent,
     "library and queue manager belong to different installations",
     "Several MQ installations are on this machine, and the wrong library was loaded.",
     "Use the library of the queue manager's installation: `. setmqenv -m QMGR -k`, or name the library "
     "in MQAMOD_MQ_LIBRARY."},
    {2584, "MQRC_NOT_PRIVILEGED", kAnyVerb, Recovery::kPermanent, "the user is not privileged",
     "The call needs a privileged user.",
     "Run the load as a user with the authority that AMQERR01.LOG names."},
    {2587, "MQRC_HMSG_NOT_AVAILABLE", "CG", Recovery::kPermanent, "no more message handles are allowed",
     "The queue manager's limit of message handles is reached.",
     "Look for programs that do not delete message handles, or raise MAXHANDS."},
    {2589, "MQRC_INSTALLATION_MISSING", "C", Recovery::kPermanent,
     "the installation of the queue manager is missing",
     "The queue manager belongs to an MQ installation that is not on this machine any more.",
     "Enter `dspmq -o installation`, and install the version that it names."},
    {2590, "MQRC_FASTPATH_NOT_AVAILABLE", "C", Recovery::kWarning, "a fastpath connection is not possible",
     "The standard connection is used instead.", "Nothing."},
    {2594, "MQRC_PASSWORD_PROTECTION_ERROR", "C", Recovery::kPermanent,
     "the two ends cannot agree on password protection",
     "The client and the queue manager have different settings for protecting passwords.",
     "Use TLS on the channel, or give both sides the same PasswordProtection (qm.ini and mqclient.ini)."},
    {2595, "MQRC_CSP_ERROR", "C", Recovery::kPermanent, "the security parameters are not valid",
     "The module sends none, so an exit supplied them.", "Ask whoever installed the security exit."},
    {2600, "MQRC_CCDT_URL_ERROR", "C", Recovery::kPermanent, "the channel table cannot be read",
     "The address in MQCCDTURL is wrong or does not answer, or the file is damaged.",
     "Check MQCCDTURL, and read the file with `runmqsc -n`: `DISPLAY CHANNEL(*)`."},
    {2601, "MQRC_Q_MGR_RECONNECT_REQUESTED", kAnyVerb, Recovery::kWarning,
     "the queue manager asks the client to reconnect",
     "The queue manager balances its connections, or is shutting down (`endmqm -r`).",
     "Wait. A load needs no automatic reconnection: `DefRecon=DISABLED` in mqclient.ini."},
    {2602, "MQRC_BNO_ERROR", "C", Recovery::kPermanent, "the balancing options are not valid",
     "The application balancing settings of the client contain an error.",
     "Correct the Application stanza of mqclient.ini."},
};

}  // namespace

std::span<const MqReason> ConnectionReasons() {
    return kConnectionReasons;
}

}  // namespace mqam
