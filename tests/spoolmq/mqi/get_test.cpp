// SPDX-License-Identifier: Apache-2.0

// Tests MQGET: order, sizes, waiting, selection, browsing, and the states of the queue and the queue manager.
#include <chrono>
#include <cstring>
#include <thread>

#include "tests/spoolmq/support/spool_test.h"

namespace {

class GetTest : public SpoolTest {
  protected:
    void SetUp() override { ConnectAndOpen(); }
    void PutAll(const std::vector<std::string>& bodies) {
        for (const std::string& body : bodies) {
            ASSERT_EQ(kDone, Put(connection_, object_, body));
        }
    }
    Got GetOne(MQLONG options = kNoSync, std::size_t bufferBytes = 1000) {
        return Get(connection_, object_, options, bufferBytes);
    }
};

/// Runs the action on another thread after 150 ms.
std::thread Later(const std::function<void()>& action) {
    return std::thread([action] {
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        action();
    });
}

TEST_F(GetTest, MessagesAreReturnedInOrderOfArrival) {
    std::vector<std::string> bodies;
    for (int i = 0; i < 300; ++i) {
        bodies.push_back(std::to_string(i));
    }
    PutAll(bodies);
    EXPECT_EQ(bodies, Drain());
}

TEST_F(GetTest, AnyBytesAreReturnedUnchanged) {
    std::string bytes;
    for (int i = 0; i < 100000; ++i) {
        bytes += static_cast<char>(i * 7 + i / 256);
    }
    PutAll({bytes, std::string("\0\n\r\n\0", 5)});
    EXPECT_EQ(bytes, GetOne(kNoSync, 200000).body);
    EXPECT_EQ(std::string("\0\n\r\n\0", 5), GetOne().body);
}

TEST_F(GetTest, TheMessageFileContainsTheBodyAndNothingElse) {
    PutAll({"body"});
    ASSERT_EQ(1U, MessageFiles().size());
    EXPECT_EQ("body", ReadAll(QueuePath() / MessageFiles()[0]));
    ASSERT_EQ(kDone, GetOne().codes);
    EXPECT_TRUE(MessageFiles().empty());
}

TEST_F(GetTest, AnEmptyQueueIs2033AtOnceAndLeavesTheDescriptorUnchanged) {
    const Got got = GetOne();
    EXPECT_EQ(FailedWith(MQRC_NO_MSG_AVAILABLE), got.codes);
    const mqi::MQMD untouched = NewMd();
    EXPECT_EQ(0, std::memcmp(&untouched, &got.md, sizeof untouched));
}

TEST_F(GetTest, AnEmptyMessageIsAMessage) {
    PutAll({"", "x"});
    const Got got = GetOne(kNoSync, 0);
    EXPECT_EQ(kDone, got.codes);
    EXPECT_EQ(0, got.dataLength);
    EXPECT_EQ(WarnedWith(MQRC_TRUNCATED_MSG_FAILED), GetOne(kNoSync, 0).codes);
}

TEST_F(GetTest, ABufferThatIsTooSmallGetsLengthAndLeadingBytesAndLeavesTheMessage) {
    PutAll({"0123456789", "next"});
    for (int i = 0; i < 2; ++i) {
        const Got got = GetOne(kSync, 4);
        EXPECT_EQ(WarnedWith(MQRC_TRUNCATED_MSG_FAILED), got.codes);
        EXPECT_EQ(10, got.dataLength);
        EXPECT_EQ("0123", got.body);
        EXPECT_NE(0, got.md.MsgId[0]);
        EXPECT_EQ(0, got.md.BackoutCount);
    }
    // The get was not part of the unit of work, so a back-out changes nothing.
    ASSERT_EQ(kDone, BackOut(connection_));
    const Got got = GetOne(kSync, 10);
    EXPECT_EQ("0123456789", got.body);
    EXPECT_EQ(0, got.md.BackoutCount);
    ASSERT_EQ(kDone, Commit(connection_));
}

TEST_F(GetTest, AcceptedTruncationTakesTheMessage) {
    PutAll({"0123456789", "next"});
    const Got got = GetOne(kNoSync | mqi::MQGMO_ACCEPT_TRUNCATED_MSG, 4);
    EXPECT_EQ(WarnedWith(mqi::MQRC_TRUNCATED_MSG_ACCEPTED), got.codes);
    EXPECT_EQ(10, got.dataLength);
    EXPECT_EQ("0123", got.body);
    EXPECT_EQ("next", GetOne().body);
}

TEST_F(GetTest, NoMoreThanTheMessageIsWrittenToTheBuffer) {
    PutAll({"abc"});
    char buffer[8];
    std::memset(buffer, '#', sizeof buffer);
    mqi::MQMD md = NewMd();
    mqi::MQGMO gmo = NewGmo(kNoSync);
    MQLONG length = -1;
    Codes codes;
    Mq().Get(connection_, object_, &md, &gmo, 8, buffer, &length, &codes.compCode, &codes.reason);
    EXPECT_EQ(kDone, codes);
    EXPECT_EQ("abc#####", std::string(buffer, 8));
}

TEST_F(GetTest, TheDescriptorOfTheMessageIsReturned) {
    mqi::MQMD md = NewMd(2);
    std::memcpy(md.Format, "MQSTR   ", 8);
    std::memcpy(md.CorrelId, "correlation identifier..", 24);
    std::memcpy(md.ReplyToQ, "ANSWERS", 7);
    md.Persistence = 0;
    md.Priority = 4;
    md.Report = 0x100;
    md.MsgType = 1;
    md.CodedCharSetId = 819;
    md.Encoding = 273;
    md.MsgSeqNumber = 3;
    ASSERT_EQ(kDone, PutWith(connection_, object_, "m", &md));
    const Got got = GetWith(connection_, object_, NewMd(2), NewGmo(kNoSync));
    ASSERT_EQ(kDone, got.codes);
    EXPECT_EQ(0, std::memcmp(md.MsgId, got.md.MsgId, 24));
    EXPECT_EQ("MQSTR   ", std::string(got.md.Format, 8));
    EXPECT_EQ("correlation identifier..", std::string(reinterpret_cast<const char*>(got.md.CorrelId), 24));
    EXPECT_EQ("ANSWERS" + std::string(41, ' '), std::string(got.md.ReplyToQ, 48));
    EXPECT_EQ(0, got.md.Persistence);
    EXPECT_EQ(4, got.md.Priority);
    EXPECT_EQ(0x100, got.md.Report);
    EXPECT_EQ(1, got.md.MsgType);
    EXPECT_EQ(819, got.md.CodedCharSetId);
    EXPECT_EQ(273, got.md.Encoding);
    EXPECT_EQ(3, got.md.MsgSeqNumber);
    EXPECT_EQ(std::string(md.PutDate, 8), std::string(got.md.PutDate, 8));
    EXPECT_EQ(std::string(md.PutTime, 8), std::string(got.md.PutTime, 8));
}

TEST_F(GetTest, TheDescriptorHasTheValuesThatWereLeftToQueueAndQueueManager) {
    SetQmgr("ccsid = 850\n");
    SetQueue("default_priority = 7\ndefault_persistence = no\n");
    PutAll({"m"});
    const Got got = GetOne();
    EXPECT_EQ(850, got.md.CodedCharSetId);
    EXPECT_EQ(7, got.md.Priority);
    EXPECT_EQ(0, got.md.Persistence);
}

TEST_F(GetTest, EveryPublishedVersionOfBothStructuresIsAcceptedAndNothingAfterItIsTouched) {
    const std::size_t mdLengths[] = {324, 364};
    const std::size_t gmoLengths[] = {72, 80, 100, 112};
    for (MQLONG mdVersion = 1; mdVersion <= 2; ++mdVersion) {
        for (MQLONG gmoVersion = 1; gmoVersion <= 4; ++gmoVersion) {
            PutAll({"m"});
            mqi::MQMD md = NewMd(mdVersion);
            mqi::MQGMO gmo = NewGmo(kNoSync, gmoVersion);
            auto* mdBytes = reinterpret_cast<unsigned char*>(&md);
            auto* gmoBytes = reinterpret_cast<unsigned char*>(&gmo);
            const std::size_t mdLength = mdLengths[mdVersion - 1];
            const std::size_t gmoLength = gmoLengths[gmoVersion - 1];
            std::memset(mdBytes + mdLength, 0xEE, sizeof md - mdLength);
            std::memset(gmoBytes + gmoLength, 0xEE, sizeof gmo - gmoLength);
            const Got got = GetWith(connection_, object_, md, gmo);
            ASSERT_EQ(kDone, got.codes) << mdVersion << gmoVersion;
            EXPECT_EQ(mdVersion, got.md.Version);
            EXPECT_EQ("Q" + std::string(47, ' '), std::string(got.gmo.ResolvedQName, 48));
            if (gmoVersion >= 3) {
                EXPECT_EQ(1, got.gmo.ReturnedLength);
            }
            mdBytes = const_cast<unsigned char*>(reinterpret_cast<const unsigned char*>(&got.md));
            gmoBytes = const_cast<unsigned char*>(reinterpret_cast<const unsigned char*>(&got.gmo));
            for (std::size_t i = mdLength; i < sizeof md; ++i) {
                ASSERT_EQ(0xEE, mdBytes[i]) << i;
            }
            for (std::size_t i = gmoLength; i < sizeof gmo; ++i) {
                ASSERT_EQ(0xEE, gmoBytes[i]) << i;
            }
        }
    }
}

TEST_F(GetTest, StructuresOfUnknownVersionOrNameAreRefused) {
    PutAll({"m"});
    EXPECT_EQ(FailedWith(mqi::MQRC_MD_ERROR), GetWith(connection_, object_, NewMd(3), NewGmo(kNoSync)).codes);
    EXPECT_EQ(FailedWith(mqi::MQRC_MD_ERROR), GetWith(connection_, object_, NewMd(0), NewGmo(kNoSync)).codes);
    EXPECT_EQ(FailedWith(mqi::MQRC_GMO_ERROR),
              GetWith(connection_, object_, NewMd(), NewGmo(kNoSync, 5)).codes);
    mqi::MQGMO gmo = NewGmo(kNoSync);
    gmo.StrucId[0] = 'X';
    EXPECT_EQ(FailedWith(mqi::MQRC_GMO_ERROR), GetWith(connection_, object_, NewMd(), gmo).codes);
    EXPECT_EQ("m", GetOne().body);
}

TEST_F(GetTest, WrongArgumentsAreRefusedAndTakeNothing) {
    PutAll({"m"});
    mqi::MQMD md = NewMd();
    mqi::MQGMO gmo = NewGmo(kNoSync);
    MQLONG length = 0;
    char buffer[8];
    Codes codes;
    Mq().Get(connection_, object_, &md, &gmo, -1, buffer, &length, &codes.compCode, &codes.reason);
    EXPECT_EQ(FailedWith(mqi::MQRC_BUFFER_LENGTH_ERROR), codes);
    Mq().Get(connection_, object_, &md, &gmo, 8, nullptr, &length, &codes.compCode, &codes.reason);
    EXPECT_EQ(FailedWith(mqi::MQRC_BUFFER_ERROR), codes);
    Mq().Get(connection_, object_, &md, &gmo, 8, buffer, nullptr, &codes.compCode, &codes.reason);
    EXPECT_EQ(FailedWith(mqi::MQRC_DATA_LENGTH_ERROR), codes);
    EXPECT_EQ(FailedWith(mqi::MQRC_OPTIONS_ERROR), GetOne(kSync | kNoSync).codes);
    EXPECT_EQ(FailedWith(mqi::MQRC_OPTIONS_ERROR), GetOne(kSync | mqi::MQGMO_BROWSE_FIRST).codes);
    EXPECT_EQ(FailedWith(mqi::MQRC_FUNCTION_NOT_SUPPORTED), GetOne(kNoSync | mqi::MQGMO_SET_SIGNAL).codes);
    gmo = NewGmo(kNoSync | kWait);
    gmo.WaitInterval = -2;
    EXPECT_EQ(FailedWith(mqi::MQRC_WAIT_INTERVAL_ERROR), GetWith(connection_, object_, md, gmo).codes);
    gmo = NewGmo(kNoSync, 2);
    gmo.MatchOptions = 64;
    EXPECT_EQ(FailedWith(mqi::MQRC_MATCH_OPTIONS_ERROR), GetWith(connection_, object_, md, gmo).codes);
    EXPECT_EQ("m", GetOne().body);
}

TEST_F(GetTest, AHandleNotOpenForInputIs2037AndNotForBrowse2036) {
    MQHOBJ output = -1;
    MQHOBJ input = -1;
    ASSERT_EQ(kDone, Open(connection_, "Q", kOutput, &output));
    ASSERT_EQ(kDone, Open(connection_, "Q", kInputShared, &input));
    EXPECT_EQ(FailedWith(mqi::MQRC_NOT_OPEN_FOR_INPUT), Get(connection_, output, kNoSync).codes);
    EXPECT_EQ(FailedWith(mqi::MQRC_NOT_OPEN_FOR_BROWSE),
              Get(connection_, input, mqi::MQGMO_BROWSE_FIRST).codes);
}

// ---- waiting

TEST_F(GetTest, AWaitEndsWith2033AfterItsInterval) {
    mqi::MQGMO gmo = NewGmo(kNoSync | kWait);
    gmo.WaitInterval = 120;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(FailedWith(MQRC_NO_MSG_AVAILABLE), GetWith(connection_, object_, NewMd(), gmo).codes);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(100));
}

