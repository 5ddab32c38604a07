// SPDX-License-Identifier: Apache-2.0

// Makes each read and write of a restarted load that reaches the disk fail there, once or until the next
// attempt is over. The C library's buffers are between the disk and the module. The request that notices the
// failure must return what it promises, and the load must end with every message in the target exactly once.
#include <cerrno>

#include "tests/failures/disk_double.h"
#include "tests/failures/file_failure_cases.h"
#include "tests/failures/watched_load.h"

namespace {

struct DiskFailureCase {
    std::string name;
    bool tlf = true;
    int attempt = 1;
    DiskFault fault{};
};

void PrintTo(const DiskFailureCase& failure, std::ostream* stream) {
    *stream << failure.name;
}

void PutOn(DiskDouble& disk, ModuleProcess& process) {
    disk.BeginProcess();
    process.Files().opener = [&disk](const char* path, const char* mode) { return disk.Open(path, mode); };
}

struct DiskWay {
    const char* name;
    int error;
    bool takesHalf;
    bool stays;
    bool anyFile;
};
constexpr DiskWay kWriteWays[] = {
    {"EIO_once", EIO, false, false, false},
    {"EIO_forever", EIO, false, true, false},
    {"half_written_once", ENOSPC, true, false, false},
    {"disk_full", ENOSPC, false, true, true},
    {"disk_full_half_written", ENOSPC, true, true, true},
};
constexpr DiskWay kReadWays[] = {{"EIO_once", EIO, false, false, false},
                                 {"EIO_forever", EIO, false, true, false}};

void AddPoint(int attempt, const DiskDouble::Point& point, std::vector<DiskFailureCase>& cases) {
    const auto add = [&](const DiskWay& way, bool tlf) {
        DiskFailureCase entry;
        entry.name = std::string(point.call == DiskCall::Write ? "write_" : "read_") +
                     std::to_string(point.nth) + "_of_attempt_" + std::to_string(attempt) + "_" + way.name +
                     (tlf ? "_TLF_yes" : "_TLF_no");
        entry.tlf = tlf;
        entry.attempt = attempt;
        entry.fault = {point.call, point.file, point.nth, way.error, way.takesHalf, way.stays};
        // The disk is full for this file first, and then for all files. "*" marks such a fault.
        if (way.anyFile) entry.fault.file += "*";
        cases.push_back(entry);
    };
    for (const bool tlf : {true, false}) {
        if (point.call == DiskCall::Write) {
            for (const DiskWay& way : kWriteWays)
                add(way, tlf);
        } else {
            for (const DiskWay& way : kReadWays)
                add(way, tlf);
        }
    }
}

std::vector<DiskFailureCase> DiskFailureCases(const std::string& file) {
    std::vector<DiskFailureCase> cases;
    DiskDouble disk;
    FailingLoad load(FileFailurePlan(true));
    load.queueManager.Add(LostCommit());
    load.host.atStart = [&](ModuleProcess& process) { PutOn(disk, process); };
    load.host.atEnd = [&](ModuleProcess&) {
        disk.EndProcess();
        for (const DiskDouble::Point& point : disk.points) {
            // The trace is written at every step and nothing depends on it, so a sample of its calls is
            // enough.
            const bool sampled = point.file != kTraceFile || point.nth % 16 == 1;
            if (point.file.find(file) == 0 && sampled) AddPoint(load.host.Attempts(), point, cases);
        }
    };
    load.RunToTheEnd();
    return cases;
}

class DiskFailure : public testing::TestWithParam<DiskFailureCase> {
  protected:
    void StartAttempt(ModuleProcess& process) {
        watched.Watch(process);
        PutOn(disk, process);
        const int attempt = watched.load.host.Attempts();
        DiskFault fault = GetParam().fault;
        const bool full = fault.file.back() == '*';
        if (full) fault.file.pop_back();
        if (attempt == GetParam().attempt) {
            disk.Add(fault);
        } else if (fault.stays && attempt == GetParam().attempt + 1) {
            fault.nth = 1;
            if (full) fault.file.clear();
            disk.Add(fault);
        }
        if (full && attempt == GetParam().attempt) fillsUp = true;
    }

    void NoteStrike(const DiskFault& fault, const std::string& path) {
        FileCall call = CallUnderWay(path);
        // The C library reads ahead when it positions a stream, and succeeds if only that fails. The module
        // notices it as little as a failed flush of all streams.
        if (call == FileCall::Seek) call = FileCall::FlushAll;
        watched.NoteStrike(call, {.call = call, .file = path, .error = fault.error});
        if (!fillsUp) return;
        fillsUp = false;
        disk.Add({DiskCall::Write, "", 1, fault.error, fault.takesHalf, true});
    }

    /// Returns the kind of the module's call that is now reading or writing the file.
    FileCall CallUnderWay(const std::string& path) const {
        const FaultPlan& files = watched.Files();
        if (files.flushingAll || path == kTraceFile) return FileCall::FlushAll;
        const std::string& last = files.log.back();
        for (const auto& [word, call] : {std::pair{"flush ", FileCall::Flush},
                                         {"write ", FileCall::Write},
                                         {"read ", FileCall::Read},
                                         {"tell ", FileCall::Tell},
                                         {"seek ", FileCall::Seek},
                                         {"close ", FileCall::Close}}) {
            if (last.find(word + path) == 0) return call;
        }
        ADD_FAILURE() << path << " is read or written, though the last call was: " << last;
        return FileCall::Close;
    }

    DiskDouble disk;
    bool fillsUp = false;  // the next strike fills the disk for all files
    WatchedLoad watched{GetParam().tlf};
};

TEST_P(DiskFailure, IsReportedAsPromisedAndTheRestartEndsExact) {
    disk.onStrike = [this](const DiskFault& fault, const std::string& path) { NoteStrike(fault, path); };
    watched.load.host.atStart = [this](ModuleProcess& process) { StartAttempt(process); };
    watched.load.host.atEnd = [this](ModuleProcess&) { disk.EndProcess(); };
    watched.load.RunToTheEnd();
    EXPECT_GT(watched.Strikes(), 0) << "the call was never made";
}

std::string NameOfDiskFailure(const testing::TestParamInfo<DiskFailureCase>& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(CheckpointFile, DiskFailure, testing::ValuesIn(DiskFailureCases(kCheckpointFile)),
                         NameOfDiskFailure);
INSTANTIATE_TEST_SUITE_P(TemporaryFile, DiskFailure, testing::ValuesIn(DiskFailureCases(kTemporaryFile)),
                         NameOfDiskFailure);
INSTANTIATE_TEST_SUITE_P(MessageLog, DiskFailure, testing::ValuesIn(DiskFailureCases(kMessageLog)),
                         NameOfDiskFailure);
INSTANTIATE_TEST_SUITE_P(Trace, DiskFailure, testing::ValuesIn(DiskFailureCases(kTraceFile)),
                         NameOfDiskFailure);

}  // namespace
