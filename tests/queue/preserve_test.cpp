// SPDX-License-Identifier: Apache-2.0

// Tests whether Close keeps or deletes the log and the checkpoint file, also when the host changes its choice
// later.
#include <gmock/gmock.h>

#include <cstdio>
#include <cstring>

#include "tests/support/fault_plan.h"
#include "tests/support/module_fixture.h"

using testing::ElementsAre;

namespace {

const std::string kKeepLog = InfoLine("CloseLogFile", "Preserving log file ('log.dat').");
const std::string kDeleteLog = InfoLine("CloseLogFile", "Deleting log file ('log.dat').");
const std::string kKeepCheckpoint = InfoLine("CloseAll", "Preserving checkpoint file ('ck.dat').");
const std::string kDeleteCheckpoint = InfoLine("CloseAll", "Deleting checkpoint file ('ck.dat').");
const std::string kReceived = InfoLine("PIDMMain", "Messages received via MQGET: 0");

class PreserveTest : public ModuleFixture {
  protected:
    void Start() { InitAndOpenTraced(1, "-LOG log.dat -CKFILE ck.dat"); }

    void Preserve(const char* value) {
        ASSERT_TRUE(Succeeds(PutAttribute("PRESERVE_RESTART_INFO", value)));
        trace.Skip();
    }
};

TEST_F(PreserveTest, KeepsBothFilesWhenAskedFor) {
    Start();
    Preserve("YES");
    EXPECT_TRUE(Succeeds(Close()));
    EXPECT_THAT(
        trace.NewLines(),
        ElementsAre(InfoLine("CloseAll", "closing Log"), kKeepLog, InfoLine("CloseAll", "closing MQ named Q"),
                    InfoLine("CloseAll", "closing MQ Q Manager"), kKeepCheckpoint, kReceived));
    EXPECT_TRUE(FileExists("log.dat"));
    EXPECT_TRUE(FileExists("ck.dat"));
}

TEST_F(PreserveTest, KeptFilesAreNamedAgainByALaterClose) {
    Start();
    Preserve("YES");
    ASSERT_TRUE(Succeeds(Close()));
    trace.Skip();
    EXPECT_TRUE(Succeeds(Close()));
    EXPECT_THAT(trace.NewLines(), ElementsAre(kKeepLog, kKeepCheckpoint, kReceived));
    EXPECT_TRUE(FileExists("log.dat"));
    EXPECT_TRUE(FileExists("ck.dat"));
}

TEST_F(PreserveTest, KeptFilesAreDeletedByALaterCloseOnceTheChoiceIsCleared) {
    Start();
    Preserve("YES");
    ASSERT_TRUE(Succeeds(Close()));
    Preserve("NO");
    EXPECT_TRUE(Succeeds(Close()));
    EXPECT_THAT(trace.NewLines(), ElementsAre(kDeleteLog, kDeleteCheckpoint, kReceived));
    EXPECT_FALSE(FileExists("log.dat"));
    EXPECT_FALSE(FileExists("ck.dat"));
    EXPECT_TRUE(Succeeds(Close()));
    EXPECT_THAT(trace.NewLines(), ElementsAre(kReceived)) << "only once";
}

TEST_F(PreserveTest, WhatWasKeptIsRememberedThroughShutAndInit) {
    Start();
    Preserve("YES");
    ASSERT_TRUE(Succeeds(Shut()));
    ASSERT_TRUE(FileExists("ck.dat"));
    // Shut has cleared the host's choice, so the next Close deletes the files that were kept.
    InitTraced(1);
    EXPECT_TRUE(Succeeds(Close()));
    EXPECT_THAT(trace.NewLines(), ElementsAre(kDeleteLog, kDeleteCheckpoint, kReceived));
    EXPECT_FALSE(FileExists("log.dat"));
    EXPECT_FALSE(FileExists("ck.dat"));
}

TEST_F(PreserveTest, OpenAfterAKeptCheckpointFileEmptiesIt) {
    Start();
    mq.PutMessage("first");
    ASSERT_EQ(Read().returnCode, pmrcOK);
    ASSERT_EQ(GetPos().returnCode, pmrcOK);
    mq.PutMessage("second");
    ASSERT_EQ(Read().returnCode, pmrcOK);
    Preserve("YES");
    ASSERT_TRUE(Succeeds(Close()));
    ASSERT_NE(ReadFile("ck.dat"), "");
    ASSERT_TRUE(Succeeds(Open()));
    EXPECT_EQ(ReadFile("ck.dat"), "");
}

TEST_F(PreserveTest, DeletionThatCannotBeStartedDrawsAWarningAndTheCloseSucceeds) {
    FaultPlan faults(module);
    Start();
    for (const char* file : {"log.dat", "ck.dat"}) {
        // The deletion is a command on Windows and a file call on Linux.
        faults.Add({.call = FileCall::Command, .file = file, .error = EACCES});
        faults.Add({.call = FileCall::Remove, .file = file, .error = EACCES});
    }
    EXPECT_TRUE(Succeeds(Close()));
    EXPECT_EQ(faults.Struck(), 2);
    const std::string reason = std::string(" Reason '") + strerror(EACCES) + "'";
    EXPECT_THAT(trace.NewLines(),
                ElementsAre(InfoLine("CloseAll", "closing Log"), kDeleteLog,
                            WarningLine("CloseLogFile", "Unable to delete log file (log.dat)." + reason),
                            InfoLine("CloseAll", "closing MQ named Q"),
                            InfoLine("CloseAll", "closing MQ Q Manager"), kDeleteCheckpoint,
                            WarningLine("CloseAll", "Unable to delete checkpoint file (ck.dat)." + reason),
                            kReceived));
    EXPECT_TRUE(FileExists("ck.dat"));
}

TEST_F(PreserveTest, FileThatNoLongerExistsDrawsNoWarning) {
    InitAndOpenTraced(1, "-CKFILE ck.dat");
    Preserve("YES");
    ASSERT_TRUE(Succeeds(Close()));
    ASSERT_EQ(std::remove("ck.dat"), 0);
    Preserve("NO");
    EXPECT_TRUE(Succeeds(Close()));
    EXPECT_THAT(trace.NewLines(), ElementsAre(kDeleteCheckpoint, kReceived));
}

}  // namespace
