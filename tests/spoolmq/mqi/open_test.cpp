// SPDX-License-Identifier: Apache-2.0

// Tests MQOPEN and MQCLOSE.
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

    /// Opens the queue from another program and returns what that program logs.
    std::vector<std::string> OpenElsewhere(const std::string& options) {
        RemoveLogs();
        RunActor({"connect", "QM1", "open", "Q", options, "disc"});
        return Log();
    }
};

const std::vector<std::string> kInUse = {"MQOPEN 2/2042"};
const std::vector<std::string> kNoTrouble = {};

TEST_F(OpenTest, AnUnknownQueueIs2085AndTheHandleIsUnusable) {
    object_ = 5;
    EXPECT_EQ(FailedWith(MQRC_UNKNOWN_OBJECT_NAME), Open(connection_, "NOWHERE", kInputShared, &object_));
    EXPECT_EQ(-1, object_);
    EXPECT_EQ(FailedWith(MQRC_UNKNOWN_OBJECT_NAME), Open(connection_, "../QM1/Q", kInputShared, &object_));
    EXPECT_EQ(FailedWith(MQRC_UNKNOWN_OBJECT_NAME), Open(connection_, "", kInputShared, &object_));
    EXPECT_EQ(FailedWith(MQRC_UNKNOWN_OBJECT_NAME), Open(connection_, ".units", kInputShared, &object_));
}

TEST_F(OpenTest, ASlashInAQueueNameIsPercent2FInItsDirectory) {
    std::filesystem::create_directory(std::filesystem::path(Root()) / "QM1" / "A%2FB.C");
    EXPECT_EQ(kDone, Open(connection_, "A/B.C", kInputShared, &object_));
}

TEST_F(OpenTest, EveryPublishedVersionOfTheDescriptorIsAcceptedAndNothingAfterItIsTouched) {
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

TEST_F(OpenTest, InputAsTheQueueDefinesIsSharedUnlessTheQueueSaysExclusive) {
    ASSERT_EQ(kDone, OpenQ(MQOO_INPUT_AS_Q_DEF));
    EXPECT_EQ(kNoTrouble, OpenElsewhere("1"));
    SetQueue("default_open = exclusive\n");
    EXPECT_EQ(kInUse, OpenElsewhere("1"));
}

TEST_F(OpenTest, AnExclusiveReaderThatIsKilledNoLongerExcludesOthers) {
    ChildProcess reader = StartActor({"connect", "QM1", "open", "Q", "4", "say", "open", "hold"});
    WaitForLog("open");
    EXPECT_EQ(FailedWith(MQRC_OBJECT_IN_USE), OpenQ(kInputShared));
    KillChild(reader);
    EXPECT_EQ(kKilled, WaitForChild(&reader));
    EXPECT_EQ(kDone, OpenQ(kInputExclusive));
}

TEST_F(OpenTest, QuiescingFailsOnlyCallsWithFailIfQuiescing) {
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

TEST_F(OpenTest, CallsWithAHandleThatWasNeverAssignedAre2018) {
    EXPECT_EQ(FailedWith(mqi::MQRC_HCONN_ERROR), Commit(0));
    EXPECT_EQ(FailedWith(mqi::MQRC_HCONN_ERROR), BackOut(-1));
    EXPECT_EQ(FailedWith(mqi::MQRC_HCONN_ERROR), Open(12345, "Q", kInputShared, &object_));
    EXPECT_EQ(FailedWith(mqi::MQRC_HCONN_ERROR), Get(12345, 2, kNoSync).codes);
}

}  // namespace
