// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/keyword_options.h"

#include <gtest/gtest.h>

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include "platform/environment.h"
#include "tests/support/test_directory.h"

using namespace mqam;

namespace {

// Lists the module's keywords with the number of their values.
const std::map<std::string, int> kModuleKeywords = {
    {"HELP", 0}, {"TRCL", 2}, {"BKSZ", 1}, {"RWAIT", 1},   {"OTENACITY", 1}, {"OWAIT", 1},
    {"LOG", 1},  {"TLF", 1},  {"TDM", 1},  {"CONVERT", 1}, {"FLUSH", 1},     {"CKFILE", 1},
    {"MQEX", 0}, {"QMGR", 1}, {"QNM", 1},  {"SRVR", 1},    {"CHNL", 1},      {"PARMFILE", 1}};

// Parses a command line (without the program's name) into an initialization string. Returns "refused: ..." if
// that fails.
std::string Compose(std::vector<std::string> arguments) {
    CLI::App app;
    ModuleOptions options;
    AddModuleOptions(app, options);
    std::reverse(arguments.begin(), arguments.end());
    try {
        app.parse(arguments);
    } catch (const CLI::ParseError& error) {
        return std::string("refused: ") + error.what();
    }
    std::string text;
    const Status composed = ComposeInitString(options, text);
    return composed.IsOk() ? text : "refused: " + composed.Error();
}

TEST(KeywordOptions, EveryKeywordOfTheModuleHasAnOptionWithItsValues) {
    std::map<std::string, int> table;
    for (const KeywordOption& row : AllKeywordOptions()) {
        EXPECT_TRUE(table.emplace(row.keyword, row.values).second) << row.keyword;
    }
    EXPECT_EQ(table, kModuleKeywords);
}

TEST(KeywordOptions, EveryRowTeachesItsUse) {
    for (const KeywordOption& row : AllKeywordOptions()) {
        EXPECT_GT(std::string(row.help).size(), 15U) << row.keyword;
        EXPECT_NE(row.values > 0, std::string(row.example).empty()) << row.keyword;
        EXPECT_NE(row.values > 0, std::string(row.valueName).empty()) << row.keyword;
    }
}

TEST(KeywordOptions, EveryExampleParsesToItsKeyword) {
    for (const KeywordOption& row : AllKeywordOptions()) {
        const std::string names = row.option;
        std::vector<std::string> arguments = {names.substr(0, names.find(','))};
        std::string expected = std::string("-") + row.keyword;
        const std::string example = row.example;
        if (row.values == 1) arguments.push_back(example);
        if (row.values == 2) {
            arguments.push_back(example.substr(0, example.find(' ')));
            arguments.push_back(example.substr(example.find(' ') + 1));
        }
        if (row.values > 0) expected += " " + example;
        EXPECT_EQ(Compose(arguments), expected);
    }
}

TEST(KeywordOptions, EveryNameOfAnOptionWorks) {
    EXPECT_EQ(Compose({"--qnm", "Q"}), "-QNM Q");
    EXPECT_EQ(Compose({"--queue", "Q"}), "-QNM Q");
    EXPECT_EQ(Compose({"--bksz", "100"}), "-BKSZ 100");
    EXPECT_EQ(Compose({"--mqex"}), "-MQEX");
    EXPECT_EQ(Compose({"--trcl", "1", "f"}), "-TRCL 1 f");
}

TEST(KeywordOptions, PathsOfFilesThatTheModuleWritesHaveTheSystemsDelimiter) {
    const std::string slash(1, static_cast<char>(std::filesystem::path::preferred_separator));
    const std::string native = "d" + slash + "e" + slash + "f";
    EXPECT_EQ(Compose({"--ckfile", "d/e/f"}), "-CKFILE " + native);
    EXPECT_EQ(Compose({"--log", "d/e/f"}), "-LOG " + native);
    EXPECT_EQ(Compose({"--trace", "1", "d/e/f"}), "-TRCL 1 " + native);
    EXPECT_EQ(Compose({"--trace", "1/2", "f"}), "refused: --trace: '1/2' is not a number; use 0 to 4");
    EXPECT_EQ(Compose({"--server", "a/b"}), "-SRVR a/b");
    EXPECT_EQ(Compose({"--parmfile", "d/e/f"}), "-PARMFILE d/e/f");
    EXPECT_EQ(Compose({"--init", "-CKFILE d/e/f"}), "-CKFILE d/e/f");
}

TEST(KeywordOptions, AnOptionOverridesTheParameterFile) {
    const TestDirectory folder;
    const std::string path = folder.Path("parm");
    // Without a conflict the module reads the file.
    std::ofstream(path) << "QMGR QM1\nQNM Q1\nOWAIT 6\nMQEX\n";
    EXPECT_EQ(Compose({"--parmfile", path, "--tdm", "no"}), "-TDM no -PARMFILE " + path);
    // A load adds an RWAIT of its own, which would not count against one in a file.
    std::ofstream(path) << "QMGR QM1\nQNM Q1\nRWAIT 5\nRWAIT 6\nMQEX\n";
    EXPECT_EQ(Compose({"--parmfile", path, "--tdm", "no"}), "-QMGR QM1 -QNM Q1 -MQEX -RWAIT 6 -TDM no");
    EXPECT_EQ(Compose({"--parmfile", path, "--rwait", "77"}), "-QMGR QM1 -QNM Q1 -MQEX -RWAIT 77");
    std::ofstream(path) << "QMGR QM1\nRWAIT 5\n";
    EXPECT_EQ(Compose({"--parmfile", path, "--qmgr", "QM2", "--queue", "Q"}), "-QMGR QM2 -QNM Q -RWAIT 5");
    // The module refuses such a file, so it has to see it.
    std::ofstream(path) << "COLOUR red\nRWAIT 5\n";
    EXPECT_EQ(Compose({"--parmfile", path, "--rwait", "77"}), "-RWAIT 77 -PARMFILE " + path);
}

TEST(KeywordOptions, TheEnvironmentCountsLeast) {
    const TestDirectory folder;
    const std::string path = folder.Path("parm");
    std::ofstream(path) << "QMGR QM1\nRWAIT 5\n";
    platform::SetEnvironment("MQAM_QMGR", "QM0");
    EXPECT_EQ(Compose({"--queue", "Q"}), "-QMGR QM0 -QNM Q");
    EXPECT_EQ(Compose({"--queue", "Q", "--qmgr", "QM2"}), "-QMGR QM2 -QNM Q");
    EXPECT_EQ(Compose({"--parmfile", path, "--rwait", "7"}), "-QMGR QM1 -RWAIT 7");
    EXPECT_EQ(Compose({"--init", "-QNM Q"}), "-QNM Q");
    // A variable names no queue, so something else has to.
    EXPECT_EQ(Compose({}).substr(0, 9), "refused: ");
    platform::SetEnvironment("MQAM_SERVER", "h(1)");
    platform::SetEnvironment("MQAM_CHANNEL", "C");
    EXPECT_EQ(Compose({"--queue", "Q", "--server", "g(2)"}), "-QMGR QM0 -QNM Q -CHNL C -SRVR g(2)");
    platform::SetEnvironment("MQAM_CHANNEL", std::string(21, 'C'));
    EXPECT_EQ(Compose({"--queue", "Q"}),
              "refused: MQAM_CHANNEL: '" + std::string(21, 'C') + "' has 21 characters; use at most 20");
    for (const char* variable : {"MQAM_QMGR", "MQAM_SERVER", "MQAM_CHANNEL"})
        platform::SetEnvironment(variable, "");
}

TEST(KeywordOptions, NegativeWaitIsAValue) {
    EXPECT_EQ(Compose({"--rwait", "-1"}), "-RWAIT -1");
}

TEST(KeywordOptions, NumbersMayHaveUnitsAndReachTheModuleInDigits) {
    EXPECT_EQ(Compose({"--max-record", "1M"}), "-BKSZ 1048576");
    EXPECT_EQ(Compose({"--max-record", "100k"}), "-BKSZ 102400");
    EXPECT_EQ(Compose({"--rwait", "5m"}), "-RWAIT 300");
    EXPECT_EQ(Compose({"--otenacity", "1h"}), "-OTENACITY 3600");
    EXPECT_EQ(Compose({"--rwait", "007"}), "-RWAIT 7");
}

// The module would read the digits in front and ignore the rest.
TEST(KeywordOptions, WhatTheModuleRefusesOrMisreadsIsRefusedBeforeIt) {
    const std::multimap<std::string, std::string> wrong = {
        {"--rwait", "1.5"},      {"--rwait", "0"},
        {"--rwait", "601"},      {"--rwait", "abc"},
        {"--rwait", "-2"},       {"--max-record", "17M"},
        {"--max-record", "0"},   {"--max-record", "1MB"},
        {"--otenacity", "6001"}, {"--owait", "601"},
        {"--tdm", "maybe"},      {"--tlf", "t"},
        {"--convert", "0"},      {"--convert", "perhaps"},
        {"--flush", "x"},        {"--qmgr", std::string(49, 'Q')},
        {"--queue", ""},         {"--channel", std::string(21, 'C')}};
    for (const auto& [option, value] : wrong)
        EXPECT_EQ(Compose({option, value}).substr(0, 9), "refused: ") << option << " " << value;
    EXPECT_EQ(Compose({"--trace", "5", "f"}), "refused: --trace: '5' is out of range; use 0 to 4");
    EXPECT_EQ(
        Compose({"--rwait", "abc"}),
        "refused: --rwait: 'abc' is not a number; use 1 to 600 seconds (or with a unit: s, m, h, d), or -1 "
        "to wait forever");
    EXPECT_EQ(Compose({"--tdm", "yse"}),
              "refused: --tdm: 'yse' is not a choice; use yes or no (did you mean yes?)");
    EXPECT_EQ(Compose({"--convert", "x"}),
              "refused: --convert: 'x' is not a choice; use yes or no, or a CCSID of 1 to 65535");
}

TEST(KeywordOptions, WordsAreAcceptedInAnyCaseAsTheModuleDoes) {
    EXPECT_EQ(Compose({"--tdm", "NO"}), "-TDM NO");
    EXPECT_EQ(Compose({"--flush", "T"}), "-FLUSH T");
    EXPECT_EQ(Compose({"--convert", "Yes"}), "-CONVERT Yes");
    EXPECT_EQ(Compose({"--convert", "1208"}), "-CONVERT 1208");
}

TEST(KeywordOptions, ParameterFileCombinesWithOptions) {
    EXPECT_EQ(Compose({"--parmfile", "p", "--qmgr", "QM1"}), "-QMGR QM1 -PARMFILE p");
}

TEST(KeywordOptions, RawStringIsPassedAsItStands) {
    EXPECT_EQ(Compose({"--init", " -qmgr  QM1"}), " -qmgr  QM1");
}

TEST(KeywordOptions, RawStringExcludesKeywordOptions) {
    for (const auto& extra :
         std::vector<std::vector<std::string>>{{"--qmgr", "Q"}, {"--exclusive"}, {"--parmfile", "p"}}) {
        std::vector<std::string> arguments = {"--init", "-QMGR Q"};
        arguments.insert(arguments.end(), extra.begin(), extra.end());
        EXPECT_EQ(Compose(arguments).substr(0, 9), "refused: ") << extra[0];
    }
}

TEST(KeywordOptions, KeywordGivenTwiceIsRefused) {
    EXPECT_EQ(Compose({"--qmgr", "A", "--qmgr", "B"}).substr(0, 9), "refused: ");
}

TEST(KeywordOptions, TraceWithoutFileIsRefused) {
    EXPECT_EQ(Compose({"--trace", "2"}).substr(0, 9), "refused: ");
}

TEST(KeywordOptions, NothingGivenIsRefused) {
    EXPECT_NE(Compose({}).find("--queue"), std::string::npos);
}

TEST(KeywordOptions, BlankInAValueIsRefusedNamingTheOption) {
    EXPECT_EQ(Compose({"--log", "my log"}).substr(0, 16), "refused: --log: ");
}

}  // namespace
