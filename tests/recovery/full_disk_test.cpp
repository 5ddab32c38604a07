// SPDX-License-Identifier: Apache-2.0

// Tests a disk that is really full: /dev/full accepts no byte and fails with ENOSPC, as a file system does.
#include <cerrno>
#include <cstring>

#include "diag/error_text.h"
#include "params/record_buffer.h"
#include "params/settings.h"
#include "recovery/checkpoint_file.h"
#include "tests/recovery/recovery_fixture.h"

namespace {

using namespace mqamod;

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

class FullDisk : public RecoveryFixture {
  protected:
    /// Creates a link in the test's own directory, so that Close deletes the link and not the device.
    static void PutOnFullDisk(const char* name) { std::filesystem::create_symlink("/dev/full", name); }
    const std::string noSpace = std::strerror(ENOSPC);
};

TEST_F(FullDisk, AShortLogRecordFailsAtTheFlush) {
    PutOnFullDisk(kLogFile);
    Begin("-LOG log.dat -TLF no");
    mq.PutMessage("record");
    const ReadOutcome read = Read();
    EXPECT_TRUE(FailsWith(
        read, ExpectedError("WriteLogRec", "after log write").Calling("fflush").Processing("Log", noSpace)));
    EXPECT_EQ(read.recordLength, 0U);
}

TEST_F(FullDisk, ALongLogRecordFailsAtTheWrite) {
    PutOnFullDisk(kLogFile);
    Begin("-LOG log.dat");
    mq.PutMessage(std::string(60000, 'r'));
    EXPECT_TRUE(
        FailsWith(Read(), ExpectedError("WriteLogRec", " ").Calling("fwrite").Processing("Log", noSpace)));
}

TEST_F(FullDisk, WithTlfNoTheLoadGoesOnWithoutALog) {
    PutOnFullDisk(kLogFile);
    Begin("-LOG log.dat -TLF no");
    mq.PutMessage(std::string(60000, 'r'));
    const ReadOutcome read = Read();
    EXPECT_TRUE(Gives(read, std::string(60000, 'r')));
    EXPECT_TRUE(Carries(read, ExpectedError("WriteLogRec", "continuing without Log").Info()));
    Deliver({"later"});
}

TEST_F(FullDisk, NoMessageIsCommittedAfterACheckpointThatCouldNotBeWritten) {
    PutOnFullDisk(kCkFile);
    BeginCheckpointing();
    TakePosition();
    PassOver();
    for (int read = 1; read <= 3; ++read) {
        mq.PutMessage("record");
        const ReadOutcome outcome = Read();
        EXPECT_EQ(outcome.returnCode, pmrcFailure);
        EXPECT_EQ(outcome.recordLength, 0U);
        EXPECT_THAT(outcome.errorText, HasSubstr("--Error occured while processing Checkpoint"));
    }
    EXPECT_EQ(mq.Count(Verb::Cmit), 0U);
    EXPECT_EQ(mq.Count(Verb::Back), mq.Count(Verb::Get));
}

TEST_F(FullDisk, ALongRecordAfterACheckpointIsBackedOut) {
    PutOnFullDisk(kCkFile);
    BeginCheckpointing();
    TakePosition();
    PassOver();
    mq.PutMessage(std::string(60000, 'r'));
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    EXPECT_EQ(mq.Sequence(), "GET BACK");
}

TEST_F(FullDisk, ACopyInTheMiddleOfAReplayLeavesTheOldFile) {
    PutOnFullDisk(TempFile().c_str());
    BeginReplay(1, {"a", "b"});
    EXPECT_TRUE(Gives(Read(), "a"));
    TakePosition();
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1, {"a", "b"}));
    EXPECT_THAT(faults->log, Not(Contains("remove ck.dat")));
}

// A record that fits into the buffer of the stream fails only at the flush, a larger one earlier.
class FullDiskByMq : public FullDisk, public testing::WithParamInterface<int> {};

TEST_P(FullDiskByMq, TheRoomForOneRecordCannotBeTaken) {
    ResetSettings();
    writableSettings.BKSZ = GetParam();
    writableSettings.MqCheckpointMode = true;
    std::strcpy(writableSettings.checkpointPath, kCkFile);
    ASSERT_TRUE(AllocateRecordBuffer(static_cast<std::size_t>(GetParam())));
    PutOnFullDisk(kCkFile);
    ReleaseCkPtFile();  // from now on Open looks for no file
    EXPECT_EQ(OpenCkPtFile(), pmrcFailure);
    const ExpectedError error =
        ExpectedError("OpenCkPtFile", "MQA0123: <Disk space error, while writing to checkpoint.>")
            .Calling("fwrite")
            .Processing("Checkpoint", noSpace);
    ASSERT_NE(ErrorText(), nullptr);
    EXPECT_EQ(ErrorText(), error.Text());
    EXPECT_EQ(ErrorTextLength(), error.Size());
    EXPECT_FALSE(RecordBufferExists());
    DropCkPtFileStream();
}

INSTANTIATE_TEST_SUITE_P(BlockSizes, FullDiskByMq, testing::Values(100, 1048576));

}  // namespace
