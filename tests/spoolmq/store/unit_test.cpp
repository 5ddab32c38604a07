// SPDX-License-Identifier: Apache-2.0

// Tests the units of work of processes that are not killed.
#include "tests/spoolmq/support/spool_test.h"

namespace {

class UnitTest : public SpoolTest {
  protected:
    void SetUp() override {
        ConnectAndOpen();
        ConnectAgain(&other_, &otherObject_);
    }
    void TearDown() override {
        if (other_ != -1) {
            static_cast<void>(Disconnect(&other_));
        }
    }
    void PutAll(const std::vector<std::string>& bodies) {
        for (const std::string& body : bodies) {
            ASSERT_EQ(kDone, Put(connection_, object_, body));
        }
    }
    [[nodiscard]] Got GetOne(MQLONG options) const { return Get(connection_, object_, options); }
    [[nodiscard]] Got GetOther(MQLONG options) const { return Get(other_, otherObject_, options); }

    MQHCONN other_ = -1;
    MQHOBJ otherObject_ = -1;
};

const Codes kNoMessage = FailedWith(MQRC_NO_MSG_AVAILABLE);

TEST_F(UnitTest, AGetUnderSyncpointIsInvisibleToAllUntilItIsCommitted) {
    PutAll({"m"});
    EXPECT_EQ("m", GetOne(kSync).body);
    EXPECT_EQ(kNoMessage, GetOther(kNoSync).codes);
    EXPECT_EQ(kNoMessage, GetOther(mqi::MQGMO_BROWSE_FIRST).codes);
    EXPECT_EQ(kNoMessage, GetOne(kNoSync).codes);
    ASSERT_EQ(kDone, Commit(connection_));
    EXPECT_EQ(kNoMessage, GetOther(kNoSync).codes);
    EXPECT_EQ(0, Inquire(connection_, object_, 3));
}

TEST_F(UnitTest, ABackOutReturnsMessagesToTheirPlacesWithTheCountRaised) {
    PutAll({"a", "b", "c", "d"});
    EXPECT_EQ("a", GetOne(kSync).body);
    EXPECT_EQ("b", GetOne(kSync).body);
    EXPECT_EQ("c", GetOther(kNoSync).body);
    ASSERT_EQ(kDone, BackOut(connection_));
    Got got = GetOne(kSync);
    EXPECT_EQ("a", got.body);
    EXPECT_EQ(1, got.md.BackoutCount);
    ASSERT_EQ(kDone, BackOut(connection_));
    EXPECT_EQ(std::vector<std::string>({"a~2", "b~1", "d"}), Drain());
}

TEST_F(UnitTest, AMessageBackedOutByAnotherConnectionComesBeforeLaterOnes) {
    PutAll({"a", "b", "c", "d"});
    EXPECT_EQ("a", GetOther(kSync).body);
    EXPECT_EQ("b", GetOne(kNoSync).body);
    ASSERT_EQ(kDone, BackOut(other_));
    EXPECT_EQ("a", GetOne(kNoSync).body);
    EXPECT_EQ("c", GetOne(kNoSync).body);
}

TEST_F(UnitTest, InALongQueueAConnectionGetsWhatItBackedOutAgain) {
    std::vector<std::string> bodies;
    for (int i = 0; i < 1500; ++i) {
        bodies.push_back(std::to_string(i));
    }
    PutAll(bodies);
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ("0", GetOne(kSync).body);
        EXPECT_EQ("1", GetOne(kSync).body);
        ASSERT_EQ(kDone, BackOut(connection_));
    }
    bodies[0] = "0~3";
    bodies[1] = "1~3";
    EXPECT_EQ(bodies, Drain());
}

TEST_F(UnitTest, IdentifiersAndDescriptorSurviveABackOut) {
    mqi::MQMD md = NewMd();
    md.CorrelId[3] = 3;
    ASSERT_EQ(kDone, PutWith(connection_, object_, "m", &md));
    ASSERT_EQ("m", GetOne(kSync).body);
    ASSERT_EQ(kDone, BackOut(connection_));
    const Got got = GetWith(connection_, object_, md, NewGmo(kSync));
    EXPECT_EQ("m", got.body);
    EXPECT_EQ(3, got.md.CorrelId[3]);
    EXPECT_EQ(1, got.md.BackoutCount);
}

