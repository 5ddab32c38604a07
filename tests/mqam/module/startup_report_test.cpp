// SPDX-License-Identifier: Apache-2.0
#include "mqam/module/startup_report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace mqam;

namespace {

constexpr const char* kPrintedReport =
    "MQ_ACCESSMODULE: ZBQ19080 Norvane Websphere MQ AMOD, Version 16.20.00.04\n"
    "MQ_ACCESSMODULE: ZBQ19083 Code version 16.20.00.03\n"
    "MQ_ACCESSMODULE: ZBQ19087 MQAM Parameters in effect:\n"
    "     .           Queue Manager Name: 'QM1'\n"
    "     .           Checkpoint: File-based to pathname C:\\a: b\n"
    "     .           MQ convert message data to CCSID: 1208\n"
    "\n"
    "     .           Queue open: NON-EXCLUSIVE.\n"
    "     .           A line of another kind\n";

TEST(StartupReport, ReportIsTakenApart) {
    const StartupReport report = ParseReport(kPrintedReport);
    ASSERT_EQ(report.identification.size(), 2U);
    EXPECT_EQ(report.identification[0], "Norvane Websphere MQ AMOD, Version 16.20.00.04");
    ASSERT_EQ(report.parameters.size(), 5U);
    EXPECT_EQ(report.queueManager, "QM1");
    EXPECT_EQ(report.checkpointFile, "C:\\a: b");
    EXPECT_FALSE(report.opensExclusively);
    EXPECT_EQ(report.logFile, "");
    EXPECT_EQ(report.truncatedParameter, "");
}

TEST(StartupReport, ReportIsShownInTwoColumns) {
    StartupReport report;
    report.identification = {"The module"};
    report.parameters = {
        {"Queue", "'Q'"}, {"A long name of a parameter without a value", ""}, {"Queue open", "X."}};
    EXPECT_EQ(FormatReport(report, "> "),
              "> The module\n\n> Queue       'Q'\n> A long name of a parameter without a value\n> Queue open "
              " X.\n");
}

TEST(StartupReport, EmptyReportIsNothing) {
    EXPECT_EQ(FormatReport(ParseReport(""), ""), "");
}

TEST(StartupReport, EveryParameterThatALoadDependsOnIsTyped) {
    const StartupReport report = ParseReport(
        "     .           Queue Manager Name: 'QM1'\n"
        "     .           Queue Name: 'IN'\n"
        "     .           Checkpoint: File-based to pathname /a/b.ckpt\n"
        "     .           Logging pathname: '/a/b.log'\n"
        "     .           Terminate on duplicate message: yes\n"
        "     .           Queue open: EXCLUSIVE.\n"
        "     .           BlockSize: 2048\n"
        "     .           MQ read wait interval: 15\n");
    EXPECT_EQ(report.queue, "IN");
    EXPECT_EQ(report.checkpointFile, "/a/b.ckpt");
    EXPECT_EQ(report.logFile, "/a/b.log");
    EXPECT_TRUE(report.stopsAtDuplicate);
    EXPECT_TRUE(report.opensExclusively);
    EXPECT_EQ(report.maxRecordBytes, 2048U);
    EXPECT_EQ(report.readWait, std::chrono::seconds(15));
}

TEST(StartupReport, AnUnlimitedReadWaitIsNoNumber) {
    EXPECT_EQ(ParseReport(" .   MQ read wait interval: indefinite\n").readWait, std::nullopt);
}

TEST(StartupReport, ALineAsLongAsTheModulesLimitCountsAsTruncated) {
    const std::string name = "Checkpoint: File-based to pathname ";
    const std::string whole(1022 - name.size(), 'x');
    EXPECT_EQ(ParseReport("     .           " + name + whole + "\n").truncatedParameter, "");
    const StartupReport report = ParseReport("     .           " + name + whole + "x\n");
    EXPECT_EQ(report.truncatedParameter, "Checkpoint");
    EXPECT_THAT(DescribeTruncation(report), testing::HasSubstr("'Checkpoint' is too long"));
}

}  // namespace
