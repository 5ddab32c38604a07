// SPDX-License-Identifier: Apache-2.0

// Tests what a record adds to the message log and the trace, and how a log that fails affects the load.
#include <cerrno>
#include <cstring>

#include "tests/recovery/recovery_fixture.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr char kWriteLogRec[] = "WriteLogRec";

class MessageLogWrite : public RecoveryFixture {
  protected:
    void BeginLogging(const std::string& keywords = "", int traceLevel = 4) {
        Begin("-LOG log.dat " + keywords, traceLevel);
    }
    static ExpectedError WriteFailed(const std::string& reason) {
        return ExpectedError(kWriteLogRec, " ").Calling("fwrite").Processing("Log", reason);
    }
    static ExpectedError FlushFailed(const std::string& reason) {
        return ExpectedError(kWriteLogRec, "after log write").Calling("fflush").Processing("Log", reason);
    }
    static ExpectedError GoesOnWithoutLog() {
        return ExpectedError(kWriteLogRec, "continuing without Log").Info();
    }
};

TEST_F(MessageLogWrite, RecordsFollowEachOtherAndAreOnDiskAfterEachRead) {
    BeginLogging();
    const std::string binary("\0\r\n\x1A\xFF", 5);
    Deliver({"first"});
    EXPECT_EQ(ReadFile(kLogFile), "first");
    Deliver({binary});
    EXPECT_EQ(ReadFile(kLogFile), "first" + binary);
    Deliver({std::string(65536, 'x')});
    EXPECT_EQ(ReadFile(kLogFile), "first" + binary + std::string(65536, 'x'));
}

TEST_F(MessageLogWrite, EachRecordIsOneWriteAndOneFlush) {
    BeginLogging();
    Deliver({"hello", "world!"});
    EXPECT_THAT(CallsOn(kLogFile),
                ElementsAre("write log.dat 5", "flush log.dat", "write log.dat 6", "flush log.dat"));
}

TEST_F(MessageLogWrite, AReopenedLogIsOverwrittenFromItsBeginning) {
    WriteFile(kLogFile, std::string(1000, 'o'));
    BeginLogging();
    Deliver({"0123456789"});
    EXPECT_EQ(ReadFile(kLogFile), "0123456789" + std::string(990, 'o'));
}

TEST_F(MessageLogWrite, AnotherOpenOfTheSameProcessOverwritesFromTheBeginningToo) {
    BeginLogging();
    PreserveRestartInfo("YES");
    Deliver({"first", "second"});
    EXPECT_EQ(Close().returnCode, pmrcOK);
    EXPECT_EQ(Open().returnCode, pmrcOK);
    Deliver({"THIRD"});
    EXPECT_EQ(ReadFile(kLogFile), "THIRDsecond");
}

TEST_F(MessageLogWrite, TheTraceShowsTheBeginningOfTheRecordAtLevel3) {
    BeginLogging("", 3);
    const std::string record = std::string(40, 'a') + std::string(60, 'b');
    Deliver({record});
    EXPECT_EQ(trace.NewLines(),
              Traced("Read", pmrcOK,
                     {{Info(kWriteLogRec, "Logging 100 byte record."),
                       Info(kWriteLogRec, "beginning 40 chars: " + std::string(40, 'a')),
                       Info("PIDMMain", "message length: 100, begins: " + std::string(20, 'a'))}}));
}

TEST_F(MessageLogWrite, TheTracedBeginningStopsAtAZeroByte) {
    BeginLogging("", 3);
    Deliver({std::string("abc\0defgh", 9), "xy"});
    EXPECT_EQ(trace.NewLines(), Chain({Traced("Read", pmrcOK,
                                              {{Info(kWriteLogRec, "Logging 9 byte record."),
                                                Info(kWriteLogRec, "beginning 9 chars: abc"),
                                                Info("PIDMMain", "message length: 9, begins: abc")}}),
                                       Traced("Read", pmrcOK,
                                              {{Info(kWriteLogRec, "Logging 2 byte record."),
                                                Info(kWriteLogRec, "beginning 2 chars: xy"),
                                                Info("PIDMMain", "message length: 2, begins: xy")}})}));
}

TEST_F(MessageLogWrite, BelowLevel3TheTraceSaysNothingOfTheRecord) {
    BeginLogging("", 2);
    Deliver({"hello"});
    EXPECT_EQ(trace.NewLines(), Traced("Read", pmrcOK));
}

