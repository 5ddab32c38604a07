// SPDX-License-Identifier: Apache-2.0

// Tests that a journal holds exactly what was saved, whatever a loss of power does to what was not synced yet, and that
// damage is noticed.
#include <gtest/gtest.h>

#include <filesystem>

#include "mqjournal/journal/format.h"
#include "mqjournal/journal/reader.h"
#include "mqjournal/journal/writer.h"
#include "tests/support/files.h"
#include "tests/support/test_directory.h"

namespace {

using mqjournal::JournalScan;
using mqjournal::JournalShape;

constexpr char kHeader[] = "\x01\0\0\0";

class Journal : public testing::Test {
  protected:
    /// Makes the checkpoint file `content` and saves it.
    void Save(const std::string& content) {
        WriteFile(checkpoint_, content);
        ASSERT_TRUE(writer_.Save(error_)) << error_;
    }

    /// Returns the content of the journal.
    [[nodiscard]] std::string Content() {
        const JournalScan scan = mqjournal::ScanJournal(checkpoint_);
        EXPECT_EQ(scan.shape, JournalShape::kIntact) << scan.error;
        EXPECT_TRUE(mqjournal::CopyContent(checkpoint_, scan, copy_, error_)) << error_;
        return ReadFile(copy_);
    }

    void ReplaceJournal(const std::string& bytes) { WriteFile(journal_, bytes); }

