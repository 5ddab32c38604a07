#include "mqam/module/init_string.h"

#include <gtest/gtest.h>

using namespace mqam;

namespace {

TEST(InitString, KeywordsAndValuesAreSeparatedByOneBlank) {
    std::string text, complaint;
    ASSERT_TRUE(BuildInitString({{"QMGR", "--qmgr", {"QM1"}},
                                 {"MQEX", "--exclusive", {}},
                                 {"TRCL", "--trace", {"2", "a.trc"}},
                                 {"RWAIT", "--rwait", {"-1"}}},
                                text, complaint));
    EXPECT_EQ(text, "-QMGR QM1 -MQEX -TRCL 2 a.trc -RWAIT -1");
    EXPECT_EQ(complaint, "");
}

TEST(InitString, NothingGivenIsAnEmptyString) {
    std::string text = "old", complaint;
    ASSERT_TRUE(BuildInitString({}, text, complaint));
    EXPECT_EQ(text, "");
}

TEST(InitString, EveryDelimiterInAValueIsRefusedNamingTheOption) {
    for (const char* value : {"a b", "a\tb", "a\nb", "a\rb", "a\fb", " a", "a "}) {
        std::string text = "old", complaint;
        EXPECT_FALSE(
            BuildInitString({{"QMGR", "--qmgr", {"QM1"}}, {"CKFILE", "--ckfile", {value}}}, text, complaint));
        EXPECT_EQ(text, "");
        EXPECT_EQ(complaint.substr(0, 10), "--ckfile: ") << complaint;
        EXPECT_NE(complaint.find("blank"), std::string::npos) << complaint;
    }
}

TEST(InitString, EmptyValueIsRefused) {
    std::string text, complaint;
    EXPECT_FALSE(BuildInitString({{"TRCL", "--trace", {"1", ""}}}, text, complaint));
    EXPECT_EQ(complaint, "--trace: the value is empty");
}

}  // namespace
