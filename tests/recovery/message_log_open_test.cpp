// SPDX-License-Identifier: Apache-2.0

// Tests how Open opens the message log: the file calls, the trace, and a file whose existence cannot be
// determined or that cannot be opened.
#include <cerrno>
#include <cstring>

#include "tests/recovery/recovery_fixture.h"

namespace {

using testing::ElementsAre;

constexpr char kLogKeyword[] = "-QMGR QM1 -QNM Q1 -TRCL 4 trace.txt -LOG log.dat";
constexpr char kOpenLogFile[] = "OpenLogFile";

class MessageLogOpen : public RecoveryFixture {
  protected:
    void InitWithLog() {
        ASSERT_TRUE(Succeeds(Init(kLogKeyword)));
        PassOver();
    }
    static ExpectedError OpenFailed(const std::string& reason) {
        return ExpectedError(kOpenLogFile,
                             "MQA0141: <Log file (log.dat) open failed. Reason '" + reason + "'>")
            .Calling(" ");
    }
    /// Checks that no log is open. The host can see this only from what Close does.
    void ExpectNoLogIsOpen() {
        PassOver();
        EXPECT_EQ(Close().returnCode, pmrcOK);
        EXPECT_EQ(trace.NewLines(),
                  Traced("Close", pmrcOK, {{Info("PIDMMain", "Messages received via MQGET: 0")}}));
        EXPECT_EQ(Deletions(kLogFile), 0U);
    }
};

TEST_F(MessageLogOpen, AMissingFileIsCreated) {
    InitWithLog();
    EXPECT_TRUE(Succeeds(Open()));
    EXPECT_EQ(
        trace.NewLines(),
        Traced("Open", pmrcOK,
               {{Info(kOpenLogFile, "Log file doen't exists, will create"), Info(kOpenLogFile, "Log opened"),
                 Info("PIDMMain", "Queue Manager open"), Info("PIDMMain", "Queue open")}}));
    EXPECT_THAT(CallsOn(kLogFile), ElementsAre("open log.dat rb", "open log.dat wb+"));
    EXPECT_EQ(ReadFile(kLogFile), "");
}

TEST_F(MessageLogOpen, AFileThatExistsIsOpenedForUpdateAndKept) {
    WriteFile(kLogFile, "old bytes");
    InitWithLog();
    EXPECT_TRUE(Succeeds(Open()));
    EXPECT_EQ(trace.NewLines(),
              Traced("Open", pmrcOK,
                     {{Info(kOpenLogFile, "Log file exists, will append"), Info(kOpenLogFile, "Log opened"),
                       Info("PIDMMain", "Queue Manager open"), Info("PIDMMain", "Queue open")}}));
    EXPECT_THAT(CallsOn(kLogFile), ElementsAre("open log.dat rb", "close log.dat", "open log.dat rb+"));
    EXPECT_EQ(ReadFile(kLogFile), "old bytes");
}

TEST_F(MessageLogOpen, WithoutTheKeywordNoLogIsOpened) {
    Begin("");
    Deliver({"record"});
    EXPECT_THAT(faults->LogWithout("trace.txt"), ElementsAre());
}

TEST_F(MessageLogOpen, AFileThatCannotBeProbedFailsBeforeTheConnection) {
    WriteFile(kLogFile, "old bytes");
    InitWithLog();
    faults->Add({.call = FileCall::Open, .file = kLogFile, .error = EACCES});
    const Outcome open = Open();
    const ExpectedError error = OpenFailed(std::strerror(EACCES));
    EXPECT_TRUE(FailsWith(open, error));
    EXPECT_EQ(trace.NewLines(), Traced("Open", pmrcFailure, {error.TraceLines()}));
    EXPECT_THAT(CallsOn(kLogFile), ElementsAre("open log.dat rb"));
    EXPECT_EQ(mq.Sequence(), "");
    EXPECT_EQ(ReadFile(kLogFile), "old bytes");
    ExpectNoLogIsOpen();
}

TEST_F(MessageLogOpen, AFileThatCannotBeCreatedFails) {
    InitWithLog();
    faults->Add({.call = FileCall::Open, .file = kLogFile, .nth = 2, .error = ENOSPC});
    const Outcome open = Open();
    const ExpectedError error = OpenFailed(std::strerror(ENOSPC));
    EXPECT_TRUE(FailsWith(open, error));
    EXPECT_EQ(trace.NewLines(),
              Traced("Open", pmrcFailure,
                     {{Info(kOpenLogFile, "Log file doen't exists, will create")}, error.TraceLines()}));
    EXPECT_EQ(mq.Sequence(), "");
    ExpectNoLogIsOpen();
}

TEST_F(MessageLogOpen, AFileThatCannotBeOpenedForUpdateFailsWithTheReasonOfTheSecondTry) {
    WriteFile(kLogFile, "old bytes");
    InitWithLog();
    faults->Add({.call = FileCall::Open, .file = kLogFile, .nth = 2, .error = EACCES});
    const Outcome open = Open();
    const ExpectedError error = OpenFailed(std::strerror(EACCES));
    EXPECT_TRUE(FailsWith(open, error));
    EXPECT_EQ(trace.NewLines(),
              Traced("Open", pmrcFailure,
                     {{Info(kOpenLogFile, "Log file exists, will append")}, error.TraceLines()}));
    EXPECT_EQ(ReadFile(kLogFile), "old bytes");
    ExpectNoLogIsOpen();
}

TEST_F(MessageLogOpen, AMissingDirectoryLooksLikeAMissingFileAndThenFails) {
    ASSERT_TRUE(Succeeds(Init("-QMGR QM1 -QNM Q1 -TRCL 4 trace.txt -LOG nowhere/log.dat")));
    trace.Skip();
    const ExpectedError error =
        ExpectedError(kOpenLogFile, "MQA0141: <Log file (nowhere/log.dat) open failed. Reason '" +
                                        std::string(std::strerror(ENOENT)) + "'>")
            .Calling(" ");
    EXPECT_TRUE(FailsWith(Open(), error));
    EXPECT_EQ(trace.NewLines(),
              Traced("Open", pmrcFailure,
                     {{Info(kOpenLogFile, "Log file doen't exists, will create")}, error.TraceLines()}));
}

TEST_F(MessageLogOpen, AMessageAboutALongPathIsCutToItsBuffer) {
    const std::string path(2000, 'p');
    ASSERT_TRUE(Succeeds(Init("-QMGR QM1 -QNM Q1 -LOG " + path)));
    const std::string message = ("MQA0141: <Log file (" + path).substr(0, 1023);
    EXPECT_TRUE(FailsWith(Open(), ExpectedError(kOpenLogFile, message).Calling(" ")));
}

TEST_F(MessageLogOpen, AFailedOpenCanBeTriedAgain) {
    InitWithLog();
    faults->Add({.call = FileCall::Open, .file = kLogFile, .error = EACCES});
    EXPECT_EQ(Open().returnCode, pmrcFailure);
    EXPECT_EQ(Open().returnCode, pmrcOK);
    Deliver({"record"});
    EXPECT_EQ(ReadFile(kLogFile), "record");
}

TEST_F(MessageLogOpen, ALogLeftOpenByAFailedOpenIsClosedFirst) {
    InitWithLog();
    mq.onConnx.push_back({.compCode = MQCC_FAILED, .reason = MQRC_Q_MGR_NOT_AVAILABLE});
    EXPECT_EQ(Open().returnCode, pmrcFailure);
    PassOver();
    EXPECT_EQ(Open().returnCode, pmrcOK);
    EXPECT_THAT(CallsOn(kLogFile),
                ElementsAre("close log.dat", "open log.dat rb", "close log.dat", "open log.dat rb+"));
    EXPECT_THAT(trace.NewLines(), testing::Contains(Info(kOpenLogFile, "Log file exists, will append")));
}

TEST_F(MessageLogOpen, ALogLeftOpenByAFailedOpenIsClosedByClose) {
    InitWithLog();
    mq.onConnx.push_back({.compCode = MQCC_FAILED, .reason = MQRC_Q_MGR_NOT_AVAILABLE});
    EXPECT_EQ(Open().returnCode, pmrcFailure);
    PassOver();
    EXPECT_EQ(Close().returnCode, pmrcOK);
    EXPECT_EQ(trace.NewLines(), Traced("Close", pmrcOK,
                                       {{Info("CloseAll", "closing Log"),
                                         Info("CloseLogFile", "Deleting log file ('log.dat')."),
                                         Info("PIDMMain", "Messages received via MQGET: 0")}}));
    EXPECT_FALSE(FileExists(kLogFile));
}

}  // namespace
