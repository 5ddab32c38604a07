// SPDX-License-Identifier: Apache-2.0

// Tests the name of the temporary checkpoint file and the buffer of the last record. Both exist only with
// CKFILE.
#include "platform/process.h"
#include "tests/params/params_fixture.h"
#include "tests/support/fault_plan.h"

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

class TemporaryFileTest : public ParamsFixture {
  protected:
    std::string number_ = std::to_string(platform::CurrentProcessId());

    /// Runs Init with this checkpoint file and returns the trace that follows the report and the channel.
    std::vector<std::string> TraceOfPath(const std::string& path) {
        std::vector<std::string> lines = TraceOfInit("-CKFILE " + path);
        if (lines.size() < 2) return {};
        return {lines.end() - 2, lines.end()};
    }
    static std::string Cutting(std::size_t position) {
        return "ParseParms(info): i=" + std::to_string(position) + ", PATH_DELIMITER='" + kPathDelimiter +
               "'";
    }
    std::string Named(const std::string& path) {
        return "ParseParms(info): Temporary checkpoint file: '" + path + "MQAMtmp." + number_ + "'";
    }
    static std::string Path(std::string path) {
        for (char& c : path) {
            if (c == '|') c = kPathDelimiter;
        }
        return path;
    }
};

TEST_F(TemporaryFileTest, IsInTheDirectoryOfTheCheckpointFile) {
    EXPECT_THAT(TraceOfPath(Path("work|load.dat")), ElementsAre(Cutting(5), Named(Path("work|"))));
}

TEST_F(TemporaryFileTest, IsInTheCurrentDirectoryForABareName) {
    EXPECT_THAT(TraceOfPath("load.dat"), ElementsAre(Cutting(0), Named("")));
}

TEST_F(TemporaryFileTest, IsCutAfterTheLastDelimiter) {
    EXPECT_THAT(TraceOfPath(Path("|a|b.c||load.dat")), ElementsAre(Cutting(8), Named(Path("|a|b.c||"))));
}

TEST_F(TemporaryFileTest, ConsidersOnlyThePlatformsOwnDelimiter_Kept) {
    const std::string other(1, kPathDelimiter == '/' ? '\\' : '/');
    EXPECT_THAT(TraceOfPath("D:" + other + "work" + other + "load.dat"), ElementsAre(Cutting(0), Named("")));
}

TEST_F(TemporaryFileTest, OfAPathThatIsADirectoryIsInIt) {
    EXPECT_THAT(TraceOfPath(Path("subdir|")), ElementsAre(Cutting(7), Named(Path("subdir|"))));
}

TEST_F(TemporaryFileTest, HasNoNameAndNoBufferWithoutCkfile) {
    FaultPlan faults(module);
    Fault fault{FileCall::Allocate, ""};
    fault.bytes = 12345 + 8;
    faults.Add(fault);
    const std::vector<std::string> lines = TraceOfInit("-BKSZ 12345");
    EXPECT_THAT(lines, Not(Contains(HasSubstr("PATH_DELIMITER"))));
    EXPECT_THAT(lines, Not(Contains(HasSubstr("Temporary checkpoint file"))));
    EXPECT_EQ(faults.Struck(), 0);
}

TEST_F(TemporaryFileTest, NameOf32766CharactersIsAccepted) {
    const std::size_t directoryLength = 32766 - 8 - number_.size();
    const std::string path = Path(std::string(directoryLength - 1, 'd') + "|");
    const std::vector<std::string> lines = TraceOfPath(path + "k");
    EXPECT_THAT(lines, ElementsAre(Cutting(directoryLength),
                                   "ParseParms(info): " + Cut("Temporary checkpoint file: '" + path)));
}

TEST_F(TemporaryFileTest, NameOf32767CharactersFailsAfterTheReport) {
    const std::size_t directoryLength = 32767 - 8 - number_.size();
    const std::string path = Path(std::string(directoryLength - 1, 'd') + "|");
    const ExpectedError error =
        ParametersError("MQA0135: <Length of temporary checkpoint file (32767) exceeds maximum of 32766>");
    EXPECT_TRUE(FailsWith(Init(Required("-TRCL 1 trace.txt -CKFILE " + path + "k")), error));
    const std::vector<std::string> lines = trace.Lines();
    EXPECT_THAT(lines, Contains(Cutting(directoryLength)));
    EXPECT_THAT(lines, Contains(error.TraceLines().front()));
    EXPECT_THAT(lines, Not(Contains(HasSubstr("Temporary checkpoint file: "))));
    EXPECT_THAT(PrintedAtOpen(), HasSubstr("     .        MQ read wait interval: 15\n"));
}

TEST_F(TemporaryFileTest, LongestNameThatFailsIsReportedByItsLength) {
    const std::string path = Path(std::string(32765, 'd') + "|");
    const std::string length = std::to_string(32766 + 8 + number_.size());
    EXPECT_TRUE(FailsWith(Init(Required("-CKFILE " + path)),
                          ParametersError("MQA0135: <Length of temporary checkpoint file (" + length +
                                          ") exceeds maximum of 32766>")));
}

TEST_F(TemporaryFileTest, RecordBufferThatCannotBeAllocatedFailsInit) {
    FaultPlan faults(module);
    Fault fault{FileCall::Allocate, ""};
    fault.bytes = 12345 + 8;
    faults.Add(fault);
    EXPECT_TRUE(FailsWith(Init(Required("-TRCL 1 trace.txt -CKFILE ck.dat -BKSZ 12345")),
                          ParametersError("memory allocation failed")));
    EXPECT_EQ(faults.Struck(), 1);
    EXPECT_THAT(trace.Lines(), Contains(Named("")));
    StartOver();
    EXPECT_TRUE(Succeeds(Init("-CKFILE ck.dat -BKSZ 12345")));
}

TEST_F(TemporaryFileTest, EachInitAllocatesTheRecordBufferForItsOwnBlockSize) {
    FaultPlan faults(module);
    for (const std::size_t blockSize : {100U, 200U}) {
        Fault fault{FileCall::Allocate, ""};
        fault.bytes = blockSize + 8;
        faults.Add(fault);
        EXPECT_EQ(Init(Required("-CKFILE ck.dat -BKSZ " + std::to_string(blockSize))).returnCode,
                  pmrcFailure);
        StartOver();
    }
    EXPECT_EQ(faults.Struck(), 2);
}

}  // namespace