TEST_F(UnitTest, PutsUnderSyncpointBecomeAvailableWithTheCommit) {
    ASSERT_EQ(kDone, Put(connection_, object_, "1", kSync));
    ASSERT_EQ(kDone, Put(connection_, object_, "2", kSync));
    EXPECT_EQ(kNoMessage, GetOther(kNoSync).codes);
    EXPECT_EQ(kNoMessage, GetOne(kNoSync).codes);
    ASSERT_EQ(kDone, Commit(connection_));
    EXPECT_EQ(std::vector<std::string>({"1", "2"}), Drain());
}

TEST_F(UnitTest, PutsUnderSyncpointDisappearWithTheBackOut) {
    ASSERT_EQ(kDone, Put(connection_, object_, "1", kSync));
    ASSERT_EQ(kDone, Put(connection_, object_, "kept", kNoSync));
    ASSERT_EQ(kDone, BackOut(connection_));
    EXPECT_EQ(std::vector<std::string>({"kept"}), Drain());
    EXPECT_TRUE(std::filesystem::is_empty(QueuePath() / ".desc"));
}

TEST_F(UnitTest, ACommitAppliesToGetsAndPuts) {
    PutAll({"a", "b", "c"});
    EXPECT_EQ("a", GetOne(kSync).body);
    ASSERT_EQ(kDone, Put(connection_, object_, "answer", kSync));
    EXPECT_EQ("b", GetOne(kSync).body);
    ASSERT_EQ(kDone, Commit(connection_));
    EXPECT_EQ(std::vector<std::string>({"c", "answer"}), Drain());
    EXPECT_TRUE(std::filesystem::is_empty(QueuePath() / ".desc"));
}

TEST_F(UnitTest, AMessagePutEarlierButCommittedLaterComesBeforeLaterOnes) {
    ASSERT_EQ(kDone, Put(other_, otherObject_, "early", kSync));
    PutAll({"x", "y", "z"});
    EXPECT_EQ("x", GetOne(kNoSync).body);
    ASSERT_EQ(kDone, Commit(other_));
    EXPECT_EQ("early", GetOne(kNoSync).body);
    EXPECT_EQ("y", GetOne(kNoSync).body);
}

TEST_F(UnitTest, AGetWithoutSyncpointIsNotBackedOut) {
    PutAll({"a", "b"});
    EXPECT_EQ("a", GetOne(kNoSync).body);
    EXPECT_EQ("b", GetOne(kSync).body);
    ASSERT_EQ(kDone, BackOut(connection_));
    EXPECT_EQ(std::vector<std::string>({"b~1"}), Drain());
}

TEST_F(UnitTest, AGetWithoutEitherOptionIsOutsideSyncpoint) {
    PutAll({"a"});
    EXPECT_EQ("a", GetOne(0).body);
    ASSERT_EQ(kDone, BackOut(connection_));
    EXPECT_TRUE(Drain().empty());
}

TEST_F(UnitTest, SyncpointIfPersistentDependsOnTheMessage) {
    mqi::MQMD md = NewMd();
    md.Persistence = 0;
    ASSERT_EQ(kDone, PutWith(connection_, object_, "volatile", &md));
    md = NewMd();
    md.Persistence = 1;
    ASSERT_EQ(kDone, PutWith(connection_, object_, "persistent", &md));
    EXPECT_EQ("volatile", GetOne(mqi::MQGMO_SYNCPOINT_IF_PERSISTENT).body);
    EXPECT_EQ("persistent", GetOne(mqi::MQGMO_SYNCPOINT_IF_PERSISTENT).body);
    ASSERT_EQ(kDone, BackOut(connection_));
    EXPECT_EQ(std::vector<std::string>({"persistent~1"}), Drain());
}

TEST_F(UnitTest, CommitAndBackOutOfNothingSucceed) {
    EXPECT_EQ(kDone, Commit(connection_));
    EXPECT_EQ(kDone, BackOut(connection_));
}

