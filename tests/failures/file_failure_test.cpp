// SPDX-License-Identifier: Apache-2.0

// Makes each listed call on a file of a restarted load fail, once or until the next attempt is over. The
// request must return what it promises, and the load must end with every message in the target exactly once.
#include "tests/failures/file_failure_cases.h"
#include "tests/failures/watched_load.h"

namespace {

class FileFailure : public testing::TestWithParam<FileFailureCase> {
  protected:
    void StartAttempt(ModuleProcess& process) {
        watched.Watch(process);
        process.Files().onStrike = [this](FileCall call, const std::string&) {
            watched.NoteStrike(call, GetParam().fault);
        };
        Fault fault = GetParam().fault;
        const int attempt = watched.load.host.Attempts();
        if (attempt == GetParam().attempt) process.Files().Add(fault);
        fault.nth = 1;
        if (fault.stays && attempt == GetParam().attempt + 1) process.Files().Add(fault);
    }

    WatchedLoad watched{GetParam().tlf};
};

TEST_P(FileFailure, ReturnsWhatItPromisesAndTheRestartEndsExact) {
    watched.load.host.atStart = [this](ModuleProcess& process) { StartAttempt(process); };
    watched.load.RunToTheEnd();
    EXPECT_GT(watched.Strikes(), 0) << "the call was never made";
}

std::string NameOfFileFailure(const testing::TestParamInfo<FileFailureCase>& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(CheckpointFile, FileFailure, testing::ValuesIn(FileFailureCases(kCheckpointFile)),
                         NameOfFileFailure);
INSTANTIATE_TEST_SUITE_P(TemporaryFile, FileFailure, testing::ValuesIn(FileFailureCases(kTemporaryFile)),
                         NameOfFileFailure);
INSTANTIATE_TEST_SUITE_P(MessageLog, FileFailure, testing::ValuesIn(FileFailureCases(kMessageLog)),
                         NameOfFileFailure);
INSTANTIATE_TEST_SUITE_P(Trace, FileFailure, testing::ValuesIn(FileFailureCases(kTraceFile)),
                         NameOfFileFailure);

}  // namespace
