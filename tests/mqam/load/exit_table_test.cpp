// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/exit_table.h"

#include <gtest/gtest.h>

#include <set>

using namespace mqam;

namespace {

struct Expected {
    AttemptEnd end;
    int workerCode;
    int exitCode;
    AfterAttempt after;
    NextHint hint;
};

class AttemptEndTable : public testing::TestWithParam<Expected> {};

TEST_P(AttemptEndTable, TheRowSaysWhatFollows) {
    const Expected& expected = GetParam();
    const AttemptEndRow& row = FindAttemptEnd(expected.end);
    EXPECT_EQ(row.end, expected.end);
    EXPECT_EQ(row.workerCode, expected.workerCode);
    EXPECT_EQ(static_cast<int>(row.exitCode), expected.exitCode);
    EXPECT_EQ(row.after, expected.after);
    EXPECT_EQ(row.hint, expected.hint);
}

constexpr Expected kExpected[] = {
    {AttemptEnd::kLoadDone, 0, 0, AfterAttempt::kEndCommand, NextHint::kNone},
    {AttemptEnd::kNothingToDo, 11, 11, AfterAttempt::kEndCommand, NextHint::kNone},
    {AttemptEnd::kInputEnded, 64, 8, AfterAttempt::kContinue, NextHint::kNone},
    {AttemptEnd::kNoProgress, 65, 8, AfterAttempt::kContinue, NextHint::kNone},
    {AttemptEnd::kInterrupted, 5, 5, AfterAttempt::kEndCommand, NextHint::kRunAgain},
    {AttemptEnd::kTimeout, 6, 6, AfterAttempt::kEndCommand, NextHint::kRunAgain},
    {AttemptEnd::kStoppedImmediately, 7, 7, AfterAttempt::kEndCommand, NextHint::kRunAgain},
    {AttemptEnd::kRefused, 66, 1, AfterAttempt::kEndCommand, NextHint::kNone},
    {AttemptEnd::kModuleFailed, 9, 9, AfterAttempt::kRetry, NextHint::kRunAgain},
    {AttemptEnd::kModuleRefuses, 2, 2, AfterAttempt::kEndCommand, NextHint::kFixAndRunAgain},
    {AttemptEnd::kTargetFailed, 3, 3, AfterAttempt::kRetry, NextHint::kFixAndRunAgain},
    {AttemptEnd::kModuleMissing, 4, 4, AfterAttempt::kEndCommand, NextHint::kNone},
    {AttemptEnd::kWorkerKilled, -1, 9, AfterAttempt::kRetry, NextHint::kRunAgain},
    {AttemptEnd::kWorkerNotStarted, -1, 9, AfterAttempt::kRetry, NextHint::kRunAgain},
};

INSTANTIATE_TEST_SUITE_P(Every, AttemptEndTable, testing::ValuesIn(kExpected),
                         [](const auto& row) { return "row" + std::to_string(row.index); });

TEST(AttemptEnds, EveryEndHasOneRow) {
    ASSERT_EQ(AllAttemptEnds().size(), std::size(kExpected));
    std::set<AttemptEnd> ends;
    for (const AttemptEndRow& row : AllAttemptEnds()) {
        EXPECT_TRUE(ends.insert(row.end).second);
        EXPECT_EQ(&FindAttemptEnd(row.end), &row);
    }
}

TEST(AttemptEnds, AWorkersExitCodeIsUnderstood) {
    for (const AttemptEndRow& row : AllAttemptEnds()) {
        if (row.workerCode == kNoWorkerCode) continue;
        EXPECT_EQ(AttemptEndOf({.started = true, .killed = false, .code = row.workerCode, .reason = ""}),
                  row.end)
            << row.workerCode;
    }
}

TEST(AttemptEnds, ACodeThatNoWorkerUsesIsAKill) {
    for (const int code : {1, 8, 10, 63, 67, 139, 255, -1}) {
        EXPECT_EQ(AttemptEndOf({.started = true, .killed = false, .code = code, .reason = ""}),
                  AttemptEnd::kWorkerKilled)
            << code;
    }
    EXPECT_EQ(AttemptEndOf({.started = true, .killed = true, .code = 9, .reason = ""}),
              AttemptEnd::kWorkerKilled);
    EXPECT_EQ(AttemptEndOf({.started = false, .killed = false, .code = 0, .reason = "no memory"}),
              AttemptEnd::kWorkerNotStarted);
}

TEST(PlainLoadExitCodes, EachEndHasItsCode) {
    EXPECT_EQ(ExitCodeOf(PlainLoadEnd::kEndOfInput, false), kExitDone);
    EXPECT_EQ(ExitCodeOf(PlainLoadEnd::kEndedEarly, false), kExitEndedEarly);
    EXPECT_EQ(ExitCodeOf(PlainLoadEnd::kInterrupted, false), kExitInterrupted);
    EXPECT_EQ(ExitCodeOf(PlainLoadEnd::kTimeout, false), kExitTimeout);
    EXPECT_EQ(ExitCodeOf(PlainLoadEnd::kNotStarted, false), kExitNotStarted);
    EXPECT_EQ(ExitCodeOf(PlainLoadEnd::kModuleFailed, true), kExitModuleFailed);
    EXPECT_EQ(ExitCodeOf(PlainLoadEnd::kTargetFailed, false), kExitTargetFailed);
}

TEST(PlainLoadExitCodes, AFailedRequestCountsMoreThanTheEndOfTheInputButLessThanTheTarget) {
    for (const PlainLoadEnd end : {PlainLoadEnd::kEndOfInput, PlainLoadEnd::kEndedEarly,
                                   PlainLoadEnd::kInterrupted, PlainLoadEnd::kTimeout}) {
        EXPECT_EQ(ExitCodeOf(end, true), kExitModuleFailed);
    }
    EXPECT_EQ(ExitCodeOf(PlainLoadEnd::kTargetFailed, true), kExitTargetFailed);
}

}  // namespace
