// SPDX-License-Identifier: Apache-2.0

// Tests whether Close keeps or deletes the message log, and whether the reasons for its choice survive
// Close, Shut and Init.
#include <cerrno>
#include <cstring>

#include "tests/recovery/recovery_fixture.h"

namespace {

using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

const std::string kPreservingLog = Info("CloseLogFile", "Preserving log file ('log.dat').");
const std::string kDeletingLog = Info("CloseLogFile", "Deleting log file ('log.dat').");
const std::string kClosing = Info("CloseAll", "closing Log");
constexpr char kLogKeywords[] = "-LOG log.dat";

class MessageLogClose : public RecoveryFixture {
  protected:
    Lines LinesOfClose() {
        trace.Skip();
        EXPECT_EQ(Close().returnCode, pmrcOK);
        return trace.NewLines();
    }
    Lines LinesOfShut() {
        trace.Skip();
        EXPECT_EQ(Shut().returnCode, pmrcOK);
        return trace.NewLines();
    }
    static Lines Closed(const Lines& log, int messages = 0) {
        return Traced("Close", pmrcOK,
                      {log,
                       {Info("CloseAll", "closing MQ named Q"), Info("CloseAll", "closing MQ Q Manager"),
                        Info("PIDMMain", "Messages received via MQGET: " + std::to_string(messages))}});
    }
    static Lines ClosedAgain(const Lines& log) {
        return Traced("Close", pmrcOK, {log, {Info("PIDMMain", "Messages received via MQGET: 0")}});
    }
};

TEST_F(MessageLogClose, CloseDeletesTheLogByDefault) {
    Begin(kLogKeywords);
    Deliver({"record"});
    EXPECT_EQ(LinesOfClose(), Closed({kClosing, kDeletingLog}, 1));
    EXPECT_FALSE(FileExists(kLogFile));
    EXPECT_EQ(Deletions(kLogFile), 1U);
}

TEST_F(MessageLogClose, TheStreamIsClosedBeforeTheFileIsDeleted) {
    Begin(kLogKeywords);
    EXPECT_EQ(Close().returnCode, pmrcOK);
    const Lines calls = CallsOn(kLogFile);
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_EQ(calls[0], "close log.dat");
    EXPECT_EQ(Deletions(kLogFile), 1U);
}

TEST_F(MessageLogClose, PreserveRestartInfoYesKeepsTheLog) {
    Begin(kLogKeywords);
    PreserveRestartInfo("YES");
    Deliver({"record"});
    EXPECT_EQ(LinesOfClose(), Closed({kClosing, kPreservingLog}, 1));
    EXPECT_EQ(ReadFile(kLogFile), "record");
}

TEST_F(MessageLogClose, PreserveRestartInfoNoDeletesTheLog) {
    Begin(kLogKeywords);
    PreserveRestartInfo("YES");
    PreserveRestartInfo("NO");
    EXPECT_EQ(LinesOfClose(), Closed({kClosing, kDeletingLog}));
    EXPECT_FALSE(FileExists(kLogFile));
}

TEST_F(MessageLogClose, ARefusedValueLeavesTheChoiceAsItWas) {
    Begin(kLogKeywords);
    PreserveRestartInfo("YES");
    EXPECT_EQ(PutAttribute("PRESERVE_RESTART_INFO", "no").returnCode, pmrcBadAttrValue);
    EXPECT_EQ(LinesOfClose(), Closed({kClosing, kPreservingLog}));
}

TEST_F(MessageLogClose, AnotherCloseNamesAKeptLogAgain) {
    Begin(kLogKeywords);
    PreserveRestartInfo("YES");
    EXPECT_EQ(Close().returnCode, pmrcOK);
    EXPECT_EQ(LinesOfClose(), ClosedAgain({kPreservingLog}));
    EXPECT_EQ(LinesOfClose(), ClosedAgain({kPreservingLog}));
    EXPECT_TRUE(FileExists(kLogFile));
}

TEST_F(MessageLogClose, AKeptLogIsDeletedByALaterCloseWhenPreservingWasCleared) {
    Begin(kLogKeywords);
    PreserveRestartInfo("YES");
    EXPECT_EQ(Close().returnCode, pmrcOK);
    PreserveRestartInfo("NO");
    EXPECT_EQ(LinesOfClose(), ClosedAgain({kDeletingLog}));
    EXPECT_FALSE(FileExists(kLogFile));
    EXPECT_EQ(LinesOfClose(), ClosedAgain({}));
}

TEST_F(MessageLogClose, ShutMakesTheSameChoiceAndThenForgetsIt) {
    Begin(kLogKeywords);
    PreserveRestartInfo("YES");
    EXPECT_EQ(LinesOfShut(), Traced("Shut", pmrcOK,
                                    {{kClosing, kPreservingLog, Info("CloseAll", "closing MQ named Q"),
                                      Info("CloseAll", "closing MQ Q Manager")}}));
    EXPECT_TRUE(FileExists(kLogFile));
    Begin(kLogKeywords);
    EXPECT_EQ(LinesOfClose(), Closed({kClosing, kDeletingLog}));
    EXPECT_FALSE(FileExists(kLogFile));
}

TEST_F(MessageLogClose, ThatALogWasKeptIsRememberedBeyondShut) {
    Begin(kLogKeywords);
    PreserveRestartInfo("YES");
    EXPECT_EQ(Close().returnCode, pmrcOK);
    EXPECT_THAT(LinesOfShut(), Contains(kPreservingLog));
    ASSERT_EQ(Init("-QMGR QM1 -QNM Q1 -TRCL 4 trace.txt").returnCode, pmrcOK);
    EXPECT_TRUE(FileExists(kLogFile));
    EXPECT_EQ(LinesOfShut(), Traced("Shut", pmrcOK, {{kDeletingLog}}));
    EXPECT_FALSE(FileExists(kLogFile));
}

TEST_F(MessageLogClose, AFileThatNoLongerExistsIsNotAFailure) {
    Begin(kLogKeywords);
    PreserveRestartInfo("YES");
    EXPECT_EQ(Close().returnCode, pmrcOK);
    PreserveRestartInfo("NO");
    ASSERT_EQ(std::remove(kLogFile), 0);
    EXPECT_EQ(LinesOfClose(), ClosedAgain({kDeletingLog}));
}

TEST_F(MessageLogClose, ADeletionThatCannotBeCarriedOutIsAWarningOnly) {
    Begin(kLogKeywords);
    Deliver({"record"});
    FailDeletion(kLogFile, EACCES);
    trace.Skip();
    const Outcome close = Close();
    EXPECT_TRUE(Succeeds(close));
    EXPECT_EQ(trace.NewLines(),
              Closed({kClosing, kDeletingLog,
                      Warning("CloseLogFile", "Unable to delete log file (log.dat). Reason '" +
                                                  std::string(std::strerror(EACCES)) + "'")},
                     1));
    EXPECT_EQ(ReadFile(kLogFile), "record");
    EXPECT_EQ(LinesOfClose().size(), 3U) << "a log that could not be deleted does not count as kept";
}

TEST_F(MessageLogClose, AtLevel1OnlyTheJobEventsAreTraced) {
    Begin(kLogKeywords, 1);
    Deliver({"record"});
    EXPECT_EQ(LinesOfClose(), Lines({kClosing, kDeletingLog, Info("CloseAll", "closing MQ named Q"),
                                     Info("CloseAll", "closing MQ Q Manager"),
                                     Info("PIDMMain", "Messages received via MQGET: 1")}));
}

TEST_F(MessageLogClose, ALogIsClosedEvenWhenTheQueueCannotBe) {
    Begin(kLogKeywords);
    mq.onClose.push_back({.compCode = MQCC_FAILED, .reason = 2009});
    EXPECT_EQ(Close().returnCode, pmrcFailure);
    EXPECT_THAT(trace.NewLines(), AllOf(Contains(kDeletingLog), Not(Contains(HasSubstr("Q Manager")))));
    EXPECT_FALSE(FileExists(kLogFile));
}

}  // namespace
