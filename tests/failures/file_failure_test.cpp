// Every call on a file of a restarted load fails, once or until the next life is over: the request returns
// what it promises, and the load ends with every message in the target once.
#include <algorithm>
#include <cstring>

#include "tests/failures/expected_file_failure.h"
#include "tests/failures/file_failure_cases.h"

namespace {

class FileFailure : public testing::TestWithParam<FileFailureCase> {
  protected:
    void StartLife(ModuleLife& life) {
        requestBegins = 0;
        struck.reset();
        files = &life.Files();
        files->onStrike = [this](FileCall call, const std::string&) {
            ++strikes;
            if (!struck) struck = Struck(call);
        };
        Fault fault = GetParam().fault;
        const int lives = load.host.Lives();
        if (lives == GetParam().life) files->Add(fault);
        fault.nth = 1;
        if (fault.stays && lives == GetParam().life + 1) files->Add(fault);
    }

    FileStrike Struck(FileCall call) const {
        const auto begin = files->log.begin() + static_cast<std::ptrdiff_t>(requestBegins);
        const bool gotMessage =
            load.queueManager.calls.size() > callsBefore && load.queueManager.calls.back().gotMessage;
        return {call, {begin, files->log.end()}, GetParam().fault, GetParam().tlf, gotMessage};
    }

    void CheckReturn(const std::string& request, const Outcome& outcome) {
        if (struck) {
            EXPECT_TRUE(ReturnsAsPromised(request, outcome, *struck)) << struck->calls.back();
        } else {
            EXPECT_TRUE(IsUnaffected(request, outcome, GetParam().fault));
        }
        struck.reset();
        requestBegins = files->log.size();
        callsBefore = load.queueManager.calls.size();
    }

    FailingLoad load{FileFailurePlan(GetParam().tlf)};
    FaultPlan* files = nullptr;
    std::optional<FileStrike> struck;  // by the request that runs, the first time
    std::size_t requestBegins = 0;     // in the log of file calls
    std::size_t callsBefore = 0;       // MQ calls
    int strikes = 0;
};

TEST_P(FileFailure, ReturnsWhatItPromisesAndTheRestartEndsExact) {
    load.queueManager.Add(LostCommit());
    load.host.atStart = [this](ModuleLife& life) { StartLife(life); };
    load.host.afterRequest = [this](const std::string& request, const Outcome& outcome) {
        CheckReturn(request, outcome);
    };
    load.RunToTheEnd();
    EXPECT_GT(strikes, 0) << "the call was never made";
}

std::string NameOf(const testing::TestParamInfo<FileFailureCase>& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(CheckpointFile, FileFailure, testing::ValuesIn(FileFailureCases(kCheckpointFile)),
                         NameOf);
INSTANTIATE_TEST_SUITE_P(TemporaryFile, FileFailure, testing::ValuesIn(FileFailureCases(kTemporaryFile)),
                         NameOf);
INSTANTIATE_TEST_SUITE_P(MessageLog, FileFailure, testing::ValuesIn(FileFailureCases(kMessageLog)), NameOf);
INSTANTIATE_TEST_SUITE_P(Trace, FileFailure, testing::ValuesIn(FileFailureCases(kTraceFile)), NameOf);

}  // namespace
