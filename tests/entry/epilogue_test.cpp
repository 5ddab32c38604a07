// SPDX-License-Identifier: Apache-2.0

// Tests what every request does last: it sets the record length at an end of input and flushes the streams.
#include <gmock/gmock.h>

#include <cstdio>
#include <functional>

#include "tests/support/module_fixture.h"
#include "tests/support/output_capture.h"

namespace {

class EpilogueTest : public ModuleFixture {
  protected:
    /// Leaves a text in the buffer of standard output and sends the request. Returns what the request flushed
    /// to the file.
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