TEST_F(UnitTest, ClosingTheQueueKeepsTheUnitOfWork) {
    PutAll({"a", "b"});
    EXPECT_EQ("a", GetOne(kSync).body);
    ASSERT_EQ(kDone, Close(connection_, &object_));
    EXPECT_EQ("b", GetOther(kNoSync).body);
    ASSERT_EQ(kDone, BackOut(connection_));
    EXPECT_EQ(std::vector<std::string>({"a~1"}), Drain());
}

TEST_F(UnitTest, DisconnectingCommits) {
    PutAll({"a", "b"});
    EXPECT_EQ("a", GetOne(kSync).body);
    ASSERT_EQ(kDone, Put(connection_, object_, "c", kSync));
    ASSERT_EQ(kDone, Disconnect(&connection_));
    EXPECT_EQ(std::vector<std::string>({"b", "c"}), Drain());
}

TEST_F(UnitTest, TheLimitOfUncommittedMessagesIs2024AndKeepsTheUnitOfWork) {
    SetQmgr("max_uncommitted = 2\n");
    PutAll({"a", "b", "c"});
    EXPECT_EQ("a", GetOne(kSync).body);
    ASSERT_EQ(kDone, Put(connection_, object_, "d", kSync));
    EXPECT_EQ(FailedWith(MQRC_SYNCPOINT_LIMIT_REACHED), GetOne(kSync).codes);
    EXPECT_EQ(FailedWith(MQRC_SYNCPOINT_LIMIT_REACHED), Put(connection_, object_, "e", kSync));
    EXPECT_EQ("b", GetOne(kNoSync).body);
    ASSERT_EQ(kDone, Commit(connection_));
    EXPECT_EQ("c", GetOne(kSync).body);
    ASSERT_EQ(kDone, Commit(connection_));
    EXPECT_EQ(std::vector<std::string>({"d"}), Drain());
}

TEST_F(UnitTest, AQueueManagerThatEndsBacksOut) {
    PutAll({"a"});
    EXPECT_EQ("a", GetOne(kSync).body);
    SetQmgr("state = ended\n");
    EXPECT_EQ(FailedWith(mqi::MQRC_CONNECTION_BROKEN), Commit(connection_));
    SetQmgr("state = running\n");
    EXPECT_EQ(std::vector<std::string>({"a~1"}), Drain());
}

TEST_F(UnitTest, AMessageWithTheLargestBackoutCountKeepsItsPlaceAndCount) {
    WriteQueueFile("20260101-000000-000000001~999999999.msg", "often");
    WriteQueueFile("20260101-000000-000000002~12345678901.msg", "more often");
    for (int i = 0; i < 2; ++i) {
        const Got got = GetOne(kSync);
        EXPECT_EQ("often", got.body);
        EXPECT_EQ(999999999, got.md.BackoutCount);
        EXPECT_EQ("more often", GetOne(kSync).body);
        ASSERT_EQ(kDone, BackOut(connection_));
    }
    EXPECT_EQ(std::vector<std::string>({"often~999999999", "more often~999999999"}), Drain());
}

TEST_F(UnitTest, AFileInPlaceOfTheUnitDirectoryFailsTheGetAndTheMessageStays) {
    PutAll({"a"});
    for (const auto& unit :
         std::filesystem::directory_iterator(std::filesystem::path(Root()) / "QM1/.units")) {
        if (unit.is_directory()) {
            WriteAll(unit.path() / "got", "");
        }
    }
    EXPECT_EQ(FailedWith(mqi::MQRC_RESOURCE_PROBLEM), GetOne(kSync).codes);
    EXPECT_EQ("a", GetOne(kNoSync).body);
}

TEST_F(UnitTest, SyncChangesNoResult) {
    SetQmgr("sync = yes\n");
    PutAll({"a", "b", "c"});
    EXPECT_EQ("a", GetOne(kSync).body);
    ASSERT_EQ(kDone, Commit(connection_));
    EXPECT_EQ("b", GetOne(kSync).body);
    ASSERT_EQ(kDone, Put(connection_, object_, "d", kSync));
    ASSERT_EQ(kDone, Commit(connection_));
    EXPECT_EQ(std::vector<std::string>({"c", "d"}), Drain());
}

}  // namespace
