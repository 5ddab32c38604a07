// SPDX-License-Identifier: Apache-2.0

// Tests files that someone copies or renames into the directory of a queue.
#ifndef _WIN32
#include <sys/stat.h>
#endif

#include <algorithm>
#include <chrono>
#include <cstring>
#include <thread>

#include "tests/spoolmq/support/spool_test.h"

namespace {

class CopiedFilesTest : public SpoolTest {
  protected:
    void SetUp() override {
        SetQueue("settle_ms = 0\n");
        ConnectAndOpen();
    }
    Got GetOne(MQLONG options = kNoSync) { return Get(connection_, object_, options); }
    Got GetWaiting() {
        mqi::MQGMO gmo = NewGmo(kNoSync | kWait);
        gmo.WaitInterval = 10000;
        return GetWith(connection_, object_, NewMd(), gmo);
    }
    void RenameIntoPlace(const std::string& name, const std::string& content) {
        const std::filesystem::path aside = std::filesystem::path(Root()) / "aside";
        WriteAll(aside, content);
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        std::filesystem::rename(aside, QueuePath() / name);
    }
};

TEST_F(CopiedFilesTest, AFileCopiedIntoTheDirectoryIsAMessage) {
    WriteQueueFile("order.csv", std::string("a;b\n\0c", 6));
    const Got got = GetWaiting();
    EXPECT_EQ(std::string("a;b\n\0c", 6), got.body);
    EXPECT_EQ("        ", std::string(got.md.Format, 8));
    EXPECT_EQ(1208, got.md.CodedCharSetId);
    EXPECT_EQ(546, got.md.Encoding);
    EXPECT_EQ("FILEQM1         ", std::string(reinterpret_cast<const char*>(got.md.MsgId), 16));
    EXPECT_EQ('2', got.md.PutDate[0]);
    EXPECT_TRUE(MessageFiles().empty());
}

TEST_F(CopiedFilesTest, FilesHaveFormatAndCharacterSetOfTheQueue) {
    SetQueue("settle_ms = 0\nfile_format = MQSTR\nfile_ccsid = 819\n");
    WriteQueueFile("text", "t");
    const Got got = GetWaiting();
    EXPECT_EQ("MQSTR   ", std::string(got.md.Format, 8));
    EXPECT_EQ(819, got.md.CodedCharSetId);
}

TEST_F(CopiedFilesTest, FilesAndPutMessagesAreReturnedInOrderOfArrival) {
    const auto pause = [] { std::this_thread::sleep_for(std::chrono::milliseconds(40)); };
    ASSERT_EQ(kDone, Put(connection_, object_, "1"));
    pause();
    WriteQueueFile("zzz", "2");
    pause();
    ASSERT_EQ(kDone, Put(connection_, object_, "3"));
    pause();
    WriteQueueFile("aaa", "4");
    pause();
    RenameIntoPlace("mmm", "5");
    pause();
    EXPECT_EQ(std::vector<std::string>({"1", "2", "3", "4", "5"}), Drain());
}

TEST_F(CopiedFilesTest, HiddenFilesDirectoriesAndFilesStillBeingCopiedAreNotMessages) {
    WriteQueueFile(".hidden", "x");
    WriteQueueFile("a.tmp", "x");
    WriteQueueFile("b.part", "x");
    WriteQueueFile("c~", "x");
    std::filesystem::create_directory(QueuePath() / "directory");
    WriteQueueFile("directory/d", "x");
    std::this_thread::sleep_for(std::chrono::milliseconds(40));
    EXPECT_EQ(FailedWith(MQRC_NO_MSG_AVAILABLE), GetOne().codes);
    std::filesystem::rename(QueuePath() / "a.tmp", QueuePath() / "a");
    EXPECT_EQ("x", GetWaiting().body);
}

#ifndef _WIN32
TEST_F(CopiedFilesTest, PipesAndLinksThatLeadNowhereAreNotMessagesAndBlockNoOne) {
    for (const char* name : {"pipe", "20260101-000000-000000001.msg"}) {
        ASSERT_EQ(0, mkfifo((QueuePath() / name).c_str(), 0600));
    }
    std::filesystem::create_symlink("nowhere", QueuePath() / "link");
    std::this_thread::sleep_for(std::chrono::milliseconds(40));
    EXPECT_EQ(FailedWith(MQRC_NO_MSG_AVAILABLE), GetOne().codes);
    EXPECT_EQ(0, Inquire(connection_, object_, 3));
    WriteQueueFile("file", "file");
    EXPECT_EQ("file", GetWaiting().body);
}

TEST_F(CopiedFilesTest, AMessageThatHasBecomeAPipeSinceTheListingIsSkipped) {
    ASSERT_EQ(kDone, Put(connection_, object_, "1"));
    ASSERT_EQ(kDone, Put(connection_, object_, "2"));
    ASSERT_EQ(kDone, Put(connection_, object_, "3"));
    ASSERT_EQ("1", GetOne().body);
    const std::filesystem::path next = QueuePath() / MessageFiles().at(0);
    std::filesystem::remove(next);
    ASSERT_EQ(0, mkfifo(next.c_str(), 0600));
    EXPECT_EQ("3", GetOne().body);
}

TEST_F(CopiedFilesTest, APipeInPlaceOfTheAttributesFailsTheOpen) {
    std::filesystem::remove(QueuePath() / ".queue.ini");
    ASSERT_EQ(0, mkfifo((QueuePath() / ".queue.ini").c_str(), 0600));
    MQHOBJ object = -1;
    EXPECT_EQ(FailedWith(mqi::MQRC_RESOURCE_PROBLEM), Open(connection_, "Q", kInputShared, &object));
}
#endif

TEST_F(CopiedFilesTest, AFileIsTakenOnlyWhenItsLastWriteIsLongEnoughAgo) {
    SetQueue("settle_ms = 600\n");
    WriteQueueFile("growing", "half");
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(FailedWith(MQRC_NO_MSG_AVAILABLE), GetOne().codes);
    WriteQueueFile("growing", "half and half");
    EXPECT_EQ("half and half", GetWaiting().body);
}

TEST_F(CopiedFilesTest, AFileRenamedIntoPlaceIsTakenAtOnce) {
    SetQueue("settle_ms = 3600000\n");
    RenameIntoPlace("whole", "whole");
    EXPECT_EQ("whole", GetWaiting().body);
}

TEST_F(CopiedFilesTest, AFileThatArrivesEndsAWait) {
    std::thread later([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        RenameIntoPlace("late", "late");
    });
    mqi::MQGMO gmo = NewGmo(kNoSync | kWait);
    gmo.WaitInterval = -1;
    EXPECT_EQ("late", GetWith(connection_, object_, NewMd(), gmo).body);
    later.join();
}

TEST_F(CopiedFilesTest, ABackedOutFileKeepsItsPlaceIdentifierAndName) {
    WriteQueueFile("order.csv", "1");
    const Got first = GetWaiting();
    ASSERT_EQ("1", first.body);
    WriteQueueFile("order.csv", "2");
    std::this_thread::sleep_for(std::chrono::milliseconds(40));
    ASSERT_EQ(kDone, Put(connection_, object_, "3"));
    const Got got = GetOne(kSync);
    ASSERT_EQ("2", got.body);
    ASSERT_EQ(kDone, BackOut(connection_));
    ASSERT_EQ(2U, MessageFiles().size());
    EXPECT_NE(std::string::npos, MessageFiles()[0].find("~1.order.csv")) << MessageFiles()[0];
    const Got again = GetOne(kNoSync);
    EXPECT_EQ("2", again.body);
    EXPECT_EQ(1, again.md.BackoutCount);
    EXPECT_EQ(0, std::memcmp(got.md.MsgId, again.md.MsgId, 24));
    EXPECT_EQ("3", GetOne().body);
}

TEST_F(CopiedFilesTest, TwoFilesOfTheSameNameInAUnitOfWorkAreBothKept) {
    WriteQueueFile("same", "1");
    ASSERT_EQ("1", GetWaiting().body);
    for (const char* body : {"a", "b", "c"}) {
        WriteQueueFile("same", body);
        mqi::MQGMO gmo = NewGmo(kSync | kWait);
        gmo.WaitInterval = 10000;
        ASSERT_EQ(body, GetWith(connection_, object_, NewMd(), gmo).body);
    }
    ASSERT_EQ(kDone, BackOut(connection_));
    EXPECT_EQ(std::vector<std::string>({"a~1", "b~1", "c~1"}), Drain());
}

TEST_F(CopiedFilesTest, ALongFileNameLosesItsBeginning) {
    WriteQueueFile(std::string(230, 'n') + ".end", "long");
    mqi::MQGMO gmo = NewGmo(kSync | kWait);
    gmo.WaitInterval = 10000;
    ASSERT_EQ("long", GetWith(connection_, object_, NewMd(), gmo).body);
    ASSERT_EQ(kDone, BackOut(connection_));
    EXPECT_EQ(std::vector<std::string>({"long~1"}), Drain());
}

TEST_F(CopiedFilesTest, AMessageMovedToAnotherQueueByHandIsStillAMessage) {
    std::filesystem::create_directory(std::filesystem::path(Root()) / "QM1" / "R");
    ASSERT_EQ(kDone, Put(connection_, object_, "moved"));
    const std::string name = MessageFiles().at(0);
    std::filesystem::rename(QueuePath() / name, std::filesystem::path(Root()) / "QM1" / "R" / name);
    EXPECT_EQ(FailedWith(MQRC_NO_MSG_AVAILABLE), GetOne().codes);
    MQHOBJ other = -1;
    ASSERT_EQ(kDone, Open(connection_, "R", kInputShared, &other));
    EXPECT_EQ("moved", Get(connection_, other, kNoSync).body);
}

// On a system that lets someone truncate a mapped file, accessing the missing part would end the process.
TEST_F(CopiedFilesTest, CountersThatAreCutShortAreCreatedAgainAndNothingIsLost) {
    const std::filesystem::path qmgr = std::filesystem::path(Root()) / "QM1";
    const auto cut = [&](std::uintmax_t bytes) {
        std::error_code refused;
        for (const std::filesystem::path& path : {qmgr / ".state", QueuePath() / ".state"}) {
            std::filesystem::resize_file(path, bytes, refused);
        }
    };
    ASSERT_EQ(kDone, Put(connection_, object_, "1"));
    cut(0);
    ASSERT_EQ(kDone, Put(connection_, object_, "2"));
    cut(0);
    EXPECT_EQ("1", GetOne(kSync).body);
    cut(8);
    ASSERT_EQ(kDone, BackOut(connection_));
    cut(0);
    EXPECT_EQ("1", GetOne(kSync).body);
    ASSERT_EQ(kDone, Put(connection_, object_, "3", kSync));
    cut(0);
    ASSERT_EQ(kDone, Commit(connection_));
    cut(0);
    EXPECT_EQ(std::vector<std::string>({"2", "3"}), Drain());
}

TEST_F(CopiedFilesTest, CountersLostRepeatedlyNeverGiveTwoMessagesTheSameName) {
    std::vector<std::string> bodies;
    for (int i = 0; i < 40; ++i) {
        bodies.push_back(std::to_string(i));
        ASSERT_EQ(kDone, Put(connection_, object_, bodies.back(), i % 2 == 0 ? kSync : 0)) << i;
        std::error_code refused;
        std::filesystem::resize_file(std::filesystem::path(Root()) / "QM1" / ".state", 0, refused);
    }
    ASSERT_EQ(kDone, Commit(connection_));
    std::vector<std::string> got = Drain();
    ASSERT_EQ(bodies.size(), got.size());
    std::sort(got.begin(), got.end());
    std::sort(bodies.begin(), bodies.end());
    EXPECT_EQ(bodies, got);
}

TEST_F(CopiedFilesTest, AMessageFromAClockThatIsAheadIsStillFound) {
    WriteQueueFile("20991231-235959-000000001.msg", "future");
    EXPECT_EQ("future", GetOne().body);
    ASSERT_EQ(kDone, Put(connection_, object_, "later"));
    EXPECT_EQ(std::vector<std::string>({"later"}), Drain());
}

}  // namespace
