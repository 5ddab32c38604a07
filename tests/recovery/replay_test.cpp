// SPDX-License-Identifier: Apache-2.0

// Tests Reads that return records of the checkpoint file, including a file that is damaged or cannot be read.
#include <cerrno>
#include <cstring>

#include "tests/recovery/recovery_fixture.h"

namespace {

using testing::Contains;
using testing::ElementsAre;

constexpr char kReadFromChkPt[] = "ReadFromChkPt";

class Replay : public RecoveryFixture {
  protected:
    static ExpectedError ReadFailed(const std::string& what, const std::string& reason) {
        return ExpectedError(kReadFromChkPt, what).Calling("fread").Processing("Checkpoint", reason);
    }
    static std::string LengthField(std::uint64_t length) {
        return {reinterpret_cast<const char*>(&length), sizeof length};
    }
};

TEST_F(Replay, ARecordGoesStraightToTheHostsBuffer) {
    BeginReplay(1, {std::string("a\0b\r\n\x1A", 6)});
    const ReadOutcome read = Read();
    EXPECT_TRUE(Gives(read, std::string("a\0b\r\n\x1A", 6)));
    EXPECT_EQ(read.buffer.substr(6), std::string(65536 - 6, static_cast<char>(kHostByte)));
    EXPECT_THAT(CallsOn(kCkFile), ElementsAre("tell ck.dat", "read ck.dat 8", "read ck.dat 6"));
}

TEST_F(Replay, ARecordOfNoBytesIsReturnedAsOne) {
    BeginReplay(1, {"", "b"});
    const ReadOutcome read = Read();
    EXPECT_TRUE(Gives(read, ""));
    EXPECT_THAT(trace.NewLines(), Contains(Info(kReadFromChkPt, "Checkpoint record length: 0")));
    EXPECT_TRUE(Gives(Read(), "b"));
    EXPECT_EQ(mq.Sequence(), "");
    EXPECT_EQ(TakePosition().CkPtMsgCount, 2);
}

TEST_F(Replay, EachRecordReadIsThePositionOfAGetPos) {
    BeginReplay(1, {"a", "bb", "ccc"});
    EXPECT_TRUE(Gives(Read(), "a"));
    EXPECT_TRUE(Gives(Read(), "bb"));
    EXPECT_TRUE(Is(TakePosition(), 2, 2, 4 + 9));
}

TEST_F(Replay, ARecordOfTheBlocksizeIsReturned) {
    const std::string full(65536, 'F');
    BeginReplay(1, {full});
    EXPECT_TRUE(Gives(Read(), full));
}

struct BadLength {
    std::uint64_t length;
    const char* printed;
};

class LengthAboveBlocksize : public Replay, public testing::WithParamInterface<BadLength> {};

TEST_P(LengthAboveBlocksize, IsRefusedAndNotSkipped) {
    WriteFile(kCkFile, CkBytes(1) + LengthField(GetParam().length) + std::string(70000, 'x'));
    BeginCheckpointing();
    EXPECT_EQ(SetPos({1, 0, 0}).returnCode, pmrcOK);
    PassOver();
    const ReadOutcome read = Read();
    const ExpectedError error =
        ExpectedError(kReadFromChkPt, "checkpoint record length").Processing("Checkpoint", "Undefined");
    EXPECT_TRUE(FailsWith(read, error));
    EXPECT_EQ(read.recordLength, 0U);
    EXPECT_EQ(read.buffer, std::string(65536, static_cast<char>(kHostByte)));
    const std::string printed = GetParam().printed;
    EXPECT_EQ(trace.NewLines(), Traced("Read", pmrcFailure,
                                       {{Info(kReadFromChkPt, "Checkpoint record length: " + printed),
                                         Error(kReadFromChkPt, "MQA0152: <!ERROR! Invalid record length (" +
                                                                   printed + "), read 65536>")},
                                        error.TraceLines()}));
    EXPECT_EQ(mq.Sequence(), "");
    EXPECT_TRUE(Is(TakePosition(), 2, 0, 4));
}

INSTANTIATE_TEST_SUITE_P(Lengths, LengthAboveBlocksize,
                         testing::Values(BadLength{65537, "65537"}, BadLength{0x80000000, "-2147483648"},
                                         BadLength{0x100000005, "5"}, BadLength{~0ULL, "-1"},
                                         BadLength{0x8000000000000000, "0"}));

TEST_F(Replay, AtLevel1ABadLengthIsAJobEvent) {
    WriteFile(kCkFile, CkBytes(1) + LengthField(65537));
    BeginCheckpointing("", 1);
    EXPECT_EQ(SetPos({1, 0, 0}).returnCode, pmrcOK);
    PassOver();
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    const ExpectedError error =
        ExpectedError(kReadFromChkPt, "checkpoint record length").Processing("Checkpoint", "Undefined");
    EXPECT_EQ(trace.NewLines(),
              Chain({{Error(kReadFromChkPt, "MQA0152: <!ERROR! Invalid record length (65537), read 65536>")},
                     error.TraceLines()}));
}

TEST_F(Replay, AtLevel1ATornRecordIsAJobEvent) {
    WriteFile(kCkFile, CkBytes(1) + LengthField(4) + "abc");
    BeginCheckpointing("", 1);
    EXPECT_EQ(SetPos({1, 0, 0}).returnCode, pmrcOK);
    PassOver();
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    EXPECT_EQ(trace.NewLines(), Chain({{Error(kReadFromChkPt, ShortRead(4, 3))},
                                       ReadFailed("checkpoint record body", "Undefined").TraceLines()}));
}

TEST_F(Replay, AtLevel2TheLengthOfEachRecordIsTraced) {
    WriteFile(kCkFile, CkBytes(1, {"record"}));
    BeginCheckpointing("", 2);
    EXPECT_EQ(SetPos({1, 0, 0}).returnCode, pmrcOK);
    PassOver();
    EXPECT_TRUE(Gives(Read(), "record"));
    EXPECT_EQ(trace.NewLines(),
              Traced("Read", pmrcOK, {{Info(kReadFromChkPt, "Checkpoint record length: 6")}}));
}

TEST_F(Replay, AnEndOfTheInputThatTheHostAsksForComesAfterTheReplay) {
    BeginReplay(1, {"a", "b"});
    EXPECT_EQ(PutAttribute("GEN_EOF", "").returnCode, pmrcOK);
    EXPECT_TRUE(Gives(Read(), "a"));
    EXPECT_TRUE(Gives(Read(), "b"));
    EXPECT_EQ(Read().returnCode, pmrcEOF);
    EXPECT_EQ(mq.Sequence(), "");
}

TEST_F(Replay, AFailureToGetThePositionFailsTheRead) {
    BeginReplay(1, {"a", "b"});
    faults->Add({.call = FileCall::Tell, .file = kCkFile, .error = EIO});
    const ReadOutcome read = Read();
    const ExpectedError error = ExpectedError(kReadFromChkPt, "checkpoint")
                                    .Calling("fgetpos")
                                    .Processing("Checkpoint", std::strerror(EIO));
    EXPECT_TRUE(FailsWith(read, error));
    EXPECT_EQ(read.recordLength, 0U);
    EXPECT_EQ(trace.NewLines(), Traced("Read", pmrcFailure, {error.TraceLines()}));
    EXPECT_EQ(mq.Sequence(), "");
    EXPECT_TRUE(Gives(Read(), "a")) << "nothing was skipped";
}

class LengthReadInPart : public Replay, public testing::WithParamInterface<std::size_t> {};

TEST_P(LengthReadInPart, FailsTheReadWhenTheFileIsNotAtItsEnd) {
    BeginReplay(1, {"a"});
    faults->Add({.call = FileCall::Read, .file = kCkFile, .error = EIO, .transferred = GetParam()});
    const ReadOutcome read = Read();
    const ExpectedError error = ReadFailed("checkpoint record length", std::strerror(EIO));
    EXPECT_TRUE(FailsWith(read, error));
    EXPECT_EQ(read.recordLength, 0U);
    const Lines counts = {Error(kReadFromChkPt, ShortRead(8, static_cast<std::int64_t>(GetParam())))};
    EXPECT_EQ(trace.NewLines(), Traced("Read", pmrcFailure, {counts, error.TraceLines()}));
    EXPECT_EQ(mq.Sequence(), "");
}

INSTANTIATE_TEST_SUITE_P(Bytes, LengthReadInPart, testing::Values(0, 1, 7));

TEST_F(Replay, ARecordReadInPartFailsTheRead) {
    BeginReplay(1, {"record"});
    faults->Add({.call = FileCall::Read, .file = kCkFile, .nth = 2, .error = EIO, .transferred = 4});
    const ReadOutcome read = Read();
    const ExpectedError error = ReadFailed("checkpoint record body", std::strerror(EIO));
    EXPECT_TRUE(FailsWith(read, error));
    EXPECT_EQ(read.recordLength, 0U);
    EXPECT_EQ(
        trace.NewLines(),
        Traced("Read", pmrcFailure,
               {{Info(kReadFromChkPt, "Checkpoint record length: 6"), Error(kReadFromChkPt, ShortRead(6, 4))},
                error.TraceLines()}));
    EXPECT_EQ(mq.Sequence(), "") << "a failed replay neither reads the queue nor backs out";
    EXPECT_TRUE(Is(TakePosition(), 2, 0, 4));
}

TEST_F(Replay, ASetPosAfterAFailedReadReplaysEverything) {
    BeginReplay(1, {"a", "b"});
    faults->Add({.call = FileCall::Read, .file = kCkFile, .nth = 2, .error = EIO});
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    EXPECT_EQ(SetPos({1, 0, 0}).returnCode, pmrcOK);
    EXPECT_THAT(ReadAll(), ElementsAre("a", "b"));
}

TEST_F(Replay, ARequestedEndComesAfterTheRecordsOfTheFile) {
    BeginReplay(1, {"a", "b"});
    ASSERT_EQ(PutAttribute("GEN_EOF", "").returnCode, pmrcOK);
    EXPECT_THAT(ReadAll(), ElementsAre("a", "b"));
    EXPECT_EQ(mq.Sequence(), "");
}

TEST_F(Replay, AnExpiredTimeOutTakesEffectAfterTheRecordsOfTheFile) {
    BeginReplay(1, {"a", "b"});
    ASSERT_EQ(PutAttribute("TIMEOUT_SECONDS", "-1").returnCode, pmrcOK);
    EXPECT_TRUE(Gives(Read(), "a"));
    EXPECT_TRUE(Gives(Read(), "b"));
    EXPECT_EQ(Read().returnCode, pmrcTimeout);
    EXPECT_EQ(mq.Sequence(), "");
}

// What Reads must return from a file that is cut at some byte, derived only from the format.
struct Remains {
    std::vector<std::string> records;
    std::int64_t bodyBytes = -1;  ///< bytes that are left of the record that was cut; -1 if no record was
    std::int64_t bodyLength = 0;
};

Remains WhatRemains(const std::vector<std::string>& records, std::size_t bytes) {
    Remains remains;
    std::size_t at = 4;
    for (const std::string& record : records) {
        if (at + 8 > bytes) return remains;
        at += 8;
        if (at + record.size() > bytes) {
            remains.bodyBytes = static_cast<std::int64_t>(bytes - at);
            remains.bodyLength = static_cast<std::int64_t>(record.size());
            return remains;
        }
        at += record.size();
        remains.records.push_back(record);
    }
    return remains;
}

TEST_F(Replay, AFileCutAtAnyByteReturnsItsCompleteRecordsAndReportsATornOne) {
    const std::vector<std::string> records = {"alpha", "", "beta", std::string("\0\xFF", 2)};
    const std::string whole = CkBytes(1, records);
    for (std::size_t bytes = 4; bytes <= whole.size(); ++bytes) {
        SCOPED_TRACE("cut to " + std::to_string(bytes) + " bytes");
        if (bytes > 4) StartNewProcess();
        WriteFile(kCkFile, whole.substr(0, bytes));
        BeginCheckpointing();
        ASSERT_EQ(SetPos({1, 0, 0}).returnCode, pmrcOK);
        const Remains remains = WhatRemains(records, bytes);
        for (const std::string& record : remains.records)
            EXPECT_TRUE(Gives(Read(), record));
        PassOver();
        mq.onGet.clear();
        if (remains.bodyBytes < 0) {
            Deliver({"new"});
            EXPECT_THAT(trace.NewLines(), Contains(Info(kReadFromChkPt, "EOF on Checkpoint file")));
            continue;
        }
        const ReadOutcome read = Read();
        EXPECT_TRUE(FailsWith(read, ReadFailed("checkpoint record body", "Undefined")));
        EXPECT_EQ(read.recordLength, 0U);
        EXPECT_THAT(trace.NewLines(),
                    Contains(Error(kReadFromChkPt, ShortRead(remains.bodyLength, remains.bodyBytes))));
        EXPECT_EQ(mq.Sequence(), "");
    }
}

TEST_F(Replay, EveryByteOfALengthFieldThatIsDamagedIsSurvived) {
    const std::vector<std::string> records = {"alpha", "beta"};
    for (std::size_t byte = 4; byte < 12; ++byte) {
        SCOPED_TRACE("byte " + std::to_string(byte));
        if (byte > 4) StartNewProcess();
        std::string damaged = CkBytes(1, records);
        damaged[byte] = static_cast<char>(damaged[byte] ^ 0x80);
        WriteFile(kCkFile, damaged);
        BeginCheckpointing();
        ASSERT_EQ(SetPos({1, 0, 0}).returnCode, pmrcOK);
        const ReadOutcome read = Read();
        EXPECT_EQ(read.returnCode, pmrcFailure);
        EXPECT_EQ(read.recordLength, 0U);
        EXPECT_EQ(mq.Count(Verb::Get), 0U);
    }
}

}  // namespace
