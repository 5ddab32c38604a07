// SPDX-License-Identifier: Apache-2.0

// Implements the entry points of the journal library: the verbs that the module calls, and the functions for
// hosts.
#include <exception>
#include <memory>
#include <string>

#include "mqamjournal.h"
#include "mqi/mqi.h"
#include "mqi/verbs.h"
#include "mqjournal/journal/format.h"
#include "mqjournal/journal/reader.h"
#include "mqjournal/journal/writer.h"
#include "platform/durable_file.h"
#include "platform/environment.h"

namespace {

constexpr MQLONG kFileSystemError = 2208;  // MQRC_FILE_SYSTEM_ERROR

struct Library {
    // These are the verbs of the real library; all are null until it is bound. Nothing clears them.
    mqamod::Verbs verbs;
    // This is the journal of the connection. Each MQCONNX replaces it.
    std::unique_ptr<mqjournal::JournalWriter> writer;
    // This is the last error. Each new error replaces it.
    std::string error;
};
Library library;

void Fail(MQLONG reason, MQLONG* compCode, MQLONG* reasonOut) {
    *compCode = MQCC_FAILED;
    *reasonOut = reason;
}

// Binds the real library and prepares the journal. Returns the reason of a failure, or MQRC_NONE.
MQLONG Prepare(const MQCNO* options) {
    const std::string path = platform::ReadEnvironment("MQAMJOURNAL_CHECKPOINT");
    if (path.empty()) {
        library.error =
            "MQAMJOURNAL_CHECKPOINT is not set: the journal library does not know the checkpoint file";
        return kFileSystemError;
    }
    // The checkpoint file may be another one than that of an earlier connection, so its journal begins again.
    library.writer = std::make_unique<mqjournal::JournalWriter>(path);
    if (library.verbs.connx != nullptr) return MQRC_NONE;
    const std::string named = platform::ReadEnvironment("MQAMJOURNAL_MQ_LIBRARY");
    char failure[mqamod::kBindFailureBytes];
    const MQLONG reason = mqamod::BindVerbs(named.c_str(), options, library.verbs, failure);
    if (reason != MQRC_NONE) library.error = failure;
    return reason;
}

// Runs a function that may throw, for a caller in C. Returns -1 after an exception.
template <typename Function>
int RunGuarded(Function function) {
    try {
        return function();
    } catch (const std::exception& error) {
        library.error = error.what();
    }
    return -1;
}

int Restore(const std::string& checkpointPath) {
    const mqjournal::JournalScan journal = mqjournal::ScanJournal(checkpointPath);
    if (journal.shape == mqjournal::JournalShape::kMissing) return 0;
    if (journal.shape != mqjournal::JournalShape::kIntact) {
        library.error = journal.error;
        return -1;
    }
    if (mqjournal::IsContentOfJournal(checkpointPath, journal)) return 0;
    const std::string restored = checkpointPath + ".restored";
    std::string reason;
    if (!mqjournal::CopyContent(checkpointPath, journal, restored, library.error)) return -1;
    if (platform::MoveOverDurably(restored, checkpointPath, reason)) return 1;
    library.error = checkpointPath + ": " + reason;
    return -1;
}

}  // namespace

#if defined(_WIN32)
#define MQAMJOURNAL_EXPORT
#else
#define MQAMJOURNAL_EXPORT __attribute__((visibility("default")))
#endif

extern "C" {

MQAMJOURNAL_EXPORT int MqamJournalRestore(const char* checkpointPath) {
    return RunGuarded([&] { return Restore(checkpointPath); });
}

MQAMJOURNAL_EXPORT int MqamJournalReset(const char* checkpointPath) {
    return RunGuarded([&] { return mqjournal::ResetJournal(checkpointPath, library.error) ? 0 : -1; });
}

MQAMJOURNAL_EXPORT int MqamJournalRemove(const char* checkpointPath) {
    return RunGuarded([&] { return mqjournal::RemoveJournal(checkpointPath, library.error) ? 0 : -1; });
}

MQAMJOURNAL_EXPORT const char* MqamJournalError(void) {
    return library.error.c_str();
}

MQAMJOURNAL_EXPORT void MQCONNX(MQCHAR* QMgrName, MQCNO* ConnectOpts, MQHCONN* Hconn, MQLONG* CompCode,
                                MQLONG* Reason) {
    MQLONG reason = kFileSystemError;
    (void)RunGuarded([&] {
        reason = Prepare(ConnectOpts);
        return 0;
    });
    if (reason != MQRC_NONE) return Fail(reason, CompCode, Reason);
    library.verbs.connx(QMgrName, ConnectOpts, Hconn, CompCode, Reason);
}

// The verbs below require a bound library: a handle exists only after a successful MQCONNX.

MQAMJOURNAL_EXPORT void MQCMIT(MQHCONN Hconn, MQLONG* CompCode, MQLONG* Reason) {
    const int saved = RunGuarded([] { return library.writer->Save(library.error) ? 0 : -1; });
    if (saved != 0) return Fail(kFileSystemError, CompCode, Reason);
    library.verbs.cmit(Hconn, CompCode, Reason);
}

MQAMJOURNAL_EXPORT void MQDISC(MQHCONN* Hconn, MQLONG* CompCode, MQLONG* Reason) {
    // Once the connection has ended, others may use the journal. If MQDISC fails and the connection
    // continues, the next commit begins a new journal.
    if (library.writer != nullptr) library.writer->Release();
    library.verbs.disc(Hconn, CompCode, Reason);
}

MQAMJOURNAL_EXPORT void MQOPEN(MQHCONN Hconn, MQPTR ObjDesc, MQLONG Options, MQHOBJ* Hobj, MQLONG* CompCode,
                               MQLONG* Reason) {
    library.verbs.open(Hconn, ObjDesc, Options, Hobj, CompCode, Reason);
}

MQAMJOURNAL_EXPORT void MQCLOSE(MQHCONN Hconn, MQHOBJ* Hobj, MQLONG Options, MQLONG* CompCode,
                                MQLONG* Reason) {
    library.verbs.close(Hconn, Hobj, Options, CompCode, Reason);
}

MQAMJOURNAL_EXPORT void MQGET(MQHCONN Hconn, MQHOBJ Hobj, MQPTR MsgDesc, MQPTR GetMsgOpts,
                              MQLONG BufferLength, MQPTR Buffer, MQLONG* DataLength, MQLONG* CompCode,
                              MQLONG* Reason) {
    library.verbs.get(Hconn, Hobj, MsgDesc, GetMsgOpts, BufferLength, Buffer, DataLength, CompCode, Reason);
}

MQAMJOURNAL_EXPORT void MQBACK(MQHCONN Hconn, MQLONG* CompCode, MQLONG* Reason) {
    library.verbs.back(Hconn, CompCode, Reason);
}

}  // extern "C"
