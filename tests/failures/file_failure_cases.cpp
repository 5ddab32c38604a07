// SPDX-License-Identifier: Apache-2.0
#include "tests/failures/file_failure_cases.h"

#include <cerrno>
#include <map>

namespace {

struct CallPoint {
    int attempt;
    int nth;  // number of the call among those on that file in that attempt
    FileCall call;
    std::string file;
};

const std::vector<CallPoint>& PointsWithoutFailure() {
    static const std::vector<CallPoint> points = [] {
        std::vector<CallPoint> found;
        FailingLoad load(FileFailurePlan(true));
        load.queueManager.Add(LostCommit());
        load.host.atEnd = [&](ModuleProcess& process) {
            std::map<std::pair<FileCall, std::string>, int> counts;
            for (const FaultPlan::Point& point : process.Files().points) {
                const int nth = ++counts[{point.call, point.file}];
                found.push_back({load.host.Attempts(), nth, point.call, point.file});
            }
        };
        load.RunToTheEnd();
        return found;
    }();
    return points;
}

const char* Word(FileCall call) {
    switch (call) {
        case FileCall::Open: return "fopen";
        case FileCall::Close: return "fclose";
        case FileCall::Read: return "fread";
        case FileCall::Write: return "fwrite";
        case FileCall::Print: return "fprintf";
        case FileCall::Flush: return "fflush";
        case FileCall::FlushAll: return "fflush_all";
        case FileCall::Tell: return "fgetpos";
        case FileCall::Seek: return "fsetpos";
        case FileCall::Remove: return "remove";
        case FileCall::Rename: return "rename";
        case FileCall::Command: return "system";
        case FileCall::Allocate: return "malloc";
    }
    return "";
}

struct Way {
    const char* name;
    int error;
    std::size_t transferred = 0;
    bool carriedOut = false;
};

std::vector<Way> WaysOf(FileCall call) {
    std::vector<Way> ways = {{"EIO", EIO}};
    if (call == FileCall::FlushAll) return ways;
    const bool reads = call == FileCall::Read || call == FileCall::Tell || call == FileCall::Seek;
    if (!reads) ways.push_back({"ENOSPC", ENOSPC});
    if (call == FileCall::Write) ways.push_back({"short_write", ENOSPC, 3});
    if (call == FileCall::Read) ways.push_back({"short_read", EIO, 3});
    if (call == FileCall::Remove || call == FileCall::Rename) ways.push_back({"EIO_but_done", EIO, 0, true});
    return ways;
}

// Returns whether the call is tested. All streams are flushed, and the trace is written, at every step, so a
// sample of these calls is enough.
bool IsSampled(const CallPoint& point) {
    const bool trace = point.file == kTraceFile;
    if (point.call == FileCall::FlushAll) return !trace && point.nth % 4 == 1;
    if (point.call == FileCall::Print || (trace && point.call == FileCall::Flush)) return point.nth % 16 == 1;
    return true;
}

void AddPoint(const CallPoint& point, std::vector<FileFailureCase>& cases) {
    for (const Way& way : WaysOf(point.call)) {
        for (const bool forever : {false, true}) {
            for (const bool tlf : {true, false}) {
                FileFailureCase entry;
                entry.name = std::string(Word(point.call)) + "_" + std::to_string(point.nth) +
                             "_of_attempt_" + std::to_string(point.attempt) + "_" + way.name +
                             (forever ? "_forever" : "_once") + (tlf ? "_TLF_yes" : "_TLF_no");
                entry.tlf = tlf;
                entry.attempt = point.attempt;
                entry.fault.call = point.call;
                entry.fault.file = point.file;
                entry.fault.nth = point.nth;
                entry.fault.error = way.error;
                entry.fault.transferred = way.transferred;
                entry.fault.carriedOut = way.carriedOut;
                entry.fault.stays = forever;
                cases.push_back(entry);
            }
        }
    }
}

}  // namespace

LoadPlan FileFailurePlan(bool tlf) {
    return {.keywords = std::string("-LOG log.dat -TRCL 1 trace.txt -TLF ") + (tlf ? "YES" : "NO"),
            .stopAfter = 4};
}

MqiFault LostCommit() {
    return {Verb::Cmit, 6, MQCC_FAILED, 2009, Effect::BackedOut, true};
}

std::vector<FileFailureCase> FileFailureCases(const std::string& file) {
    std::vector<FileFailureCase> cases;
    for (const CallPoint& point : PointsWithoutFailure()) {
        if (point.file.find(file) != std::string::npos && IsSampled(point)) AddPoint(point, cases);
    }
    return cases;
}
