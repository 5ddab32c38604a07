// SPDX-License-Identifier: Apache-2.0

// Plays each counter-example of the model, a trail, against the module. The host does what the trail says and
// so breaks one rule, and the damage happens. Then a host that keeps all rules continues the load, which
// shows whether the damage stays or the load is stuck. The name of a test begins with that of its trail. A
// target "1 1 2 3" contains message 1 twice.
#include <gmock/gmock.h>

#include <set>

#include "tests/recovery/trails/trail_player.h"

namespace {

using testing::HasSubstr;

constexpr char kNoFile[] = "a position is stored, and no checkpoint file is there";

/// Turns the name of a trail into one that a test can have.
std::string TestName(std::string trail) {
    for (char& c : trail) {
        if (c == '-') c = '_';
    }
    return trail;
}

class CarefulHost : public Trail {};

TEST_F(Trail, H1_WhatIsReadBeforeTheFirstGetPosIsLost) {
    EXPECT_EQ(Play("H1"), "lost: message 1");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "2 3");
}

TEST_F(Trail, H2_APositionStoredTooLateIsBehindTheFile) {
    EXPECT_EQ(Play("H2"), "stuck: SetPos: requested sequence prior to checkpoint file");
    EXPECT_THAT(lastSetPos.errorText, HasSubstr("requested sequence prior to checkpoint file"));
    EXPECT_THAT(Finish(), HasSubstr("requested sequence prior to checkpoint file"));
    EXPECT_EQ(Target(), "");
}

TEST_F(Trail, H3_ASequenceNotStoredAgainSkipsARecord) {
    EXPECT_EQ(Play("H3"), "lost: the repeat was expected, and is another record");
    EXPECT_EQ(NameOf(repeat), "2");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "1 3");
}

TEST_F(Trail, H4_GetPosWithoutARecordNamesAPlaceWhereNoneBegins) {
    EXPECT_EQ(Play("H4"), "garbled: SetPos sets the file into the middle of a record or past the end");
    EXPECT_EQ(stored->data.CkPtOffset, 0);
    EXPECT_TRUE(Succeeds(lastSetPos));
    EXPECT_THAT(Finish(), HasSubstr("checkpoint record length"));
    EXPECT_EQ(Target(), "");
    EXPECT_EQ(queue.Waiting(), "1 2 3") << "the death was before MQCMIT";
}

TEST_F(Trail, H5_AGetPosAfterTheReplayCountsRecordsThatNoFileHolds) {
    EXPECT_EQ(Play("H5"), "lost: the repeat was expected, and is another record");
    EXPECT_EQ(NameOf(repeat), "3");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "1 2");
}

TEST_F(Trail, H5_death_RecordsCountedButNotCommittedComeAgain) {
    EXPECT_EQ(Play("H5-death"), "stuck: the repeat was expected, and is an earlier record");
    EXPECT_EQ(NameOf(repeat), "2");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "1 2 3 3") << "a host that takes any record for the repeat";
}

TEST_F(Trail, H6_tdm_ADuplicateIsReturned) {
    EXPECT_EQ(Play("H6-tdm"), "doubled: message 1");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "1 1 2 3");
}

TEST_F(Trail, H6_end_ReadingOnBehindADuplicateDoublesBoth) {
    EXPECT_EQ(Play("H6-end"), "doubled: message 1");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "1 2 1 2 3");
}

TEST_F(Trail, H6_close_WithoutCloseEveryAttemptMeetsTheDuplicate) {
    EXPECT_EQ(Play("H6-close"), "stuck: one attempt after another, and none is the last");
    EXPECT_EQ(Target(), "1");
    EXPECT_EQ(queue.Waiting(), "1 2 3");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "1 2 3") << "with Close";
}

TEST_F(Trail, H6_life_ASlowDuplicateLooksLikeTheEnd) {
    EXPECT_EQ(Play("H6-life"), "unfinished: 1 of 3 records");
    EXPECT_TRUE(done);
    EXPECT_EQ(Target(), "1");
    EXPECT_EQ(queue.Waiting(), "2 3");
}

