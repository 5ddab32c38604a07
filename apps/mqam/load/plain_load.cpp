#include "mqam/load/plain_load.h"

#include <chrono>
#include <cstdlib>
#include <string_view>

#include "mqam/module/module_session.h"
#include "platform/file.h"

namespace mqam {

namespace {

using Clock = std::chrono::steady_clock;

// Everything that one life carries along.
struct Life {
    ModuleSession session;
    const PlainLoadSettings& settings;
    RecordSink& sink;
    const LoadObserver& observer;
    ProgressCounters& counters;
    PlainLoadResult outcome;
    StartupReport report;
    std::vector<char> buffer;
};

bool FailModule(Life& life, bool mustEndProcess) {
    life.outcome.end = PlainLoadEnd::kModuleFailed;
    life.outcome.moduleFailure = life.session.LastFailure();
    life.outcome.mustEndProcess = mustEndProcess;
    return false;
}

bool FailTarget(Life& life, const Status& failed) {
    life.outcome.end = PlainLoadEnd::kTargetFailed;
    life.outcome.targetFailure = failed.Error();
    life.outcome.mustEndProcess = true;
    return false;
}

bool Refuse(Life& life, const std::string& error) {
    life.outcome.end = PlainLoadEnd::kNotStarted;
    life.outcome.refusal = error;
    return false;
}

void PassNotice(Life& life) {
    const std::string text = life.session.TakeNewText();
    if (!text.empty() && life.observer.notice) life.observer.notice(text);
}

// Returns the path of a file that an earlier load left and that this one would destroy, or an empty string.
// Records in a checkpoint file are nowhere else: the first checkpoint would empty it, and Close delete it. A
// log is overwritten from its beginning and deleted at Close. Even an empty checkpoint file tells of a load
// that did not finish; an empty log tells nothing.
std::string FindRemains(const StartupReport& report) {
    if (!report.checkpointFile.empty() &&
        platform::ProbePath(report.checkpointFile) != platform::PathKind::kMissing) {
        return report.checkpointFile;
    }
    std::uint64_t logBytes = 0;
    if (!report.logFile.empty() &&
        platform::ProbePath(report.logFile, logBytes) == platform::PathKind::kFile && logBytes > 0) {
        return report.logFile;
    }
    return "";
}

bool Prepare(Life& life) {
    if (life.session.Init(life.settings.initString) != pmrcOK) return FailModule(life, false);
    if (FetchReport(life.session, life.settings.keywordHelpWanted, life.report) != pmrcOK) {
        return FailModule(life, false);
    }
    if (life.observer.report) life.observer.report(life.report);

    if (!life.report.truncatedParameter.empty()) return Refuse(life, DescribeTruncation(life.report));
    const std::string remains = FindRemains(life.report);
    if (!remains.empty()) {
        return Refuse(
            life, remains +
                      " exists: as the checkpoint file or log of an earlier load it may hold the only copy "
                      "of records, and this load would destroy it. Move it away, or delete it once that "
                      "load is finished");
    }
    for (const auto& [name, value] : life.settings.attributes) {
        if (life.session.PutAttribute(name, value) != pmrcOK) return FailModule(life, false);
    }
    return true;
}

bool TakeCheckpoint(Life& life) {
    PositionData position{};
    if (life.session.GetPos(position) != pmrcOK) return FailModule(life, true);
    const Status saved = life.sink.Save();
    if (!saved.IsOk()) return FailTarget(life, saved);
    if (life.observer.checkpoint) life.observer.checkpoint(position);
    return true;
}

bool OpenInput(Life& life) {
    std::uint32_t maxRecordBytes = 0;
    if (life.session.Open(MQAMOD_OPEN_FOR_READING, maxRecordBytes) != pmrcOK) return FailModule(life, true);
    PassNotice(life);
    life.buffer.resize(maxRecordBytes);
    const Status opened = life.sink.Open();
    if (!opened.IsOk()) return FailTarget(life, opened);
    life.outcome.targetWasOpened = true;
    return life.settings.checkpointEveryRecords == 0 || TakeCheckpoint(life);
}

// The end of a queue never comes before the read wait interval has passed; an empty message, a repeated one,
// MQ's limit or an MQGET that failed without data does.
bool CameEarly(const Life& life, Clock::duration waited) {
    return !life.report.readWait || waited < *life.report.readWait;
}

bool ReadInput(Life& life) {
    std::uint64_t sinceCheckpoint = 0;
    bool stopPassedOn = false;
    const Clock::time_point firstRead = Clock::now();
    Clock::time_point lastRecord = firstRead;
    for (;;) {
        if (!stopPassedOn && life.observer.stopWanted && life.observer.stopWanted()) {
            if (life.session.PutAttribute("GEN_EOF", "") != pmrcOK) return FailModule(life, true);
            stopPassedOn = true;
        }
        const Clock::time_point start = Clock::now();
        std::uint32_t length = 0;
        const ReturnCode code = life.session.Read(life.buffer.data(), length);
        life.outcome.secondsToLastRecord = std::chrono::duration<double>(lastRecord - firstRead).count();
        if (code == pmrcEOF) {
            const bool early = CameEarly(life, Clock::now() - start);
            life.outcome.end = early ? PlainLoadEnd::kEndedEarly : PlainLoadEnd::kEndOfInput;
            if (stopPassedOn) life.outcome.end = PlainLoadEnd::kInterrupted;
            return true;
        }
        if (code == pmrcTimeout) {
            life.outcome.end = PlainLoadEnd::kTimeout;
            return true;
        }
        if (code != pmrcOK) return FailModule(life, true);
        PassNotice(life);
        const Status put = life.sink.Put(life.buffer.data(), length);
        if (!put.IsOk()) return FailTarget(life, put);
        lastRecord = Clock::now();
        ++life.outcome.records;
        life.outcome.bytes += length;
        life.counters.records.store(life.outcome.records, std::memory_order_relaxed);
        life.counters.bytes.store(life.outcome.bytes, std::memory_order_relaxed);
        if (++sinceCheckpoint == life.settings.checkpointEveryRecords) {
            if (!TakeCheckpoint(life)) return false;
            sinceCheckpoint = 0;
        }
    }
}

}  // namespace

PlainLoadResult RunPlainLoad(PIDMMainFunction entryPoint, const PlainLoadSettings& settings, RecordSink& sink,
                             const LoadObserver& observer, ProgressCounters& counters) {
    Life life{ModuleSession(entryPoint), settings, sink, observer, counters, {}, {}, {}};
    if (!Prepare(life)) {
        // Nothing is open yet, so Shut has nothing to commit or delete; its own outcome changes nothing.
        static_cast<void>(life.session.Shut());
        return life.outcome;
    }
    const bool reachedTheEnd = OpenInput(life) && ReadInput(life);
    if (life.outcome.targetWasOpened && life.outcome.end != PlainLoadEnd::kTargetFailed) {
        const Status finished = sink.Finish();
        if (!finished.IsOk()) FailTarget(life, finished);
    }
    if (!reachedTheEnd || life.outcome.end == PlainLoadEnd::kTargetFailed) return life.outcome;
    // The input has ended and the target is complete: a failure from here on does not change how the input
    // ended.
    if (life.session.Close() != pmrcOK) life.outcome.moduleFailure = life.session.LastFailure();
    if (life.session.Shut() != pmrcOK && life.outcome.moduleFailure.code == pmrcOK) {
        life.outcome.moduleFailure = life.session.LastFailure();
    }
    return life.outcome;
}

}  // namespace mqam
