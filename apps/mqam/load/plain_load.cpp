// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/plain_load.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <string_view>
#include <thread>

#include "mqam/load/read_wait.h"
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
    PlainLoadResult result = {};
    StartupReport report = {};
    bool waitsInShortReads = false;  // else the module waits by itself
    std::vector<char> buffer = {};
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

// Has the module wait for messages only a short time. It takes a new keyword only with another Init, and that
// only after Shut; nothing is open yet. A parameter file may set RWAIT too and counts more; the module then
// waits by itself.
bool ShortenReads(PlainLoad& load) {
    const std::optional<std::chrono::seconds>& asked = load.report.readWait;
    load.waitsInShortReads = asked == kShortReadWait;
    const bool isUnknown = asked == std::chrono::seconds(0);
    if (load.waitsInShortReads || isUnknown) return true;
    StartupReport shortened;
    if (load.session.Shut() != pmrcOK) return FailModule(load, false);
    const std::string keyword = " -RWAIT " + std::to_string(kShortReadWait.count());
    if (load.session.Init(load.settings.initString + keyword) != pmrcOK) return FailModule(load, false);
    if (FetchReport(load.session, false, shortened) != pmrcOK) return FailModule(load, false);
    load.waitsInShortReads = shortened.readWait == kShortReadWait;
    return true;
}

// Returns the value of TIMEOUT_SECONDS for the module; none if it needs none.
std::optional<std::int64_t> ModuleTimeout(const PlainLoad& load) {
    if (load.waitsInShortReads) return TimeoutForSlices(kShortReadWait);
    const auto limit = ReadLimit(load.report.readWait, load.settings.timeout);
    return limit ? limit->count() : TimeoutForSlices(load.report.readWait);
}

// Puts the attributes: that of the load first, so that one that the user gave replaces it.
bool PutAttributes(PlainLoad& load) {
    std::vector<std::pair<std::string, std::string>> attributes;
    if (const auto timeout = ModuleTimeout(load))
        attributes.emplace_back("TIMEOUT_SECONDS", std::to_string(*timeout));
    attributes.insert(attributes.end(), load.settings.attributes.begin(), load.settings.attributes.end());
    for (const auto& [name, value] : attributes) {
        if (load.session.PutAttribute(name, value) != pmrcOK) return FailModule(load, false);
    }
    return true;
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
    return ShortenReads(load) && PutAttributes(load);
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

// An empty queue never ends the input before the read wait interval has passed; an empty message, a
// duplicate, MQ's limit of uncommitted messages, or an MQGET that failed without data does.
bool EndedEarly(const PlainLoad& load, Clock::duration waited) {
    return !load.report.readWait || waited < *load.report.readWait;
}

bool IsStopWanted(const PlainLoad& load) {
    return load.observer.stopWanted && load.observer.stopWanted();
}

void Pause(const PlainLoad& load, std::chrono::milliseconds duration) {
    constexpr std::chrono::milliseconds kStep{50};
    const Clock::time_point end = Clock::now() + duration;
    while (Clock::now() < end && !IsStopWanted(load))
        std::this_thread::sleep_for(std::min<Clock::duration>(kStep, end - Clock::now()));
}

std::chrono::milliseconds IntoSecond() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now % std::chrono::seconds(1));
}

// A Read of the module. The time of the calendar is that which the module counts.
struct TimedRead {
    ReturnCode code;
    std::uint32_t length;
    std::chrono::seconds calendar;  // seconds of the calendar that began during the Read
    Clock::duration taken;
};

TimedRead Read(PlainLoad& load) {
    const Clock::time_point start = Clock::now();
    const std::time_t calendarStart = std::time(nullptr);
    TimedRead read = {};
    read.code = load.session.Read(load.buffer.data(), read.length);
    read.calendar = std::chrono::seconds(std::time(nullptr) - calendarStart);
    read.taken = Clock::now() - start;
    return read;
}

// Decides what an end of the input means, and waits if the load is to read again: true then, else the end is
// in the result.
//   waited  since the last record, or since the first Read
bool ReadsOn(PlainLoad& load, const TimedRead& read, Clock::duration waited) {
    PlainLoadEnd& end = load.result.end;
    if (!load.waitsInShortReads) {
        end = EndedEarly(load, read.taken) ? PlainLoadEnd::kEndedEarly : PlainLoadEnd::kEndOfInput;
        return false;
    }
    // Only an empty queue makes the module wait for so long.
    if (read.calendar <= kShortReadWait) {
        end = PlainLoadEnd::kEndedEarly;
        return false;
    }
    const std::optional<std::chrono::seconds> timeout =
        ReadLimit(load.report.readWait, load.settings.timeout);
    const std::optional<std::chrono::seconds> limit = timeout ? timeout : load.report.readWait;
    std::optional<std::chrono::milliseconds> left;
    if (limit) left = std::chrono::ceil<std::chrono::milliseconds>(*limit - waited);
    const NextRead next = PlanNextRead(left, IntoSecond());
    Pause(load, next.pause);
    end = timeout ? PlainLoadEnd::kTimeout : PlainLoadEnd::kEndOfInput;
    return next.isMade || IsStopWanted(load);
}

bool ReadInput(PlainLoad& load) {
    bool stopPassedOn = false;
    const Clock::time_point firstRead = Clock::now();
    Clock::time_point lastRecord = firstRead;
    for (;;) {
        if (!stopPassedOn && IsStopWanted(load)) {
            if (load.session.PutAttribute("GEN_EOF", "") != pmrcOK) return FailModule(load, true);
            stopPassedOn = true;
        }
        const TimedRead read = Read(load);
        load.result.secondsToLastRecord = std::chrono::duration<double>(lastRecord - firstRead).count();
        if (read.code == pmrcEOF) {
            if (stopPassedOn) {
                load.result.end = PlainLoadEnd::kInterrupted;
                return true;
            }
            if (!ReadsOn(load, read, Clock::now() - lastRecord)) return true;
            continue;
        }
        if (read.code == pmrcTimeout) {
            load.result.end = PlainLoadEnd::kTimeout;
            return true;
        }
        if (read.code != pmrcOK) return FailModule(load, true);
        ReportNotice(load);
        ++load.result.taken;
        const Status put = load.sink.Put(load.buffer.data(), read.length);
        if (!put.IsOk()) return FailTarget(load, put);
        lastRecord = Clock::now();
        ++load.result.records;
        load.result.bytes += read.length;
        load.counters.records.store(load.result.records, std::memory_order_relaxed);
        load.counters.bytes.store(load.result.bytes, std::memory_order_relaxed);
    }
}

}  // namespace

PlainLoadResult RunPlainLoad(PIDMMainFunction entryPoint, const PlainLoadSettings& settings, RecordSink& sink,
                             const LoadObserver& observer, ProgressCounters& counters) {
    PlainLoad load{ModuleSession(entryPoint), settings, sink, observer, counters};
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