TEST_F(GetTest, AMessageThatArrivesEndsAnUnlimitedWait) {
    MQHCONN other = -1;
    MQHOBJ object = -1;
    ConnectAgain(&other, &object);
    std::thread later = Later([&] { EXPECT_EQ(kDone, Put(other, object, "at last")); });
    mqi::MQGMO gmo = NewGmo(kNoSync | kWait);
    gmo.WaitInterval = -1;
    EXPECT_EQ("at last", GetWith(connection_, object_, NewMd(), gmo).body);
    later.join();
    EXPECT_EQ(kDone, Disconnect(&other));
}

TEST_F(GetTest, ACommitElsewhereEndsAWait) {
    MQHCONN other = -1;
    MQHOBJ object = -1;
    ConnectAgain(&other, &object);
    ASSERT_EQ(kDone, Put(other, object, "committed", kSync));
    EXPECT_EQ(FailedWith(MQRC_NO_MSG_AVAILABLE), GetOne().codes);
    std::thread later = Later([&] { EXPECT_EQ(kDone, Commit(other)); });
    mqi::MQGMO gmo = NewGmo(kNoSync | kWait);
    gmo.WaitInterval = -1;
    EXPECT_EQ("committed", GetWith(connection_, object_, NewMd(), gmo).body);
    later.join();
    EXPECT_EQ(kDone, Disconnect(&other));
}

