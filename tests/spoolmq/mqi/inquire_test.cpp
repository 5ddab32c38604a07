// SPDX-License-Identifier: Apache-2.0

// Tests MQINQ.
#include <cstring>

#include "tests/spoolmq/support/spool_test.h"

namespace {

class InquireTest : public SpoolTest {
  protected:
    void SetUp() override { ASSERT_EQ(kDone, Connect("QM1", &connection_)); }

    Codes OpenWith(mqi::MQOD* od, MQLONG options) {
        Codes codes;
        Mq().Open(connection_, od, options, &object_, &codes.compCode, &codes.reason);
        return codes;
    }
    Codes OpenQ(MQLONG options) { return Open(connection_, "Q", options, &object_); }
};

TEST_F(InquireTest, ReturnsTheAttributesOfTheQueue) {
    SetQueue("max_depth = 77\nbackout_threshold = 5\nbackout_queue = Q.BACKOUT\nget = disabled\n");
    ASSERT_EQ(kDone, OpenQ(kInquire));
    const MQLONG selectors[] = {15, 2016, 22, 9, 20, 23, 13, 2019, 16, 4};
    MQLONG numbers[8] = {};
    char text[96];
    Codes codes;
    Mq().Inq(connection_, object_, 10, selectors, 8, numbers, 96, text, &codes.compCode, &codes.reason);
    ASSERT_EQ(kDone, codes);
    const MQLONG expected[] = {77, 5, 1, 1, 1, 104857600, 1, 2};
    EXPECT_EQ(0, std::memcmp(expected, numbers, sizeof expected));
    EXPECT_EQ("Q" + std::string(47, ' ') + "Q.BACKOUT" + std::string(39, ' '), std::string(text, 96));
}

TEST_F(InquireTest, ReturnsTheAttributesOfTheQueueManager) {
    SetQmgr("ccsid = 819\nmax_uncommitted = 12\n");
    mqi::MQOD od = NewOd("");
    od.ObjectType = mqi::MQOT_Q_MGR;
    ASSERT_EQ(kDone, OpenWith(&od, kInquire));
    EXPECT_EQ(819, Inquire(connection_, object_, 2));
    EXPECT_EQ(12, Inquire(connection_, object_, 33));
    const MQLONG selector = 2015;
    char name[48];
    Codes codes;
    Mq().Inq(connection_, object_, 1, &selector, 0, nullptr, 48, name, &codes.compCode, &codes.reason);
    EXPECT_EQ("QM1" + std::string(45, ' '), std::string(name, 48));
}

TEST_F(InquireTest, WithTooLittleRoomFillsWhatFitsAndWarns) {
    ASSERT_EQ(kDone, OpenQ(kInquire));
    const MQLONG selectors[] = {15, 23, 2016};
    MQLONG number = -1;
    char text[4] = {};
    Codes codes;
    Mq().Inq(connection_, object_, 2, selectors, 1, &number, 0, nullptr, &codes.compCode, &codes.reason);
    EXPECT_EQ(WarnedWith(mqi::MQRC_INT_ATTR_COUNT_TOO_SMALL), codes);
    EXPECT_EQ(999999999, number);
    Mq().Inq(connection_, object_, 1, selectors + 2, 0, nullptr, 4, text, &codes.compCode, &codes.reason);
    EXPECT_EQ(WarnedWith(mqi::MQRC_CHAR_ATTRS_TOO_SHORT), codes);
    EXPECT_EQ("Q   ", std::string(text, 4));
}

TEST_F(InquireTest, RefusesUnknownSelectorsAndHandlesNotOpenForInquiry) {
    ASSERT_EQ(kDone, OpenQ(kInquire));
    MQLONG number = -1;
    Codes codes;
    MQLONG selector = 1999;
    Mq().Inq(connection_, object_, 1, &selector, 1, &number, 0, nullptr, &codes.compCode, &codes.reason);
    EXPECT_EQ(FailedWith(mqi::MQRC_SELECTOR_ERROR), codes);
    selector = 2015;
    Mq().Inq(connection_, object_, 1, &selector, 1, &number, 0, nullptr, &codes.compCode, &codes.reason);
    EXPECT_EQ(FailedWith(mqi::MQRC_SELECTOR_NOT_FOR_TYPE), codes);
    ASSERT_EQ(kDone, Close(connection_, &object_));
    ASSERT_EQ(kDone, OpenQ(kInputShared));
    selector = 3;
    Mq().Inq(connection_, object_, 1, &selector, 1, &number, 0, nullptr, &codes.compCode, &codes.reason);
    EXPECT_EQ(FailedWith(mqi::MQRC_NOT_OPEN_FOR_INQUIRE), codes);
}

TEST_F(InquireTest, DepthCountsUncommittedMessagesAndInputCountCountsLivingReaders) {
    ASSERT_EQ(kDone, OpenQ(kInputShared | kOutput | kInquire));
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(kDone, Put(connection_, object_, "m"));
    }
    ASSERT_EQ(kDone, Put(connection_, object_, "m", kSync));
    ASSERT_EQ(kDone, Get(connection_, object_, kSync).codes);
    EXPECT_EQ(4, Inquire(connection_, object_, 3));
    EXPECT_EQ(1, Inquire(connection_, object_, 17));
    ChildProcess reader = StartActor({"connect", "QM1", "open", "Q", "2", "say", "open", "hold"});
    WaitForLog("open");
    EXPECT_EQ(2, Inquire(connection_, object_, 17));
    KillChild(reader);
    WaitForChild(&reader);
    EXPECT_EQ(1, Inquire(connection_, object_, 17));
}

}  // namespace
