// SPDX-License-Identifier: Apache-2.0
#include "mqam/explain/sentences.h"

#include <gtest/gtest.h>

using namespace mqam;

namespace {

TEST(Sentences, AClauseBecomesASentence) {
    EXPECT_EQ(MakeSentence("the queue is empty"), "The queue is empty.");
    EXPECT_EQ(MakeSentence("MQ has no memory left."), "MQ has no memory left.");
    EXPECT_EQ(MakeSentence(""), "");
}

TEST(Sentences, ASentenceBecomesAClauseUnlessItsFirstWordIsAName) {
    EXPECT_EQ(MakeClause("The queue is empty."), "the queue is empty");
    EXPECT_EQ(MakeClause("A record was lost."), "a record was lost");
    EXPECT_EQ(MakeClause("MQGET failed."), "MQGET failed");
}

TEST(Sentences, TheFirstOfSeveralIsFound) {
    EXPECT_EQ(FirstSentence("One is here. Two is there."), "One is here.");
    EXPECT_EQ(FirstSentence("Only one."), "Only one.");
}

TEST(WrapSentences, ACommandIsNotBroken) {
    EXPECT_EQ(WrapSentences("Enter `ALTER QMGR MAXHANDS(256)` now", 28),
              "Enter\n`ALTER QMGR MAXHANDS(256)`\nnow");
}

TEST(WrapSentences, ACommandLongerThanALineIsBroken) {
    EXPECT_EQ(WrapSentences("Enter `ALTER QMGR MAXHANDS(256)` now", 12),
              "Enter `ALTER\nQMGR\nMAXHANDS(256)`\nnow");
}

TEST(WrapSentences, ASingleBackquoteIsACharacter) {
    EXPECT_EQ(WrapSentences("one ` two three", 9), "one ` two\nthree");
}

}  // namespace
