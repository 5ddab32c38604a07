// SPDX-License-Identifier: Apache-2.0

// Tests what every request ends with: the record length at an end of input, and the flush of the streams.
#include <gmock/gmock.h>

#include <cstdio>
#include <functional>

#include "tests/support/module_fixture.h"
#include "tests/support/output_capture.h"

namespace {

class EpilogueTest : public ModuleFixture {
  protected:
    /// Returns the text that was still in the buffer of the stream and that the request flushed.
    static std::string FlushedBy(const std::function<void()>& request) {
        OutputCapture capture("captured.txt");
        std::setvbuf(stdout, nullptr, _IOFBF, 4096);
        std::fputs("still in the buffer", stdout);
        EXPECT_EQ(ReadFile("captured.txt"), "") << "the text must not be on disk before the request";
        request();
        return ReadFile("captured.txt");
    }
};

TEST_F(EpilogueTest, FlushesAllOutputStreamsAfterEveryRequest) {
    EXPECT_EQ(FlushedBy([&] { Id(); }), "still in the buffer");
    EXPECT_EQ(FlushedBy([&] { Option(15); }), "still in the buffer");
    EXPECT_EQ(FlushedBy([&] { Write(); }), "still in the buffer");
}

TEST_F(EpilogueTest, FlushesAllOutputStreamsWithoutATrace) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    EXPECT_EQ(FlushedBy([&] { Write(); }), "still in the buffer");
}

TEST_F(EpilogueTest, EndOfInputHasRecordLengthZero) {
    InitAndOpen();
    mq.PutMessage("record");
    ASSERT_EQ(Read().recordLength, 6U);
    mq.PutMessage("");
    const ReadOutcome outcome = Read();
    EXPECT_EQ(outcome.returnCode, pmrcEOF);
    EXPECT_EQ(outcome.recordLength, 0U);
}

}  // namespace
