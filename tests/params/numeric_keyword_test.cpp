// SPDX-License-Identifier: Apache-2.0

// Tests the keywords with a number: the limits, what counts as a number, and the effect of the number.
#include <cstring>

#include "tests/params/params_fixture.h"

using testing::ElementsAreArray;

namespace {

struct Rejected {
    const char* name;
    const char* keyword;
    const char* value;
    const char* message;
};

void PrintTo(const Rejected& row, std::ostream* out) {
    *out << row.keyword << ' ' << row.value;
}

std::string RejectedName(const testing::TestParamInfo<Rejected>& row) {
    return std::string(row.param.keyword) + row.param.name;
}

class RejectedNumberTest : public ParamsFixture, public testing::WithParamInterface<Rejected> {};

TEST_P(RejectedNumberTest, FailsWithItsMessage) {
    const Rejected& row = GetParam();
    EXPECT_TRUE(
        FailsWith(Init(Required(std::string(row.keyword) + " " + row.value)), KeywordError(row.message)));
}

const Rejected kRejected[] = {
    {"Zero", "BKSZ", "0", "MQA0106: <Blocksize (BKSZ) value: 0 < min (1) or > max 16777216>"},
    {"Negative", "BKSZ", "-1", "MQA0106: <Blocksize (BKSZ) value: -1 < min (1) or > max 16777216>"},
    {"OneTooMany", "BKSZ", "16777217",
     "MQA0106: <Blocksize (BKSZ) value: 16777217 < min (1) or > max 16777216>"},
    {"Letters", "BKSZ", "abc", "MQA0106: <Blocksize (BKSZ) value: 0 < min (1) or > max 16777216>"},
    {"TwoTo32PlusOne", "BKSZ", "4294967297",
     "MQA0106: <Blocksize (BKSZ) value: 2147483647 < min (1) or > max 16777216>"},
    {"BelowMinusTwoTo63", "BKSZ", "-99999999999999999999",
     "MQA0106: <Blocksize (BKSZ) value: -2147483648 < min (1) or > max 16777216>"},

    {"Zero", "RWAIT", "0",
     "MQA0107: <Read wait interval (RWAIT) value: 0 out of range (-1 or 1<seconds<600)>"},
    {"MinusTwo", "RWAIT", "-2",
     "MQA0107: <Read wait interval (RWAIT) value: -2 out of range (-1 or 1<seconds<600)>"},
    {"OneTooMany", "RWAIT", "601",
     "MQA0107: <Read wait interval (RWAIT) value: 601 out of range (-1 or 1<seconds<600)>"},
    {"Letters", "RWAIT", "long",
     "MQA0107: <Read wait interval (RWAIT) value: 0 out of range (-1 or 1<seconds<600)>"},
    {"TwoTo32PlusOne", "RWAIT", "4294967297",
     "MQA0107: <Read wait interval (RWAIT) value: 2147483647 out of range (-1 or 1<seconds<600)>"},
    {"MinusTwoTo32PlusOne", "RWAIT", "-4294967295",
     "MQA0107: <Read wait interval (RWAIT) value: -2147483648 out of range (-1 or 1<seconds<600)>"},

    {"Zero", "OTENACITY", "0",
     "MQA0108: <MQ Open tenacity (OTENACITY) value: 0 out of range (1<seconds<6000)>"},
    {"Negative", "OTENACITY", "-1",
     "MQA0108: <MQ Open tenacity (OTENACITY) value: -1 out of range (1<seconds<6000)>"},
    {"OneTooMany", "OTENACITY", "6001",
     "MQA0108: <MQ Open tenacity (OTENACITY) value: 6001 out of range (1<seconds<6000)>"},
    {"Letters", "OTENACITY", "x5",
     "MQA0108: <MQ Open tenacity (OTENACITY) value: 0 out of range (1<seconds<6000)>"},
    {"TwoTo32PlusOne", "OTENACITY", "4294967297",
     "MQA0108: <MQ Open tenacity (OTENACITY) value: 2147483647 out of range (1<seconds<6000)>"},

    {"Zero", "OWAIT", "0", "MQA0109: <Open wait interval  (OWAIT) value: 0 out of range (1<seconds<600)>"},
    {"Negative", "OWAIT", "-600",
     "MQA0109: <Open wait interval  (OWAIT) value: -600 out of range (1<seconds<600)>"},
    {"OneTooMany", "OWAIT", "601",
     "MQA0109: <Open wait interval  (OWAIT) value: 601 out of range (1<seconds<600)>"},
    {"Letters", "OWAIT", "five",
     "MQA0109: <Open wait interval  (OWAIT) value: 0 out of range (1<seconds<600)>"},
    {"TwoTo32PlusOne", "OWAIT", "4294967297",
     "MQA0109: <Open wait interval  (OWAIT) value: 2147483647 out of range (1<seconds<600)>"},
};

INSTANTIATE_TEST_SUITE_P(Row, RejectedNumberTest, testing::ValuesIn(kRejected), RejectedName);

class NumberTest : public ParamsFixture {
  protected:
    /// Reads a record and returns the wait interval of the MQGET for it.
    MQLONG WaitInterval() {
        mq.PutMessage("record");
        EXPECT_EQ(Read().record, "record");
        return mq.Calls(Verb::Get).back().getOptions.WaitInterval;
    }
    static std::uint32_t LargestRecord(const Outcome& open) {
        std::uint32_t bytes = 0;
        std::memcpy(&bytes, open.data.data() + offsetof(OpenBlock, maxRecordBytes), sizeof bytes);
        return bytes;
    }
};

TEST_F(NumberTest, DefaultsAreInTheReport) {
    EXPECT_THAT(ReportOfInit(""), ElementsAreArray(ExpectedParameters().TraceLines()));
}

TEST_F(NumberTest, SmallestValuesAreAccepted) {
    ExpectedParameters parameters;
    parameters.blockSize = "BlockSize: 1";
    parameters.tenacity = "MQ open retry tenacity: 1";
    parameters.waitInterval = "MQ open wait interval: 1";
    parameters.readWait = "MQ read wait interval: 1";
    EXPECT_THAT(ReportOfInit("-BKSZ 1 -RWAIT 1 -OTENACITY 1 -OWAIT 1"),
                ElementsAreArray(parameters.TraceLines()));
}

TEST_F(NumberTest, LargestValuesAreAccepted) {
    ExpectedParameters parameters;
    parameters.blockSize = "BlockSize: 16777216";
    parameters.tenacity = "MQ open retry tenacity: 6000";
    parameters.waitInterval = "MQ open wait interval: 600";
    parameters.readWait = "MQ read wait interval: 600";
    EXPECT_THAT(ReportOfInit("-BKSZ 16777216 -RWAIT 600 -OTENACITY 6000 -OWAIT 600"),
                ElementsAreArray(parameters.TraceLines()));
}

TEST_F(NumberTest, IsReadFromTheDigitsAfterWhiteSpaceAndSign) {
    // A vertical tab is white space before a number, but it does not separate tokens.
    ExpectedParameters parameters;
    parameters.blockSize = "BlockSize: 77";
    parameters.tenacity = "MQ open retry tenacity: 60";
    parameters.waitInterval = "MQ open wait interval: 12";
    parameters.readWait = "MQ read wait interval: 9";
    EXPECT_THAT(ReportOfInit("-BKSZ +77 -RWAIT \v9 -OTENACITY 60s -OWAIT 0012.9"),
                ElementsAreArray(parameters.TraceLines()));
}

TEST_F(NumberTest, BlockSizeIsTheLargestRecordThatOpenReturns) {
    ASSERT_TRUE(Succeeds(Init(Required("-BKSZ 16777216"))));
    const Outcome outcome = Open();
    ASSERT_TRUE(Succeeds(outcome));
    EXPECT_EQ(LargestRecord(outcome), 16777216U);
}

TEST_F(NumberTest, RejectedBlockSizeStaysStored_Kept) {
    ASSERT_EQ(Init(Required("-BKSZ 16777217")).returnCode, pmrcFailure);
    EXPECT_EQ(LargestRecord(Open()), 16777217U);
}

TEST_F(NumberTest, ReadWaitIsStoredInMilliseconds) {
    InitAndOpen("-RWAIT 600");
    EXPECT_EQ(WaitInterval(), 600000);
}

TEST_F(NumberTest, ReadWaitDefaultsTo15Seconds) {
    InitAndOpen();
    EXPECT_EQ(WaitInterval(), 15000);
}

TEST_F(NumberTest, RejectedReadWaitStaysStoredUnchanged_Kept) {
    ASSERT_EQ(Init(Required("-RWAIT 601")).returnCode, pmrcFailure);
    ASSERT_EQ(Open().returnCode, pmrcOK);
    EXPECT_EQ(WaitInterval(), 601);
}

TEST_F(NumberTest, ReadWaitMinusOneIsIndefinite) {
    ExpectedParameters parameters;
    parameters.readWait = "MQ read wait interval: indefinite";
    EXPECT_THAT(ReportOfInit("-RWAIT -1"), ElementsAreArray(parameters.TraceLines()));
}

}  // namespace