    TestDirectory directory_;
    std::string checkpoint_ = directory_.Path("ck");
    std::string journal_ = mqjournal::JournalPath(checkpoint_);
    std::string copy_ = directory_.Path("copy");
    std::string error_;
    mqjournal::JournalWriter writer_{checkpoint_};
    const std::string header_{kHeader, 4};
};

TEST_F(Journal, IsMissingBeforeTheFirstSave) {
    EXPECT_EQ(mqjournal::ScanJournal(checkpoint_).shape, JournalShape::kMissing);
}

TEST_F(Journal, HasEachStateThatWasSaved) {
    for (const char* records : {"", "one", "onetwo", "onetwothree"}) {
        Save(header_ + records);
        EXPECT_EQ(Content(), header_ + records);
    }
}

TEST_F(Journal, HasRecordsOfManyPieces) {
    std::string large(3 * mqjournal::kPieceBytesMax + 5, 'x');
    large[mqjournal::kPieceBytesMax] = 'y';
    Save(header_ + "one");
    Save(header_ + "one" + large);
    EXPECT_EQ(Content(), header_ + "one" + large);
}

TEST_F(Journal, BeginsAgainWithANewCheckpoint) {
    Save(header_ + "one");
    const std::string second("\x02\0\0\0two and more", 16);
    Save(second);
    EXPECT_EQ(Content(), second);
}

TEST_F(Journal, BeginsAgainWhenTheFileWasReplaced) {
    Save(header_ + "one");
    WriteFile(directory_.Path("other"), header_ + "another");
    std::filesystem::rename(directory_.Path("other"), checkpoint_);
    ASSERT_TRUE(writer_.Save(error_)) << error_;
    EXPECT_EQ(Content(), header_ + "another");
}

TEST_F(Journal, BeginsAgainWhenTheFileIsShorter) {
    Save(header_ + "one and more");
    Save(header_ + "one");
    EXPECT_EQ(Content(), header_ + "one");
}

TEST_F(Journal, BeginsAgainWithANewWriter) {
    Save(header_ + "one");
    writer_.Release();
    mqjournal::JournalWriter other(checkpoint_);
    WriteFile(checkpoint_, header_ + "OTHER");
    ASSERT_TRUE(other.Save(error_)) << error_;
    EXPECT_EQ(Content(), header_ + "OTHER");
}

// On Windows no one can delete a file that is open.
#if !defined(_WIN32)
TEST_F(Journal, BeginsAgainWhenSomeoneDeletedIt) {
    Save(header_ + "one");
    std::filesystem::remove(journal_);
    Save(header_ + "onetwo");
    EXPECT_EQ(Content(), header_ + "onetwo");
}
#endif

TEST_F(Journal, IsNotSavedWithoutACheckpointFileOrItsSequenceNumber) {
    EXPECT_FALSE(writer_.Save(error_));
    EXPECT_NE(error_.find(checkpoint_), std::string::npos) << error_;
    WriteFile(checkpoint_, "\x01\0");
    EXPECT_FALSE(writer_.Save(error_));
    EXPECT_NE(error_.find("no sequence number"), std::string::npos) << error_;
    EXPECT_EQ(mqjournal::ScanJournal(checkpoint_).shape, JournalShape::kMissing);
}

TEST_F(Journal, KeepsTheOldContentUntilANewOneIsComplete) {
    Save(header_ + "one");
    // Nothing can be created under the scratch name.
    std::filesystem::create_directories(mqjournal::JournalScratchPath(checkpoint_) + "/sub");
    WriteFile(checkpoint_, std::string("\x02\0\0\0", 4));
    EXPECT_FALSE(writer_.Save(error_));
    EXPECT_NE(error_, "");
    EXPECT_EQ(Content(), header_ + "one");
}

TEST_F(Journal, IsEmptyAfterAReset) {
    Save(header_ + "one");
    writer_.Release();
    ASSERT_TRUE(mqjournal::ResetJournal(checkpoint_, error_)) << error_;
    EXPECT_EQ(Content(), "");
}

TEST_F(Journal, IsRemovedOnceAndTwice) {
    Save(header_ + "one");
    writer_.Release();
    EXPECT_TRUE(mqjournal::RemoveJournal(checkpoint_, error_)) << error_;
    EXPECT_FALSE(FileExists(journal_));
    EXPECT_TRUE(mqjournal::RemoveJournal(checkpoint_, error_)) << error_;
}

TEST_F(Journal, IsComparedWithTheFile) {
    Save(header_ + "one");
    const JournalScan scan = mqjournal::ScanJournal(checkpoint_);
    EXPECT_TRUE(mqjournal::IsContentOfJournal(checkpoint_, scan));
    WriteFile(checkpoint_, header_ + "two");
    EXPECT_FALSE(mqjournal::IsContentOfJournal(checkpoint_, scan));
    WriteFile(checkpoint_, header_ + "one more");
    EXPECT_FALSE(mqjournal::IsContentOfJournal(checkpoint_, scan));
    std::filesystem::remove(checkpoint_);
    EXPECT_FALSE(mqjournal::IsContentOfJournal(checkpoint_, scan));
}

// The commit that was not synced may be complete, short, or zeros from any byte to any other.
TEST_F(Journal, HasTheEarlierCommitsWhateverTheLastOneIs) {
    Save(header_ + "one");
    Save(header_ + "onetwo");
    const std::string before = ReadFile(journal_);
    Save(header_ + "onetwothree");
    const std::string after = ReadFile(journal_);
    EXPECT_EQ(Content(), header_ + "onetwothree");
    for (std::size_t bytes = before.size(); bytes < after.size(); ++bytes) {
        ReplaceJournal(after.substr(0, bytes));
        EXPECT_EQ(Content(), header_ + "onetwo") << "short: " << bytes;
        std::string zeros = after;
        std::fill(zeros.begin() + static_cast<std::ptrdiff_t>(bytes), zeros.end(), '\0');
        ReplaceJournal(zeros);
        EXPECT_EQ(Content(), header_ + "onetwo") << "zeros from: " << bytes;
        zeros = after;
        std::fill(zeros.begin() + static_cast<std::ptrdiff_t>(before.size()),
                  zeros.begin() + static_cast<std::ptrdiff_t>(bytes) + 1, '\0');
        ReplaceJournal(zeros);
        EXPECT_EQ(Content(), header_ + "onetwo") << "zeros to: " << bytes;
    }
}

// The pieces of a record that was not synced may reach the disk in any order.
TEST_F(Journal, HasTheEarlierCommitsIfOnlyTheSecondPieceOfTheLastIsThere) {
    Save(header_ + "one");
    const std::size_t before = ReadFile(journal_).size();
    Save(header_ + "one" + std::string(2 * mqjournal::kPieceBytesMax, 'x'));
    std::string bytes = ReadFile(journal_);
    bytes[before] ^= 1;
    ReplaceJournal(bytes);
    EXPECT_EQ(Content(), header_ + "one");
    bytes[before] ^= 1;
    ReplaceJournal(bytes.substr(0, before + sizeof(mqjournal::FrameHeader) + mqjournal::kPieceBytesMax));
    EXPECT_EQ(Content(), header_ + "one");
}

TEST_F(Journal, IsDamagedIfALaterCommitFollowsAChangedByte) {
    Save(header_ + "one");
    const std::size_t first = ReadFile(journal_).size();
    Save(header_ + "onetwo");
    const std::size_t second = ReadFile(journal_).size();
    Save(header_ + "onetwothree");
    const std::string bytes = ReadFile(journal_);
    for (std::size_t at = 0; at < second; ++at) {
        std::string changed = bytes;
        changed[at] ^= 4;
        ReplaceJournal(changed);
        const JournalScan scan = mqjournal::ScanJournal(checkpoint_);
        EXPECT_EQ(scan.shape, JournalShape::kDamaged) << at;
        EXPECT_NE(scan.error.find(journal_), std::string::npos) << scan.error;
    }
    std::string zeros = bytes;
    std::fill(zeros.begin() + static_cast<std::ptrdiff_t>(first),
              zeros.begin() + static_cast<std::ptrdiff_t>(second), '\0');
    ReplaceJournal(zeros);
    EXPECT_EQ(mqjournal::ScanJournal(checkpoint_).shape, JournalShape::kDamaged);
}

// A record can contain the bytes of any journal but its own, whose salt its sender cannot know.
TEST_F(Journal, IsNotMisledByARecordThatLooksLikeFrames) {
    Save(header_ + "one");
    const std::string frames = ReadFile(journal_).substr(sizeof(mqjournal::JournalHeader));
    writer_.Release();
    ASSERT_TRUE(mqjournal::ResetJournal(checkpoint_, error_)) << error_;
    mqjournal::JournalWriter other(checkpoint_);
    WriteFile(checkpoint_, header_ + "two");
    ASSERT_TRUE(other.Save(error_)) << error_;
    other.Release();
    const std::string synced = ReadFile(journal_);
    ReplaceJournal(synced + std::string(40, '\0') + frames);
    EXPECT_EQ(Content(), header_ + "two");
}

TEST_F(Journal, IsUnreadableIfItIsNotAFile) {
    std::filesystem::create_directory(journal_);
    const JournalScan scan = mqjournal::ScanJournal(checkpoint_);
    EXPECT_EQ(scan.shape, JournalShape::kUnreadable);
    EXPECT_NE(scan.error.find(journal_), std::string::npos) << scan.error;
}

TEST_F(Journal, IsDamagedIfItDoesNotBeginLikeOne) {
    for (const std::string& bytes : {std::string(), std::string("MQAM"), std::string(24, '\0')}) {
        ReplaceJournal(bytes);
        EXPECT_EQ(mqjournal::ScanJournal(checkpoint_).shape, JournalShape::kDamaged) << bytes.size();
    }
}

}  // namespace
