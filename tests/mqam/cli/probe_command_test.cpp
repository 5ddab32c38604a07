// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/probe_command.h"

#include <gtest/gtest.h>

#include <fstream>

#include "tests/support/test_directory.h"

namespace mqam {
namespace {

TEST(ProbeRequests, TheInitializationStringSaysWhatIsProbed) {
    const ProbeRequest request = MakeProbeRequest(
        ProbeKind::kOpen, "-QMGR QM1 qnm Q1 -TRCL 1 QMGR -CHNL C -SRVR h(1) -BKSZ 100 -MQEX");
    EXPECT_EQ(request.queueManager, "QM1");
    EXPECT_EQ(request.queue, "Q1");
    EXPECT_EQ(request.channel, "C");
    EXPECT_EQ(request.server, "h(1)");
    EXPECT_EQ(request.maxRecordBytes, 100);
    EXPECT_EQ(request.open, ProbeOpen::kAsExclusiveLoad);
    EXPECT_EQ(MakeProbeRequest(ProbeKind::kOpen, "-QMGR QM1").open, ProbeOpen::kAsLoad);
    // A load that has failed in a Read still has the queue open.
    EXPECT_EQ(MakeProbeRequest(ProbeKind::kLongMessage, "-MQEX").open, ProbeOpen::kOnlyToBrowse);
    EXPECT_EQ(MakeProbeRequest(ProbeKind::kLongMessage, "").maxRecordBytes, 1048576);
}

TEST(ProbeRequests, TheParameterFileCountsMoreThanTheString) {
    const TestDirectory folder;
    const std::string path = folder.Path("parm");
    std::ofstream(path) << "QNM Q2\nBKSZ 7\nMQEX\n";
    const ProbeRequest request = MakeProbeRequest(ProbeKind::kOpen, "-QMGR QM1 -QNM Q1 -PARMFILE " + path);
    EXPECT_EQ(request.queueManager, "QM1");
    EXPECT_EQ(request.queue, "Q2");
    EXPECT_EQ(request.maxRecordBytes, 7);
    EXPECT_EQ(request.open, ProbeOpen::kAsExclusiveLoad);
}

TEST(ProbeResults, ALongMessageIsDescribedWithItsLengthAndWhatToDo) {
    ProbeRequest request;
    request.maxRecordBytes = 100;
    ProbeResult result;
    result.step = ProbeStep::kDone;
    result.longBytes = 200;
    result.longMessageId = "0A0B";
    EXPECT_EQ(DescribeProbe(ProbeKind::kLongMessage, request, result),
              "  length    the message has 200 bytes; its identifier is 0A0B\n"
              "  next      Run the same command with --max-record 200\n");
    result.longBytes = 16777217;
    EXPECT_EQ(
        DescribeProbe(ProbeKind::kLongMessage, request, result),
        "  length    the message has 16777217 bytes; its identifier is 0A0B\n"
        "  next      No load can take a message of more than 16777216 bytes; take it off the queue with another "
        "program\n");
    result.longBytes = -1;
    EXPECT_EQ(
        DescribeProbe(ProbeKind::kLongMessage, request, result),
        "  length    no message on the queue is longer than 100 bytes now; run the same command again\n");
}

TEST(ProbeResults, AReasonIsExplained) {
    ProbeResult result;
    result.step = ProbeStep::kOpen;
    result.reason = 2042;
    const std::string lines = DescribeProbe(ProbeKind::kOpen, {}, result);
    EXPECT_TRUE(lines.starts_with("  reason    2042 MQRC_OBJECT_IN_USE: ")) << lines;
    EXPECT_NE(lines.find("\n  next      "), std::string::npos) << lines;
    EXPECT_EQ(DescribeProbe(ProbeKind::kEarlyEnd, {}, result), lines);
    result.reason = 9999;
    EXPECT_EQ(DescribeProbe(ProbeKind::kOpen, {}, result), "  reason    9999\n");
    result.step = ProbeStep::kDone;
    EXPECT_EQ(DescribeProbe(ProbeKind::kOpen, {}, result),
              "  reason    it is gone: the queue can be opened now; run the same command again\n");
}

TEST(ProbeResults, AnEarlyEndIsDescribedByWhatIsOnTheQueue) {
    ProbeResult result;
    result.step = ProbeStep::kBrowse;
    result.reason = 2033;
    EXPECT_EQ(DescribeProbe(ProbeKind::kEarlyEnd, {}, result), "  found     the queue is empty now\n");
    result.reason = 2016;
    EXPECT_TRUE(
        DescribeProbe(ProbeKind::kEarlyEnd, {}, result).starts_with("  reason    2016 MQRC_GET_INHIBITED: "));
    result.step = ProbeStep::kDone;
    EXPECT_EQ(
        DescribeProbe(ProbeKind::kEarlyEnd, {}, result),
        "  found     the next message on the queue is empty, and will end the next load early as well\n");
    result.firstBytes = 5;
    EXPECT_EQ(
        DescribeProbe(ProbeKind::kEarlyEnd, {}, result),
        "  found     the queue can be read and is not empty; run the same command again to load the rest\n");
}

TEST(ProbeKinds, OnlyFailuresWithoutTheirReasonAreProbed) {
    EXPECT_EQ(ProbeKindOf({"Open", pmrcFailure, "M/PIDMMain(!ERROR!).  --ERROR: Queue Manager open."}),
              ProbeKind::kOpen);
    EXPECT_EQ(
        ProbeKindOf({"Read", pmrcFailure,
                     "M/PIDMMain(!ERROR!).  --ERROR: MQA0161: <Message length > blocksize (100)>--Failing "
                     "function: MQGET."}),
        ProbeKind::kLongMessage);
    EXPECT_EQ(ProbeKindOf({"Open", pmrcFailure,
                           "M/PIDMMain(!ERROR!).  --ERROR: Error received from MQCONNX : 2058."}),
              ProbeKind::kNone);
    EXPECT_EQ(ProbeKindOf({"Open", pmrcFailure, "out of the ordinary"}), ProbeKind::kNone);
}

}  // namespace
}  // namespace mqam