TEST_F(Trail, H6_clean_ALifeThatOnlyMeetsADuplicateBringsNothingNew) {
    EXPECT_EQ(Play("H6-clean"), "unfinished: 1 of 3 records");
    EXPECT_TRUE(done);
    EXPECT_EQ(Target(), "1");
    EXPECT_EQ(queue.Waiting(), "2 3");
}

TEST_F(Trail, H6_wait_AGetThatFailsWithoutDataLooksLikeTheEnd) {
    EXPECT_EQ(Play("H6-wait"), "unfinished: 0 of 3 records");
    EXPECT_TRUE(done);
    EXPECT_EQ(Target(), "");
    EXPECT_EQ(queue.Waiting(), "1 2 3");
}

TEST_F(Trail, H6_wait_empty_AnEmptyMessageLooksLikeTheEnd) {
    EXPECT_EQ(Play("H6-wait-empty"), "unfinished: 1 of 2 records");
    EXPECT_TRUE(done);
    EXPECT_EQ(Target(), "1");
    EXPECT_EQ(queue.Waiting(), "4");
}

TEST_F(Trail, H7_SetPosOnAFileWithoutARecordFailsEveryTime) {
    EXPECT_EQ(Play("H7"), "stuck: SetPos: empty checkpoint file");
    EXPECT_THAT(lastSetPos.errorText, HasSubstr("empty checkpoint file"));
    GoOn(R"(
  the process ends without Close
attempt 3: 0 records stored with position 1; checkpoint file of 0 bytes
  Init, PRESERVE_RESTART_INFO YES, Open -> 0
  SetPos 1
    -> 34
  the process ends without Close
)");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "1 2 3") << "without SetPos";
}

TEST_F(Trail, H8_OpenStartsAFileOverTheOnlyCopy) {
    EXPECT_EQ(Play("H8"), "doubled: message 1");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "1 1 2 3");
}

TEST_F(Trail, H8_both_AnIncompleteTemporaryFileIsTakenForTheCheckpointFile) {
    EXPECT_EQ(Play("H8-both"), "lost: an incomplete temporary file is taken for the checkpoint file");
    RestartFiles files = LookAtRestartFiles();
    const std::vector<std::string> temporary = TemporaryFiles(files);
    ASSERT_EQ(temporary.size(), 2U);
    EXPECT_EQ(PictureOf(files[temporary[0]]).offsets.size(), 0U) << "of the life that died while it wrote";
    EXPECT_EQ(PictureOf(files[temporary[1]]).offsets.size(), 3U) << "the only copy";
    PutRestartFiles({{kCheckpointFile, files[temporary[0]]}});
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "1");
}

TEST_F(Trail, H9_warning_ReadingOnCommitsAMessageThatWasNotReturned) {
    EXPECT_EQ(Play("H9-warning"), "lost: message 1");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "2 3");
}

TEST_F(Trail, H9_log_ReadingOnSkipsARecordThatWasCommitted) {
    EXPECT_EQ(Play("H9-log"), "lost: message 1");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "2 3");
}

/// Message 1 contains bytes that look like a record. The Read in the middle of its record returns them.
TEST_F(Trail, H9_read_ReadingOnInTheMiddleOfARecordReturnsItsBytes) {
    bytesOfMessage1 = std::string("\5\0\0\0\0\0\0\0", 8) + "inner";
    EXPECT_EQ(Play("H9-read"), "garbled: the replay continues in the middle of a record");
    EXPECT_EQ(lastRead.returnCode, pmrcOK);
    EXPECT_EQ(Target(), "\"inner\"");
}

TEST_F(Trail, H9_rewrite_ReadingOnSkipsWhatIsBehindTheRewrite) {
    EXPECT_EQ(Play("H9-rewrite"), "lost: message 2");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "1 3");
}

