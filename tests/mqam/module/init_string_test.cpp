// SPDX-License-Identifier: Apache-2.0
#include "mqam/module/init_string.h"

#include <gtest/gtest.h>

using namespace mqam;

namespace {

TEST(InitString, KeywordsAndValuesAreSeparatedByOneBlank) {
    std::string text;
    const Status built = BuildInitString({{"QMGR", "--qmgr", {"QM1"}},
                                          {"MQEX", "--exclusive", {}},
                                          {"TRCL", "--trace", {"2", "a.trc"}},
                                          {"RWAIT", "--rwait", {"-1"}}},
                                         text);
    EXPECT_EQ(text, "-QMGR QM1 -MQEX -TRCL 2 a.trc -RWAIT -1");
    EXPECT_EQ(built.Error(), "");
}

TEST(InitString, NothingGivenIsAnEmptyString) {
    std::string text = "old";
    EXPECT_TRUE(BuildInitString({}, text).IsOk());
    EXPECT_EQ(text, "");
}

TEST(InitString, EveryDelimiterInAValueIsRefusedNamingTheOption) {
    for (const char* value : {"a b", "a\tb", "a\nb", "a\rb", "a\fb", " a", "a "}) {
        std::string text = "old";
        const Status refused =
            BuildInitString({{"QMGR", "--qmgr", {"QM1"}}, {"CKFILE", "--ckfile", {value}}}, text);
        EXPECT_EQ(refused.Code(), StatusCode::kRefused);
        EXPECT_EQ(text, "");
        EXPECT_EQ(refused.Error().substr(0, 10), "--ckfile: ") << refused.Error();
        EXPECT_NE(refused.Error().find("blank"), std::string::npos) << refused.Error();
    }
}

TEST(InitString, EmptyValueIsRefused) {
    std::string text;
    EXPECT_EQ(BuildInitString({{"TRCL", "--trace", {"1", ""}}}, text).Error(), "--trace: the value is empty");
}

}  // namespace