TEST_F(MessageLogWrite, AnEmptyMessageEndsTheInputAndIsNotLogged) {
    BeginLogging();
    mq.PutMessage("");
    EXPECT_EQ(Read().returnCode, pmrcEOF);
    EXPECT_THAT(CallsOn(kLogFile), ElementsAre());
}

TEST_F(MessageLogWrite, ReplayedRecordsAreNotLogged) {
    BeginReplay(1, {"kept"}, "-LOG log.dat");
    EXPECT_TRUE(Gives(Read(), "kept"));
    EXPECT_EQ(ReadFile(kLogFile), "");
    Deliver({"new"});
    EXPECT_EQ(ReadFile(kLogFile), "new");
}

TEST_F(MessageLogWrite, ARecordIsLoggedAfterItsCommit) {
    BeginCheckpointing("-LOG log.dat");
    TakePosition();
    std::string loggedAtCommit = "no commit";
    mq.hook = [&](const MqCall& call) {
        if (call.verb == Verb::Cmit) loggedAtCommit = ReadFile(kLogFile);
    };
    Deliver({"record"});
    EXPECT_EQ(loggedAtCommit, "");
    EXPECT_EQ(ReadFile(kLogFile), "record");
}

TEST_F(MessageLogWrite, AShortWriteEndsTheRequest) {
    BeginLogging();
    mq.PutMessage("record");
    faults->Add({.call = FileCall::Write, .file = kLogFile, .error = ENOSPC, .transferred = 3});
    const ReadOutcome read = Read();
    const ExpectedError error = WriteFailed(std::strerror(ENOSPC));
    EXPECT_TRUE(FailsWith(read, error));
    EXPECT_EQ(read.recordLength, 0U);
    EXPECT_EQ(trace.NewLines(), Traced("Read", pmrcFailure,
                                       {{Info(kWriteLogRec, "Logging 6 byte record."),
                                         Info(kWriteLogRec, "beginning 6 chars: record")},
                                        error.TraceLines()}));
    EXPECT_EQ(mq.Sequence(), "GET");
}

TEST_F(MessageLogWrite, AShortWriteWithTlfYesIsTheSame) {
    BeginLogging("-TLF yes");
    mq.PutMessage("record");
    faults->Add({.call = FileCall::Write, .file = kLogFile, .error = EIO});
    EXPECT_TRUE(FailsWith(Read(), WriteFailed(std::strerror(EIO))));
}

TEST_F(MessageLogWrite, AStreamThatShowsNoErrorHasAnUndefinedReason) {
    BeginLogging();
    mq.PutMessage("record");
    faults->Add({.call = FileCall::Write, .file = kLogFile, .error = ENOSPC, .streamError = false});
    EXPECT_TRUE(FailsWith(Read(), WriteFailed("Undefined")));
}

TEST_F(MessageLogWrite, TheNextReadWritesToTheLogThatFailed) {
    BeginLogging();
    mq.PutMessage("lost");
    faults->Add({.call = FileCall::Write, .file = kLogFile, .streamError = false});
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    PassOver();
    Deliver({"next"});
    EXPECT_THAT(CallsOn(kLogFile), ElementsAre("write log.dat 4", "flush log.dat"));
    EXPECT_EQ(ReadFile(kLogFile), "next");
}

TEST_F(MessageLogWrite, ARecordWhoseLogFailedIsNotCounted) {
    BeginCheckpointing("-LOG log.dat");
    Deliver({"one"});
    mq.PutMessage("two");
    faults->Add({.call = FileCall::Write, .file = kLogFile});
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    EXPECT_TRUE(Is(TakePosition(), 1, 1, 0));
}

TEST_F(MessageLogWrite, WithTlfNoAShortWriteOnlyEndsLogging) {
    BeginLogging("-TLF no");
    mq.PutMessage("record");
    faults->Add({.call = FileCall::Write, .file = kLogFile, .error = ENOSPC, .transferred = 3});
    const ReadOutcome read = Read();
    EXPECT_TRUE(Gives(read, "record"));
    EXPECT_TRUE(Carries(read, GoesOnWithoutLog()));
    EXPECT_EQ(trace.NewLines(), Traced("Read", pmrcOK,
                                       {{Info(kWriteLogRec, "Logging 6 byte record."),
                                         Info(kWriteLogRec, "beginning 6 chars: record")},
                                        WriteFailed(std::strerror(ENOSPC)).Warning().TraceLines(),
                                        GoesOnWithoutLog().TraceLines(),
                                        {Info("PIDMMain", "message length: 6, begins: record")}}));
    EXPECT_THAT(CallsOn(kLogFile), ElementsAre("write log.dat 6", "close log.dat"));
}

