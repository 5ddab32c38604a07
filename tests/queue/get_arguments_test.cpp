// SPDX-License-Identifier: Apache-2.0

// Tests the arguments of MQGET: handles, buffer, options, wait interval and conversion, and that the
// identifiers are cleared.
#include <gmock/gmock.h>

#include <ostream>

#include "tests/support/fake_clock.h"
#include "tests/support/module_fixture.h"

using testing::ElementsAre;

namespace {

constexpr MQLONG kWait = 1;
constexpr MQLONG kSyncpoint = 2;
constexpr MQLONG kNoSyncpoint = 4;
constexpr MQLONG kConvert = 16384;

template <typename T>
std::string Bytes(const T& structure) {
    return std::string(reinterpret_cast<const char*>(&structure), sizeof structure);
}

class GetArgumentsTest : public ModuleFixture {
  protected:
    MqCall CallOfRead() {
        mq.PutMessage("record");
        EXPECT_EQ(Read().returnCode, pmrcOK);
        return mq.calls.back();
    }
};

TEST_F(GetArgumentsTest, HandlesBufferAndStructuresAreExact) {
    InitAndOpen("-BKSZ 500 -RWAIT 7");
    recordBufferBytes = 500;
    const MqCall call = CallOfRead();
    ASSERT_EQ(call.verb, Verb::Get);
    EXPECT_EQ(call.connection, 7);
    EXPECT_EQ(call.object, 9);
    EXPECT_EQ(call.bufferLength, 500);
    EXPECT_EQ(Bytes(call.descriptor), Bytes(MqmdDefault()));
    MQGMO options = MqgmoDefault();
    options.Options = kWait + kNoSyncpoint;
    options.WaitInterval = 7000;
    EXPECT_EQ(Bytes(call.getOptions), Bytes(options));
}

TEST_F(GetArgumentsTest, MessageIsPutIntoTheHostsBufferAndNothingAfterIt) {
    InitAndOpen("-BKSZ 500");
    recordBufferBytes = 500;
    mq.PutMessage("record");
    const ReadOutcome outcome = Read();
    EXPECT_EQ(outcome.record, "record");
    EXPECT_EQ(outcome.buffer.substr(6), std::string(494, static_cast<char>(kHostByte)));
}

TEST_F(GetArgumentsTest, IdentifiersAreClearedBeforeEveryGet) {
    InitAndOpen();
    CallOfRead();
    const MqCall second = CallOfRead();
    EXPECT_EQ(Bytes(second.descriptor.MsgId), std::string(24, '\0'));
    EXPECT_EQ(Bytes(second.descriptor.CorrelId), std::string(24, '\0'));
}

TEST_F(GetArgumentsTest, WithoutConversionTheDescriptorKeepsWhatTheLastGetLeft) {
    InitAndOpen();
    MqGetOutcome message;
    message.bytes = "record";
    message.encoding = 273;
    message.codedCharSetId = 500;
    mq.onGet.push_back(message);
    ASSERT_EQ(Read().returnCode, pmrcOK);
    const MqCall second = CallOfRead();
    EXPECT_EQ(second.descriptor.Encoding, 273);
    EXPECT_EQ(second.descriptor.CodedCharSetId, 500);
    EXPECT_EQ(second.getOptions.Options, kWait + kNoSyncpoint);
}

TEST_F(GetArgumentsTest, TheDescriptorIsKeptThroughShutAndInit) {
    InitAndOpen("-CONVERT 819");
    CallOfRead();
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    InitAndOpen();
    const MqCall call = CallOfRead();
    EXPECT_EQ(call.descriptor.CodedCharSetId, 1208) << "what the first life's MQGET gave back";
    EXPECT_EQ(call.getOptions.Options, kWait + kNoSyncpoint);
}

TEST_F(GetArgumentsTest, ConversionIsAskedForInEveryGet) {
    InitAndOpen("-CONVERT YES");
    for (int i = 0; i < 2; ++i) {
        MqGetOutcome message;
        message.bytes = "record";
        message.encoding = 273;
        message.codedCharSetId = 500;
        mq.onGet.push_back(message);
        ASSERT_EQ(Read().returnCode, pmrcOK);
        EXPECT_EQ(mq.calls.back().getOptions.Options, kWait + kNoSyncpoint + kConvert);
        EXPECT_EQ(mq.calls.back().descriptor.Encoding, 546);
        EXPECT_EQ(mq.calls.back().descriptor.CodedCharSetId, 0);
    }
}

TEST_F(GetArgumentsTest, ConversionToACodedCharacterSetNamesIt) {
    InitAndOpen("-CONVERT 1208");
    EXPECT_EQ(CallOfRead().descriptor.CodedCharSetId, 1208);
    EXPECT_EQ(mq.calls.back().getOptions.Options, kWait + kNoSyncpoint + kConvert);
}

TEST_F(GetArgumentsTest, ConversionToANegativeNumberAsksForTheQueueManagers) {
    InitAndOpen("-CONVERT -5");
    EXPECT_EQ(CallOfRead().descriptor.CodedCharSetId, 0);
    EXPECT_EQ(mq.calls.back().getOptions.Options, kWait + kNoSyncpoint + kConvert);
}

TEST_F(GetArgumentsTest, FirstGetIsUnderSyncpointWhenALogFailureTerminates) {
    InitAndOpen("-LOG log.dat");
    EXPECT_EQ(CallOfRead().getOptions.Options, kWait + kSyncpoint);
    EXPECT_EQ(CallOfRead().getOptions.Options, kWait + kNoSyncpoint);
}

TEST_F(GetArgumentsTest, SyncpointOfTheFirstGetIsUsedUpByAnEmptyQueueToo) {
    FakeClock clock(module);
    InitAndOpen("-LOG log.dat -RWAIT 1");
    mq.hook = [&](const MqCall&) { clock.Advance(1); };
    ASSERT_EQ(Read().returnCode, pmrcEOF);
    std::vector<MQLONG> options;
    for (const MqCall& call : mq.Calls(Verb::Get))
        options.push_back(call.getOptions.Options);
    EXPECT_THAT(options, ElementsAre(kWait + kSyncpoint, kWait + kNoSyncpoint));
}

TEST_F(GetArgumentsTest, NoSyncpointWithoutALogOrWhenItsFailureIsSurvived) {
    InitAndOpen("-TLF YES");
    EXPECT_EQ(CallOfRead().getOptions.Options, kWait + kNoSyncpoint);
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    InitAndOpen("-LOG log.dat -TLF NO");
    EXPECT_EQ(CallOfRead().getOptions.Options, kWait + kNoSyncpoint);
}

TEST_F(GetArgumentsTest, EachOpenGivesTheFirstGetItsSyncpointAgain) {
    InitAndOpen("-LOG log.dat");
    CallOfRead();
    CallOfRead();
    ASSERT_EQ(Close().returnCode, pmrcOK);
    ASSERT_EQ(Open().returnCode, pmrcOK);
    EXPECT_EQ(CallOfRead().getOptions.Options, kWait + kSyncpoint);
    EXPECT_EQ(CallOfRead().getOptions.Options, kWait + kNoSyncpoint);
}

TEST_F(GetArgumentsTest, SyncpointOfACheckpointIsLeftByTheNextOpen) {
    InitAndOpen("-CKFILE ck.dat");
    ASSERT_EQ(GetPos().returnCode, pmrcOK);
    for (int i = 0; i < 2; ++i) {
        mq.PutMessage("record");
        ASSERT_EQ(Read().returnCode, pmrcOK);
        EXPECT_EQ(mq.Calls(Verb::Get).back().getOptions.Options, kWait + kSyncpoint);
    }
    ASSERT_EQ(Close().returnCode, pmrcOK);
    ASSERT_EQ(Open().returnCode, pmrcOK);
    mq.PutMessage("record");
    ASSERT_EQ(Read().returnCode, pmrcOK);
    EXPECT_EQ(mq.Calls(Verb::Get).back().getOptions.Options, kWait + kNoSyncpoint);
}

struct Interval {
    const char* rwait;    ///< keyword, empty for the default
    const char* timeout;  ///< value of the attribute, empty if it is not sent
    MQLONG milliseconds;
};

void PrintTo(const Interval& interval, std::ostream* out) {
    *out << "RWAIT '" << interval.rwait << "' TIMEOUT_SECONDS '" << interval.timeout << "'";
}

class WaitIntervalTest : public GetArgumentsTest, public testing::WithParamInterface<Interval> {};

TEST_P(WaitIntervalTest, FollowsReadWaitAndTimeOut) {
    FakeClock clock(module);
    InitAndOpen(GetParam().rwait);
    if (*GetParam().timeout != '\0') PutAttribute("TIMEOUT_SECONDS", GetParam().timeout);
    EXPECT_EQ(CallOfRead().getOptions.WaitInterval, GetParam().milliseconds);
}

INSTANTIATE_TEST_SUITE_P(Each, WaitIntervalTest,
                         testing::Values(Interval{"", "", 15000}, Interval{"-RWAIT 1", "", 1000},
                                         Interval{"-RWAIT 600", "", 600000}, Interval{"-RWAIT -1", "", 15000},
                                         Interval{"-RWAIT 10", "4", 2500}, Interval{"-RWAIT 10", "3", 3333},
                                         Interval{"-RWAIT 1", "4", 250}, Interval{"-RWAIT 600", "2400", 250},
                                         Interval{"-RWAIT 1", "1000", 1}, Interval{"-RWAIT 1", "1001", 1000},
                                         Interval{"-RWAIT -1", "4", 3750}, Interval{"-RWAIT -1", "15000", 1},
                                         Interval{"-RWAIT -1", "15001", 15000},
                                         Interval{"-RWAIT 10", "0", 10000}, Interval{"-RWAIT -1", "0", 15000},
                                         Interval{"-RWAIT 10", "abc", 10000},
                                         Interval{"-RWAIT 10", "  4 seconds", 2500}));

}  // namespace
