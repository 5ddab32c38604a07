// SPDX-License-Identifier: Apache-2.0
#include "mqam/target/file/file_sink.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <thread>

#include "platform/file.h"
#include "tests/support/program_runner.h"
#include "tests/support/test_directory.h"

using namespace mqam;

namespace {

class FileSinkTest : public testing::Test {
  protected:
    [[nodiscard]] FileSinkSettings Target(RecordFormat format,
                                          platform::OpenMode mode = platform::OpenMode::kCreate) const {
        return {folder_.Path("out"), -1, mode, format};
    }
    [[nodiscard]] std::string Written() const { return ReadFileIfAny(folder_.Path("out")); }

    // Returns a descriptor that cannot be written to.
    [[nodiscard]] FileSinkSettings Unwritable(RecordFormat format) const {
        std::ofstream(folder_.Path("readonly")) << "x";
        const int descriptor = open(folder_.Path("readonly").c_str(), O_RDONLY);
        EXPECT_GE(descriptor, 0);
        return {"the target", descriptor, platform::OpenMode::kCreate, format};
    }

    TestDirectory folder_;
};

TEST_F(FileSinkTest, LinesFormatEndsEachRecordWithALineFeed) {
    FileSink sink(Target(RecordFormat::kLines));
    ASSERT_TRUE(sink.Open().IsOk());
    ASSERT_TRUE(sink.Put("one", 3).IsOk() && sink.Put("", 0).IsOk() && sink.Put("t\r\nwo", 5).IsOk() &&
                sink.Finish().IsOk());
    EXPECT_EQ(Written(), "one\n\nt\r\nwo\n");
}

TEST_F(FileSinkTest, LengthFormatIsFourBytesLittleEndianThenTheRecord) {
    FileSink sink(Target(RecordFormat::kLength));
    const std::string large(0x012345, 'x');
    ASSERT_TRUE(sink.Open().IsOk());
    ASSERT_TRUE(sink.Put("ab", 2).IsOk() && sink.Put(large.data(), large.size()).IsOk() &&
                sink.Put("", 0).IsOk() && sink.Finish().IsOk());
    EXPECT_EQ(Written(), std::string("\x02\0\0\0ab\x45\x23\x01\0", 10) + large + std::string(4, '\0'));
}

TEST_F(FileSinkTest, RawFormatIsTheBytesAlone) {
    FileSink sink(Target(RecordFormat::kRaw));
    ASSERT_TRUE(sink.Open().IsOk());
    ASSERT_TRUE(sink.Put("a\0b", 3).IsOk() && sink.Put("\n\r\x1a", 3).IsOk() && sink.Finish().IsOk());
    EXPECT_EQ(Written(), std::string("a\0b\n\r\x1a", 6));
}

TEST_F(FileSinkTest, RecordsAroundTheHoldingSizeArriveWholeAndInOrder) {
    FileSink sink(Target(RecordFormat::kRaw));
    ASSERT_TRUE(sink.Open().IsOk());
    std::string expected;
    for (const std::size_t size : {1U, 262143U, 1U, 262144U, 262145U, 5U, 600000U, 262140U, 4U, 1U}) {
        const std::string record(size, static_cast<char>('a' + expected.size() % 26));
        ASSERT_TRUE(sink.Put(record.data(), record.size()).IsOk());
        expected += record;
    }
    ASSERT_TRUE(sink.Finish().IsOk());
    EXPECT_TRUE(Written() == expected);
}

TEST_F(FileSinkTest, CheckpointBringsHeldRecordsToTheFile) {
    FileSink sink(Target(RecordFormat::kLines));
    ASSERT_TRUE(sink.Open().IsOk());
    ASSERT_TRUE(sink.Put("one", 3).IsOk());
    ASSERT_TRUE(sink.Save().IsOk());
    EXPECT_EQ(Written(), "one\n");
    ASSERT_TRUE(sink.Put("two", 3).IsOk() && sink.Finish().IsOk());
    EXPECT_EQ(Written(), "one\ntwo\n");
}

TEST_F(FileSinkTest, HeldRecordsReachTheFileWhenNoneFollows) {
    FileSink sink(Target(RecordFormat::kLines));
    ASSERT_TRUE(sink.Open().IsOk());
    ASSERT_TRUE(sink.Put("one", 3).IsOk());
    for (int i = 0; i < 500 && Written().empty(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(Written(), "one\n");
    ASSERT_TRUE(sink.Put("two", 3).IsOk() && sink.Finish().IsOk());
    EXPECT_EQ(Written(), "one\ntwo\n");
}

TEST_F(FileSinkTest, FailedWriteWhileIdleShowsAtTheNextRecord) {
    FileSink sink(Unwritable(RecordFormat::kLines));
    ASSERT_TRUE(sink.Open().IsOk());
    bool taken = sink.Put("one", 3).IsOk();
    ASSERT_TRUE(taken);
    for (int i = 0; i < 20 && taken; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        taken = sink.Put("x", 1).IsOk();
    }
    EXPECT_FALSE(taken);
    EXPECT_EQ(sink.Put("x", 1).Error().substr(0, 28), "cannot write to the target: ");
}

TEST_F(FileSinkTest, ModesCreateReplaceAndAppend) {
    std::ofstream(folder_.Path("out")) << "old";
    FileSink create(Target(RecordFormat::kRaw));
    const Status opened = create.Open();
    EXPECT_EQ(opened.Code(), StatusCode::kTransient);
    EXPECT_NE(opened.Error().find(folder_.Path("out")), std::string::npos) << opened.Error();
    FileSink append(Target(RecordFormat::kRaw, platform::OpenMode::kAppend));
    ASSERT_TRUE(append.Open().IsOk() && append.Put("+", 1).IsOk() && append.Finish().IsOk());
    EXPECT_EQ(Written(), "old+");
    FileSink replace(Target(RecordFormat::kRaw, platform::OpenMode::kReplace));
    ASSERT_TRUE(replace.Open().IsOk() && replace.Put("new", 3).IsOk() && replace.Finish().IsOk());
    EXPECT_EQ(Written(), "new");
}

TEST_F(FileSinkTest, FailedWriteShowsAtTheCheckpoint) {
    FileSink sink(Unwritable(RecordFormat::kLines));
    ASSERT_TRUE(sink.Open().IsOk());
    ASSERT_TRUE(sink.Put("one", 3).IsOk());
    EXPECT_EQ(sink.Save().Error().substr(0, 28), "cannot write to the target: ");
}

TEST_F(FileSinkTest, FailedWriteShowsAtTheEnd) {
    FileSink sink(Unwritable(RecordFormat::kLines));
    ASSERT_TRUE(sink.Open().IsOk());
    ASSERT_TRUE(sink.Put("one", 3).IsOk());
    EXPECT_EQ(sink.Finish().Error().substr(0, 28), "cannot write to the target: ");
}

TEST_F(FileSinkTest, FailedWriteShowsAtTheRecordThatOverflows) {
    FileSink sink(Unwritable(RecordFormat::kRaw));
    ASSERT_TRUE(sink.Open().IsOk());
    const std::string record(200000, 'x');
    ASSERT_TRUE(sink.Put(record.data(), record.size()).IsOk());
    EXPECT_EQ(sink.Put(record.data(), record.size()).Error().substr(0, 28), "cannot write to the target: ");
}

}  // namespace