TEST_F(MessageLogWrite, WithTlfNoAShortWriteWithoutAStreamErrorHasAnUndefinedReason) {
    BeginLogging("-TLF no");
    mq.PutMessage("record");
    faults->Add({.call = FileCall::Write, .file = kLogFile, .error = ENOSPC, .streamError = false});
    EXPECT_TRUE(Gives(Read(), "record"));
    EXPECT_THAT(trace.NewLines(), Contains("--Reason: Undefined."));
}

TEST_F(MessageLogWrite, AfterASurvivedFailureNothingIsLoggedAndTheFileStays) {
    BeginLogging("-TLF no");
    Deliver({"logged"});
    mq.PutMessage("record");
    faults->Add({.call = FileCall::Write, .file = kLogFile});
    EXPECT_EQ(Read().returnCode, pmrcOK);
    PassOver();
    Deliver({"later"});
    EXPECT_EQ(trace.NewLines(),
              Traced("Read", pmrcOK, {{Info("PIDMMain", "message length: 5, begins: later")}}));
    EXPECT_EQ(Close().returnCode, pmrcOK);
    EXPECT_THAT(trace.NewLines(), Not(Contains(HasSubstr("og file"))));
    EXPECT_THAT(CallsOn(kLogFile), ElementsAre());
    EXPECT_EQ(ReadFile(kLogFile), "logged");
}

TEST_F(MessageLogWrite, AfterASurvivedFailureAnotherOpenDoesNotLogButAnotherInitDoes) {
    BeginLogging("-TLF no");
    mq.PutMessage("record");
    faults->Add({.call = FileCall::Write, .file = kLogFile});
    EXPECT_EQ(Read().returnCode, pmrcOK);
    EXPECT_EQ(Close().returnCode, pmrcOK);
    PassOver();
    EXPECT_EQ(Open().returnCode, pmrcOK);
    Deliver({"unlogged"});
    EXPECT_THAT(CallsOn(kLogFile), ElementsAre());

    EXPECT_EQ(Shut().returnCode, pmrcOK);
    BeginLogging("-TLF no");
    Deliver({"logged"});
    EXPECT_THAT(CallsOn(kLogFile), ElementsAre("write log.dat 6", "flush log.dat"));
}

class MessageLogFlush : public MessageLogWrite, public testing::WithParamInterface<const char*> {};

TEST_P(MessageLogFlush, AFailedFlushEndsTheRequestWhateverTlfSays) {
    BeginLogging(GetParam());
    mq.PutMessage("record");
    faults->Add({.call = FileCall::Flush, .file = kLogFile, .error = ENOSPC});
    const ReadOutcome read = Read();
    const ExpectedError error = FlushFailed(std::strerror(ENOSPC));
    EXPECT_TRUE(FailsWith(read, error));
    EXPECT_EQ(read.recordLength, 0U);
    EXPECT_EQ(trace.NewLines(), Traced("Read", pmrcFailure,
                                       {{Info(kWriteLogRec, "Logging 6 byte record."),
                                         Info(kWriteLogRec, "beginning 6 chars: record")},
                                        error.TraceLines()}));
    EXPECT_EQ(mq.Sequence(), "GET");
    PassOver();
    mq.PutMessage("next");
    EXPECT_EQ(Read().returnCode, pmrcOK);
    EXPECT_THAT(CallsOn(kLogFile), ElementsAre("write log.dat 4", "flush log.dat"));
}

INSTANTIATE_TEST_SUITE_P(Tlf, MessageLogFlush, testing::Values("-TLF yes", "-TLF no"));

TEST_F(MessageLogWrite, AFailedFlushWithoutAStreamErrorHasAnUndefinedReason) {
    BeginLogging();
    mq.PutMessage("record");
    faults->Add({.call = FileCall::Flush, .file = kLogFile, .error = ENOSPC, .streamError = false});
    EXPECT_TRUE(FailsWith(Read(), FlushFailed("Undefined")));
}

}  // namespace
