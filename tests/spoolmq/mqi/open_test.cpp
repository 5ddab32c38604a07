// MQOPEN, MQCLOSE, MQINQ.
#include <cstring>

#include "tests/spoolmq/support/spool_test.h"

namespace {

class OpenTest : public SpoolTest {
  protected:
    void SetUp() override { ASSERT_EQ(kDone, Connect("QM1", &connection_)); }

    Codes OpenWith(mqi::MQOD* od, MQLONG options) {
        Codes codes;
        Mq().Open(connection_, od, options, &object_, &codes.compCode, &codes.reason);
        return codes;
    }
    Codes OpenQ(MQLONG options) { return Open(connection_, "Q", options, &object_); }

    /// Whether another program meets the queue open in a way that excludes this open.
    std::vector<std::string> OpenElsewhere(const std::string& options) {
        ForgetLogs();
        RunActor({"connect", "QM1", "open", "Q", options, "disc"});
        return Log();
    }
};

const std::vector<std::string> kInUse = {"MQOPEN 2/2042"};
const std::vector<std::string> kNoTrouble = {};

TEST_F(OpenTest, UnknownQueueIs2085AndLeavesAnUnusableHandle) {
    object_ = 5;
    EXPECT_EQ(FailedWith(MQRC_UNKNOWN_OBJECT_NAME), Open(connection_, "NOWHERE", kInputShared, &object_));
    EXPECT_EQ(-1, object_);
    EXPECT_EQ(FailedWith(MQRC_UNKNOWN_OBJECT_NAME), Open(connection_, "../QM1/Q", kInputShared, &object_));
    EXPECT_EQ(FailedWith(MQRC_UNKNOWN_OBJECT_NAME), Open(connection_, "", kInputShared, &object_));
    EXPECT_EQ(FailedWith(MQRC_UNKNOWN_OBJECT_NAME), Open(connection_, ".units", kInputShared, &object_));
}

TEST_F(OpenTest, ASlashInAQueueNameIsWrittenInTheFolderAsPercent2F) {
    std::filesystem::create_directory(std::filesystem::path(Root()) / "QM1" / "A%2FB.C");
    EXPECT_EQ(kDone, Open(connection_, "A/B.C", kInputShared, &object_));
}

TEST_F(OpenTest, EveryPublishedVersionOfTheDescriptorIsAcceptedAndNothingBehindItTouched) {
    const std::size_t lengths[] = {168, 208, 344, 424};
    for (MQLONG version = 1; version <= 4; ++version) {
        const std::size_t length = lengths[version - 1];
        struct {
            mqi::MQOD od;
            unsigned char after[16];
        } object{NewOd("Q", version), {}};
        auto* bytes = reinterpret_cast<unsigned char*>(&object);
        std::memset(bytes + length, 0xEE, sizeof object - length);
        EXPECT_EQ(kDone, OpenWith(&object.od, kInputShared)) << version;
        for (std::size_t i = length; i < sizeof object; ++i) {
            ASSERT_EQ(0xEE, bytes[i]) << version << " at " << i;
        }
        EXPECT_EQ(kDone, Close(connection_, &object_));
    }
}

TEST_F(OpenTest, DescriptorsOfUnknownVersionOrNameAre2044) {
    for (const MQLONG version : {0, 5}) {
        mqi::MQOD od = NewOd("Q", version);
        EXPECT_EQ(FailedWith(mqi::MQRC_OD_ERROR), OpenWith(&od, kInputShared));
    }
    mqi::MQOD od = NewOd("Q");
    od.StrucId[0] = 'X';
    EXPECT_EQ(FailedWith(mqi::MQRC_OD_ERROR), OpenWith(&od, kInputShared));
}

TEST_F(OpenTest, ResolvedNamesAreFilledFromVersion3OnForInputAndBlankForInquiry) {
    mqi::MQOD od = NewOd("Q", 3);
    ASSERT_EQ(kDone, OpenWith(&od, kInputShared));
    EXPECT_EQ(std::string("Q") + std::string(47, ' '), std::string(od.ResolvedQName, 48));
    EXPECT_EQ(std::string("QM1") + std::string(45, ' '), std::string(od.ResolvedQMgrName, 48));
    ASSERT_EQ(kDone, OpenWith(&od, kInquire));
    EXPECT_EQ(std::string(48, ' '), std::string(od.ResolvedQName, 48));
}

TEST_F(OpenTest, WrongOptionsTypesAndQueueManagersAreRefused) {
    EXPECT_EQ(FailedWith(mqi::MQRC_OPTIONS_ERROR), OpenQ(0));
    EXPECT_EQ(FailedWith(mqi::MQRC_OPTIONS_ERROR), OpenQ(MQOO_FAIL_IF_QUIESCING));
    EXPECT_EQ(FailedWith(mqi::MQRC_OPTIONS_ERROR), OpenQ(kInputShared | kInputExclusive));
    EXPECT_EQ(FailedWith(mqi::MQRC_OPTIONS_ERROR), OpenQ(kInputShared | 0x40000000));
    mqi::MQOD od = NewOd("Q");
    od.ObjectType = 3;
    EXPECT_EQ(FailedWith(mqi::MQRC_OBJECT_TYPE_ERROR), OpenWith(&od, kInputShared));
    od = NewOd("Q");
    std::memcpy(od.ObjectQMgrName, "QM2", 3);
    EXPECT_EQ(FailedWith(mqi::MQRC_UNKNOWN_OBJECT_Q_MGR), OpenWith(&od, kInputShared));
    std::memcpy(od.ObjectQMgrName, "QM1", 3);
    EXPECT_EQ(kDone, OpenWith(&od, kInputShared));
    od = NewOd("");
    od.ObjectType = mqi::MQOT_Q_MGR;
    EXPECT_EQ(FailedWith(mqi::MQRC_OPTION_NOT_VALID_FOR_TYPE), OpenWith(&od, kInputShared));
}

TEST_F(OpenTest, ExclusiveInputExcludesEveryOtherInputAndNothingElse) {
    ASSERT_EQ(kDone, OpenQ(kInputExclusive));
    EXPECT_EQ(kInUse, OpenElsewhere("2"));
    EXPECT_EQ(kInUse, OpenElsewhere("4"));
    EXPECT_EQ(kInUse, OpenElsewhere("1"));
    EXPECT_EQ(kNoTrouble, OpenElsewhere("8"));
    EXPECT_EQ(kNoTrouble, OpenElsewhere("16"));
    MQHOBJ second = -1;
    EXPECT_EQ(FailedWith(MQRC_OBJECT_IN_USE), Open(connection_, "Q", kInputShared, &second));
    ASSERT_EQ(kDone, Close(connection_, &object_));
    EXPECT_EQ(kNoTrouble, OpenElsewhere("4"));
}

TEST_F(OpenTest, SharedInputExcludesOnlyExclusiveInput) {
    ASSERT_EQ(kDone, OpenQ(kInputShared));
    EXPECT_EQ(kNoTrouble, OpenElsewhere("2"));
    EXPECT_EQ(kInUse, OpenElsewhere("4"));
}

TEST_F(OpenTest, AQueueThatIsNotShareableMakesEveryInputExclusive) {
    SetQueue("shareable = no\n");
    ASSERT_EQ(kDone, OpenQ(kInputShared));
    EXPECT_EQ(kInUse, OpenElsewhere("2"));
}

TEST_F(OpenTest, AsTheQueueDefinesIsSharedUnlessTheQueueSaysExclusive) {
    ASSERT_EQ(kDone, OpenQ(MQOO_INPUT_AS_Q_DEF));
    EXPECT_EQ(kNoTrouble, OpenElsewhere("1"));
    SetQueue("default_open = exclusive\n");
    EXPECT_EQ(kInUse, OpenElsewhere("1"));
}

TEST_F(OpenTest, AnExclusiveReaderThatIsKilledNoLongerExcludes) {
    ChildProcess reader = StartActor({"connect", "QM1", "open", "Q", "4", "say", "open", "hold"});
    WaitForLog("open");
    EXPECT_EQ(FailedWith(MQRC_OBJECT_IN_USE), OpenQ(kInputShared));
    KillChild(reader);
    EXPECT_EQ(kKilled, WaitForChild(&reader));
    EXPECT_EQ(kDone, OpenQ(kInputExclusive));
}

TEST_F(OpenTest, QuiescingFailsOnlyThoseWhoAskedForIt) {
    SetQmgr("state = quiescing\n");
    EXPECT_EQ(FailedWith(mqi::MQRC_Q_MGR_QUIESCING), OpenQ(kInputShared | MQOO_FAIL_IF_QUIESCING));
    EXPECT_EQ(kDone, OpenQ(kInputShared));
    SetQmgr("state = stopping\n");
    EXPECT_EQ(FailedWith(mqi::MQRC_Q_MGR_STOPPING), OpenQ(kInputShared));
}

TEST_F(OpenTest, AClosedHandleIs2019AndCloseSetsItUnusable) {
    ASSERT_EQ(kDone, OpenQ(kInputShared));
    MQHOBJ closed = object_;
    ASSERT_EQ(kDone, Close(connection_, &object_));
    EXPECT_EQ(-1, object_);
    EXPECT_EQ(FailedWith(mqi::MQRC_HOBJ_ERROR), Close(connection_, &closed));
    EXPECT_EQ(FailedWith(mqi::MQRC_HOBJ_ERROR), Get(connection_, closed, kNoSync).codes);
}

TEST_F(OpenTest, CloseOptionsOfDynamicQueuesAre2045) {
    ASSERT_EQ(kDone, OpenQ(kInputShared));
    Codes codes;
    Mq().Close(connection_, &object_, 1, &codes.compCode, &codes.reason);
    EXPECT_EQ(FailedWith(mqi::MQRC_OPTION_NOT_VALID_FOR_TYPE), codes);
}

TEST_F(OpenTest, CallsOnAHandleThatWasNeverGivenOutAre2018) {
    EXPECT_EQ(FailedWith(mqi::MQRC_HCONN_ERROR), Commit(0));
    EXPECT_EQ(FailedWith(mqi::MQRC_HCONN_ERROR), BackOut(-1));
    EXPECT_EQ(FailedWith(mqi::MQRC_HCONN_ERROR), Open(12345, "Q", kInputShared, &object_));
    EXPECT_EQ(FailedWith(mqi::MQRC_HCONN_ERROR), Get(12345, 2, kNoSync).codes);
}

// MQINQ

TEST_F(OpenTest, InquiryTellsTheAttributesOfTheQueue) {
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

TEST_F(OpenTest, InquiryTellsTheAttributesOfTheQueueManager) {
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

TEST_F(OpenTest, InquiryWithoutRoomFillsWhatFitsAndWarns) {
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

TEST_F(OpenTest, InquiryRefusesUnknownSelectorsAndHandlesNotOpenForIt) {
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

TEST_F(OpenTest, DepthCountsUncommittedMessagesAndInputCountLivingReaders) {
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
