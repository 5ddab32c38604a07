// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/plain_load.h"

#include <chrono>
#include <cstdlib>
#include <string_view>

#include "mqam/module/module_session.h"
#include "platform/file.h"

namespace mqam {

namespace {

using Clock = std::chrono::steady_clock;

// Contains everything that one load works with.
struct PlainLoad {
    ModuleSession session;
    const PlainLoadSettings& settings;
    RecordSink& sink;
    const LoadObserver& observer;
    ProgressCounters& counters;
    PlainLoadResult result;
    StartupReport report;
    std::vector<char> buffer;
};

bool FailModule(PlainLoad& load, bool mustEndProcess) {
    load.result.end = PlainLoadEnd::kModuleFailed;
    load.result.moduleFailure = load.session.LastFailure();
    load.result.mustEndProcess = mustEndProcess;
    return false;
}

bool FailTarget(PlainLoad& load, const Status& failed) {
    load.result.end = PlainLoadEnd::kTargetFailed;
    load.result.error = failed;
    load.result.mustEndProcess = true;
    return false;
}

bool Refuse(PlainLoad& load, const std::string& error) {
    load.result.end = PlainLoadEnd::kNotStarted;
    load.result.error = Status::Refused(error);
    return false;
}

void ReportNotice(PlainLoad& load) {
    const std::string text = load.session.TakeNewText();
    if (!text.empty() && load.observer.notice) load.observer.notice(text);
}

// Whether an earlier load left a log that this one would overwrite from its beginning and delete at Close. An empty log
// means nothing.
bool IsLogInTheWay(const StartupReport& report) {
    std::uint64_t bytes = 0;
    return !report.logFile.empty() &&
           platform::ProbePath(report.logFile, bytes) == platform::PathKind::kFile && bytes > 0;
}

bool Prepare(PlainLoad& load) {
    if (load.session.Init(load.settings.initString) != pmrcOK) return FailModule(load, false);
    if (FetchReport(load.session, load.settings.wantsKeywordHelp, load.report) != pmrcOK) {
        return FailModule(load, false);
    }
    if (load.observer.report) load.observer.report(load.report);

    if (!load.report.truncatedParameter.empty()) return Refuse(load, DescribeTruncation(load.report));
    // The records in a checkpoint file are nowhere else, and Close would delete it.
    if (!load.report.checkpointFile.empty()) {
        return Refuse(load, "checkpoint file " + load.report.checkpointFile +
                                ": an unprotected load takes no checkpoints, so leave out --unprotected or "
                                "the keyword CKFILE");
    }
    if (IsLogInTheWay(load.report)) {
        return Refuse(load,
                      load.report.logFile +
                          " exists: as the log of an earlier load it may hold the only copy of records, "
                          "and this load would destroy it. Move it away, or delete it once that load is "
                          "finished");
    }
    for (const auto& [name, value] : load.settings.attributes) {
        if (load.session.PutAttribute(name, value) != pmrcOK) return FailModule(load, false);
    }
    return true;
}

bool OpenInput(PlainLoad& load) {
    std::uint32_t maxRecordBytes = 0;
    if (load.session.Open(MQAMOD_OPEN_FOR_READING, maxRecordBytes) != pmrcOK) return FailModule(load, true);
    ReportNotice(load);
    load.buffer.resize(maxRecordBytes);
    const Status opened = load.sink.Open();
    if (!opened.IsOk()) return FailTarget(load, opened);
    load.result.targetWasOpened = true;
    return true;
}

// An empty queue never ends the input before the read wait interval has passed; an empty message, a duplicate, MQ's
// limit of uncommitted messages, or an MQGET that failed without data does.
bool EndedEarly(const PlainLoad& load, Clock::duration waited) {
    return !load.report.readWait || waited < *load.report.readWait;
}

bool ReadInput(PlainLoad& load) {
    bool stopPassedOn = false;
    const Clock::time_point firstRead = Clock::now();
    Clock::time_point lastRecord = firstRead;
    for (;;) {
        if (!stopPassedOn && load.observer.stopWanted && load.observer.stopWanted()) {
            if (load.session.PutAttribute("GEN_EOF", "") != pmrcOK) return FailModule(load, true);
            stopPassedOn = true;
        }
        const Clock::time_point start = Clock::now();
        std::uint32_t length = 0;
        const ReturnCode code = load.session.Read(load.buffer.data(), length);
        load.result.secondsToLastRecord = std::chrono::duration<double>(lastRecord - firstRead).count();
        if (code == pmrcEOF) {
            const bool early = EndedEarly(load, Clock::now() - start);
            load.result.end = early ? PlainLoadEnd::kEndedEarly : PlainLoadEnd::kEndOfInput;
            if (stopPassedOn) load.result.end = PlainLoadEnd::kInterrupted;
            return true;
        }
        if (code == pmrcTimeout) {
            load.result.end = PlainLoadEnd::kTimeout;
            return true;
        }
        if (code != pmrcOK) return FailModule(load, true);
        ReportNotice(load);
        ++load.result.taken;
        const Status put = load.sink.Put(load.buffer.data(), length);
        if (!put.IsOk()) return FailTarget(load, put);
        lastRecord = Clock::now();
        ++load.result.records;
        load.result.bytes += length;
        load.counters.records.store(load.result.records, std::memory_order_relaxed);
        load.counters.bytes.store(load.result.bytes, std::memory_order_relaxed);
    }
}

}  // namespace

PlainLoadResult RunPlainLoad(PIDMMainFunction entryPoint, const PlainLoadSettings& settings, RecordSink& sink,
                             const LoadObserver& observer, ProgressCounters& counters) {
    PlainLoad load{ModuleSession(entryPoint), settings, sink, observer, counters, {}, {}, {}};
    if (!Prepare(load)) {
        // Nothing is open yet, so Shut has nothing to commit or delete, and its own result does not matter.
        static_cast<void>(load.session.Shut());
        return load.result;
    }
    const bool reachedTheEnd = OpenInput(load) && ReadInput(load);
    if (load.result.targetWasOpened && load.result.end != PlainLoadEnd::kTargetFailed) {
        const Status finished = sink.Finish();
        if (!finished.IsOk()) FailTarget(load, finished);
    }
    if (!reachedTheEnd || load.result.end == PlainLoadEnd::kTargetFailed) return load.result;
    // The input has ended and the target is complete: a later failure does not change how the input ended.
    if (load.session.Close() != pmrcOK) load.result.moduleFailure = load.session.LastFailure();
    if (load.session.Shut() != pmrcOK && load.result.moduleFailure.code == pmrcOK) {
        load.result.moduleFailure = load.session.LastFailure();
    }
    return load.result;
}

}  // namespace mqam
