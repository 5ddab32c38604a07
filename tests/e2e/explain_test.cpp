// SPDX-License-Identifier: Apache-2.0

// Runs `mqam explain` as an operator runs it.
#include <gtest/gtest.h>

#include <string>

#include "tests/support/json_values.h"
#include "tests/support/program_runner.h"
#include "tests/support/test_directory.h"
#include "tests/support/text_search.h"

namespace {

ProgramResult RunExplain(std::vector<std::string> arguments) {
    const TestDirectory directory;
    arguments.insert(arguments.begin(), "explain");
    return RunProgram(MQAM_PROGRAM, arguments, directory.Root());
}

TEST(ExplainCommand, ACodeIsExplainedOnStandardOutput) {
    const ProgramResult result = RunExplain({"mqrc_unknown_object_name"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(Contains(result.standardOutput, "2085 MQRC_UNKNOWN_OBJECT_NAME")) << result.standardOutput;
    EXPECT_TRUE(Contains(result.standardOutput, "  what to do  Check `--queue`")) << result.standardOutput;
    EXPECT_EQ(result.standardError, "");
}

TEST(ExplainCommand, SeveralWordsAreOneCode) {
    const ProgramResult result = RunExplain({"exit", "3"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(Contains(result.standardOutput, "exit code 3")) << result.standardOutput;
}

TEST(ExplainCommand, AnUnknownCodeIsRefusedWithNearMatches) {
    const ProgramResult result = RunExplain({"NOT_AUTHORISED"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.standardOutput, "");
    EXPECT_TRUE(Contains(result.standardError, "mqam explain: there is no code NOT_AUTHORISED"))
        << result.standardError;
    EXPECT_TRUE(Contains(result.standardError, "  similar   MQRC_NOT_AUTHORIZED")) << result.standardError;
}

TEST(ExplainCommand, WithoutACodeItTeachesByExample) {
    const ProgramResult result = RunExplain({});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(Contains(result.standardOutput, "  mqam explain MQA0151 ")) << result.standardOutput;
    EXPECT_TRUE(Contains(result.standardOutput, "  mqam explain --list ")) << result.standardOutput;
}

TEST(ExplainCommand, AListHasItsCodesOnly) {
    const ProgramResult rules = RunExplain({"--list", "rules"});
    EXPECT_EQ(rules.exitCode, 0);
    EXPECT_TRUE(rules.standardOutput.starts_with("H1 ")) << rules.standardOutput;
    EXPECT_FALSE(Contains(rules.standardOutput, "MQRC_")) << rules.standardOutput;
    const ProgramResult all = RunExplain({"--list"});
    EXPECT_EQ(all.exitCode, 0);
    for (const char* part : {"MQA0143 ", "2085 MQRC_", "34 pmrcFailure", "L13 ", "reasons"})
        EXPECT_TRUE(Contains(all.standardOutput, part)) << part;
    EXPECT_EQ(RunExplain({"--list", "everything"}).exitCode, 1);
}

TEST(ExplainCommand, WithJsonEachReadingIsAnObject) {
    const ProgramResult result = RunExplain({"exit", "3", "--json"});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    auto values = ReadJson(result.standardOutput);
    ASSERT_TRUE(values.has_value()) << result.standardOutput;
    EXPECT_EQ((*values)["code"], "exit 3");
    EXPECT_EQ((*values)["readings.0.title"], "exit code 3");
    EXPECT_EQ((*values)["readings.0.kind"], "what `mqam` returns to the shell");
    EXPECT_FALSE((*values)["readings.0.what_to_do"].empty());
    EXPECT_FALSE(values->contains("readings.1.title"));
    const ProgramResult unknown = RunExplain({"H99", "--json"});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_EQ(unknown.standardOutput, "");
}

TEST(ExplainCommand, AListWithJsonHasTheSameCodesAsTheList) {
    const ProgramResult text = RunExplain({"--list", "exit"});
    const ProgramResult json = RunExplain({"--list", "exit", "--json"});
    auto values = ReadJson(json.standardOutput);
    ASSERT_TRUE(values.has_value()) << json.standardOutput;
    std::string lines;
    for (int i = 0; values->contains("exit." + std::to_string(i) + ".code"); ++i) {
        const std::string row = "exit." + std::to_string(i);
        std::string code = values->at(row + ".code");
        if (code.size() < 2) code += " ";
        lines += code + "  " + values->at(row + ".meaning") + "\n";
    }
    EXPECT_EQ(lines, WithUnixLineEnds(text.standardOutput));
    auto all = ReadJson(RunExplain({"--list", "--json"}).standardOutput);
    ASSERT_TRUE(all.has_value());
    for (const char* list : {"messages", "reasons", "returns", "exit", "rules"})
        EXPECT_TRUE(all->contains(std::string(list) + ".0.code")) << list;
}

}  // namespace