TEST_F(GetTest, AWaitEndsWhenTheStateOfQueueOrQueueManagerChanges) {
    const auto waitFor = [&](MQLONG options) {
        mqi::MQGMO gmo = NewGmo(kNoSync | kWait | options);
        gmo.WaitInterval = -1;
        return GetWith(connection_, object_, NewMd(), gmo).codes;
    };
    std::thread later = Later([&] { SetQueue("get = disabled\n"); });
    EXPECT_EQ(FailedWith(mqi::MQRC_GET_INHIBITED), waitFor(0));
    later.join();
    SetQueue("get = enabled\n");
    later = Later([&] { SetQmgr("state = quiescing\n"); });
    EXPECT_EQ(FailedWith(mqi::MQRC_Q_MGR_QUIESCING), waitFor(mqi::MQGMO_FAIL_IF_QUIESCING));
    later.join();
    later = Later([&] { SetQmgr("state = stopping\n"); });
    EXPECT_EQ(FailedWith(mqi::MQRC_Q_MGR_STOPPING), waitFor(0));
    later.join();
    later = Later([&] { SetQmgr("state = ended\n"); });
    SetQmgr("state = running\n");
    EXPECT_EQ(FailedWith(mqi::MQRC_CONNECTION_BROKEN), waitFor(0));
    later.join();
    EXPECT_EQ(FailedWith(mqi::MQRC_CONNECTION_BROKEN), Commit(connection_));
    EXPECT_EQ(FailedWith(mqi::MQRC_CONNECTION_BROKEN), Disconnect(&connection_));
    EXPECT_EQ(-1, connection_);
}