TEST_F(Trail, H10_TheMessageBackedOutIsTakenForADuplicate) {
    EXPECT_EQ(Play("H10"), "lost: message 1");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "2 3");
}

TEST_F(Trail, H10_back_TheMessageNotBackedOutIsCommittedWithTheNext) {
    EXPECT_EQ(Play("H10-back"), "lost: message 1");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "2 3");
}

TEST_F(Trail, H11_CloseCommitsAMessageThatWasNotReturned) {
    EXPECT_EQ(Play("H11"), "lost: message 1");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "2 3");
}

TEST_F(Trail, H12_AReadAfterATimeOutDropsAMessage) {
    EXPECT_EQ(Play("H12"), "lost: message 1");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "2 3");
}

TEST_F(Trail, H13_ASecondOpenDiscardsTheFile) {
    EXPECT_EQ(Play("H13"), "lost: message 1");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "2 3");
}

TEST_F(Trail, H13_preserve_CloseDeletesTheFile) {
    EXPECT_EQ(Play("H13-preserve"), std::string("stuck: ") + kNoFile);
    EXPECT_EQ(Finish(), kNoFile);
}

TEST_F(Trail, H15_ARecordThatNobodySentIsStored) {
    EXPECT_EQ(Play("H15"), "doubled: a record of length 0 that no one sent");
    EXPECT_EQ(lastRead.returnCode, pmrcOK);
    EXPECT_EQ(Target(), "\"\"");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "\"\" 1 2 3");
}

TEST_F(Trail, H16_GetPosBeforeOpenNumbersTheFileZero) {
    EXPECT_EQ(Play("H16"), "garbled: SetPos sets the file into the middle of a record or past the end");
    EXPECT_TRUE(Succeeds(lastSetPos));
    EXPECT_THAT(Finish(), HasSubstr("checkpoint record length"));
    EXPECT_EQ(Target(), "");
}

TEST_F(Trail, H17_ReadingAfterAFailedSetPosDropsTheRecordsOfTheFile) {
    EXPECT_EQ(Play("H17"), "lost: message 1");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "2 3");
}

/// Nothing is lost in the end, but the order changes. H21_order shows the consequence.
TEST_F(Trail, H21_AMessageThatIsBackedOutLateComesBehindAYoungerOne) {
    EXPECT_EQ(Play("H21"), "lost: message 1");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "2 1 3");
}

TEST_F(Trail, H21_order_AMessageThatIsBackedOutLateIsNotTakenForADuplicate) {
    EXPECT_EQ(Play("H21-order"), "doubled: message 1");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "1 2 1 3");
}

TEST_F(Trail, H22_ATornTailFailsEveryRewrite) {
    EXPECT_EQ(Play("H22"), "stuck: the rewrite meets a record cut short");
    EXPECT_THAT(lastRead.errorText, HasSubstr("checkpoint record body"));
    GoOn(R"(
  the process ends without Close
attempt 3: 1 records stored with position 2; checkpoint file: header 1, 1 records
  Init, PRESERVE_RESTART_INFO YES, Open -> 0
  SetPos 2
    -> 0 (header 1, replay from record 1 of 1)
  Read
    -> record 1
  (1: the repeat)
  GetPos -> 2
  stored: position 2, 1 records
  Read
    -> 34
  the process ends without Close
)");
    EXPECT_THAT(lastRead.errorText, HasSubstr("checkpoint record body"));
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "1 2 3") << "with the tail cut off";
}

TEST_F(Trail, H23_ABrokenConnectionLooksLikeTheEndAfterRwait) {
    EXPECT_EQ(Play("H23"), "unfinished: 0 of 3 records");
    EXPECT_TRUE(done);
    EXPECT_EQ(Target(), "");
    EXPECT_EQ(queue.Waiting(), "1 2 3");
}

TEST_F(Trail, H24_APositionIsLeftWithoutAFile) {
    EXPECT_EQ(Play("H24"), std::string("stuck: ") + kNoFile);
    EXPECT_EQ(Finish(), kNoFile);
    EXPECT_EQ(Target(), "1 2 3") << "all of it is there, and no life can tell";
}