TEST_F(GetTest, OneArrivalWakesOneOfSeveralWaiters) {
    const int readers = 3;
    std::vector<std::thread> threads;
    std::atomic<int> got{0};
    for (int i = 0; i < readers; ++i) {
        threads.emplace_back([&] {
            MQHCONN connection = -1;
            MQHOBJ object = -1;
            ConnectAgain(&connection, &object);
            mqi::MQGMO gmo = NewGmo(kNoSync | kWait);
            gmo.WaitInterval = 700;
            if (GetWith(connection, object, NewMd(), gmo).codes == kDone) {
                ++got;
            }
            EXPECT_EQ(kDone, Disconnect(&connection));
        });
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    PutAll({"one"});
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(1, got);
}

TEST_F(GetTest, ADeletedQueueIs2052) {
    ASSERT_EQ(FailedWith(MQRC_NO_MSG_AVAILABLE), GetOne().codes);
    std::error_code failure;
    std::filesystem::rename(QueuePath(), std::filesystem::path(Root()) / "QM1" / "GONE", failure);
    if (failure) {
        GTEST_SKIP() << "the system does not delete a directory that is in use: " << failure.message();
    }
    EXPECT_EQ(FailedWith(mqi::MQRC_Q_DELETED), GetOne().codes);
    EXPECT_EQ(FailedWith(mqi::MQRC_Q_DELETED), Put(connection_, object_, "m"));
}

// ---- selection

TEST_F(GetTest, IdentifiersSelectMessagesAndZerosMatchEverything) {
    std::vector<mqi::MQMD> descriptors;
    for (int i = 0; i < 3; ++i) {
        mqi::MQMD md = NewMd();
        md.CorrelId[0] = static_cast<MQBYTE>(i == 2 ? 1 : i);
        ASSERT_EQ(kDone, PutWith(connection_, object_, std::to_string(i), &md));
        descriptors.push_back(md);
    }
    mqi::MQMD wanted = NewMd();
    std::memcpy(wanted.MsgId, descriptors[1].MsgId, 24);
    EXPECT_EQ("1", GetWith(connection_, object_, wanted, NewGmo(kNoSync)).body);
    EXPECT_EQ(FailedWith(MQRC_NO_MSG_AVAILABLE),
              GetWith(connection_, object_, wanted, NewGmo(kNoSync)).codes);
    wanted = NewMd();
    wanted.CorrelId[0] = 1;
    EXPECT_EQ("2", GetWith(connection_, object_, wanted, NewGmo(kNoSync)).body);
    // From version 2 on, the match options decide which identifiers are compared.
    mqi::MQGMO gmo = NewGmo(kNoSync, 2);
    gmo.MatchOptions = 0;
    EXPECT_EQ("0", GetWith(connection_, object_, wanted, gmo).body);
}

TEST_F(GetTest, AWaitForAnIdentifierSkipsOtherMessages) {
    PutAll({"other"});
    MQHCONN other = -1;
    MQHOBJ object = -1;
    ConnectAgain(&other, &object);
    mqi::MQMD wanted = NewMd();
    wanted.CorrelId[5] = 9;
    std::thread later = Later([&] {
        mqi::MQMD md = wanted;
        EXPECT_EQ(kDone, PutWith(other, object, "wanted", &md));
    });
    mqi::MQGMO gmo = NewGmo(kNoSync | kWait);
    gmo.WaitInterval = -1;
    EXPECT_EQ("wanted", GetWith(connection_, object_, wanted, gmo).body);
    later.join();
    EXPECT_EQ("other", GetOne().body);
    EXPECT_EQ(kDone, Disconnect(&other));
}

// ---- browsing

TEST_F(GetTest, BrowsingShowsEveryMessageAndTakesNone) {
    PutAll({"a", "b", "c"});
    EXPECT_EQ("a", GetOne(mqi::MQGMO_BROWSE_FIRST).body);
    EXPECT_EQ("b", GetOne(mqi::MQGMO_BROWSE_NEXT).body);
    EXPECT_EQ("b", GetOne(mqi::MQGMO_BROWSE_MSG_UNDER_CURSOR).body);
    EXPECT_EQ("c", GetOne(mqi::MQGMO_BROWSE_NEXT).body);
    EXPECT_EQ(FailedWith(MQRC_NO_MSG_AVAILABLE), GetOne(mqi::MQGMO_BROWSE_NEXT).codes);
    EXPECT_EQ("a", GetOne(mqi::MQGMO_BROWSE_FIRST).body);
    EXPECT_EQ(std::vector<std::string>({"a", "b", "c"}), Drain());
}

TEST_F(GetTest, TheMessageUnderTheCursorCanBeTaken) {
    PutAll({"a", "b", "c"});
    EXPECT_EQ(FailedWith(mqi::MQRC_NO_MSG_UNDER_CURSOR), GetOne(kNoSync | mqi::MQGMO_MSG_UNDER_CURSOR).codes);
    EXPECT_EQ("a", GetOne(mqi::MQGMO_BROWSE_FIRST).body);
    EXPECT_EQ("b", GetOne(mqi::MQGMO_BROWSE_NEXT).body);
    EXPECT_EQ("b", GetOne(kSync | mqi::MQGMO_MSG_UNDER_CURSOR).body);
    EXPECT_EQ(FailedWith(mqi::MQRC_NO_MSG_UNDER_CURSOR), GetOne(kNoSync | mqi::MQGMO_MSG_UNDER_CURSOR).codes);
    EXPECT_EQ("c", GetOne(mqi::MQGMO_BROWSE_NEXT).body);
    ASSERT_EQ(kDone, Commit(connection_));
    EXPECT_EQ(std::vector<std::string>({"a", "c"}), Drain());
}

// ---- states of queue and queue manager

TEST_F(GetTest, InhibitedGetsAre2016) {
    PutAll({"m"});
    SetQueue("get = disabled\n");
    EXPECT_EQ(FailedWith(mqi::MQRC_GET_INHIBITED), GetOne().codes);
    SetQueue("get = enabled\n");
    EXPECT_EQ("m", GetOne().body);
}

TEST_F(GetTest, QuiescingFailsOnlyCallsWithFailIfQuiescing) {
    PutAll({"m"});
    SetQmgr("state = quiescing\n");
    EXPECT_EQ(FailedWith(mqi::MQRC_Q_MGR_QUIESCING), GetOne(kNoSync | mqi::MQGMO_FAIL_IF_QUIESCING).codes);
    EXPECT_EQ("m", GetOne().body);
}

TEST_F(GetTest, AttributesThatBecomeInvalidAreReportedAndTheLastValidOnesApply) {
    PutAll({"m"});
    SetQueue("get = sometimes\n");
    testing::internal::CaptureStderr();
    EXPECT_EQ("m", GetOne().body);
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find(".queue.ini, line 1: get is"));
}

}  // namespace