TEST_F(Trail, H25_once_AGetPosAtTheEndNamesAPlaceBehindTheLastRecord) {
    EXPECT_EQ(Play("H25-once"), "lost: the repeat was expected, and is another record");
    EXPECT_EQ(NameOf(repeat), "3");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "1 2");
}

TEST_F(Trail, H25_twice_ADeathInTheLastRewriteLeavesNothingToTellTheDuplicateBy) {
    EXPECT_EQ(Play("H25-twice"), "doubled: message 2");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "1 2 2 3");
}

TEST_F(Trail, T1_WhatIsBehindTheStoredLengthComesAgain) {
    EXPECT_EQ(Play("T1"), "doubled: message 1");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "1 1 2 3");
}

TEST_F(Trail, T2_APositionCountsARecordThatTheTargetLost) {
    EXPECT_EQ(Play("T2"), "lost: the target is shorter than its stored length");
    EXPECT_EQ(stored->records, 1U);
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "2 3") << "a host that does not compare the two";
}

TEST_F(Trail, L1_alike_ABeginningOfTheRecordBeforeIsTakenForADuplicate) {
    EXPECT_EQ(Play("L1-alike"), "lost: message 2");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "1 3");
}

TEST_F(Trail, L2_nul_AFirstMessageOfNulBytesIsTakenForADuplicate) {
    EXPECT_EQ(Play("L2-nul"), "lost: message 1");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "2 3");
}

TEST_F(Trail, L3_order_AnOlderMessageHidesTheDuplicate) {
    EXPECT_EQ(Play("L3-order"), "doubled: message 2");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "2 1 2 3");
}

TEST_F(Trail, L4_shared_AMessageBackedOutGoesToAnotherLoadToo) {
    EXPECT_EQ(Play("L4-shared"), "doubled: message 1");
    EXPECT_TRUE(queue.messages[1].takenByOther);
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "1 2 3") << "and 1 in the other load's";
}

/// The player cuts off the record that the power failure takes from the file.
TEST_F(Trail, L5_power_ARecordCommittedAndNotOnTheDiskIsLost) {
    EXPECT_EQ(Play("L5-power"), "lost: message 1");
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "2 3");
}

TEST_F(Trail, L6_clock_TwoSlowFailuresInARowLookLikeTheEnd) {
    EXPECT_EQ(Play("L6-clock"), "unfinished: 0 of 3 records");
    EXPECT_TRUE(done);
    EXPECT_EQ(Target(), "");
    EXPECT_EQ(queue.Waiting(), "1 2 3");
}

/// Tests the careful host itself, on which the other tests rely.
TEST_F(CarefulHost, StoresEveryMessageOnce) {
    PutMessages();
    EXPECT_EQ(Finish(), "");
    EXPECT_EQ(Target(), "1 2 3");
    EXPECT_EQ(life, 2) << "the second brought nothing more";
}

TEST(TrailList, EveryTrailHasATestAndEveryTestATrail) {
    std::set<std::string> tests;
    const testing::UnitTest& all = *testing::UnitTest::GetInstance();
    for (int i = 0; i < all.total_test_suite_count(); ++i) {
        const testing::TestSuite& suite = *all.GetTestSuite(i);
        if (suite.name() != std::string("Trail")) continue;
        for (int j = 0; j < suite.total_test_count(); ++j)
            tests.insert(suite.GetTestInfo(j)->name());
    }
    const std::vector<std::string> trails = TrailNames();
    EXPECT_FALSE(trails.empty());
    EXPECT_EQ(tests.size(), trails.size());
    for (const std::string& trail : trails) {
        const std::string beginning = TestName(trail) + "_";
        const auto first = tests.lower_bound(beginning);
        EXPECT_TRUE(first != tests.end() && first->rfind(beginning, 0) == 0) << trail << " has no test";
    }
}

}  // namespace
