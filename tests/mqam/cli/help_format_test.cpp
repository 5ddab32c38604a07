// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/help_format.h"

#include <gtest/gtest.h>

#include <CLI/Config.hpp>
#include <sstream>

#include "platform/environment.h"

namespace mqam {
namespace {

TEST(HelpFormat, AnOptionsDescriptionIsWrappedInItsColumn) {
    CLI::App app{"Does things.", "tool"};
    std::string text;
    app.add_option("--to", text, "one two three four five six seven eight nine ten eleven")
        ->type_name("TARGET")
        ->required();
    app.add_option("FILE", text, "a file");
    EXPECT_EQ(HelpFormat(75).make_help(&app, "", CLI::AppFormatMode::Normal),
              "Does things.\n"
              "\n"
              "Usage: tool --to TARGET [FILE] [OPTIONS]\n"
              "\n"
              "Arguments:\n"
              "  FILE                          a file\n"
              "\n"
              "Options:\n"
              "  -h,--help                     Print this help message and exit\n"
              "  --to TARGET (required)        one two three four five six seven eight\n"
              "                                nine ten eleven\n");
    EXPECT_EQ(HelpFormat(40).make_help(&app, "", CLI::AppFormatMode::Normal),
              "Does things.\n"
              "\n"
              "Usage: tool --to TARGET [FILE] [OPTIONS]\n"
              "\n"
              "Arguments:\n"
              "  FILE  a file\n"
              "\n"
              "Options:\n"
              "  -h,--help\n"
              "        Print this help message and exit\n"
              "  --to TARGET (required)\n"
              "        one two three four five six\n"
              "        seven eight nine ten eleven\n");
}

TEST(HelpFormat, AFooterIsWrappedParagraphByParagraphAndItsCommandsStayCommands) {
    const std::string footer =
        "A paragraph of several\nlines.\n\nExamples:\n  tool --one 'a b c d e f' --two three --four five \\\n"
        "            --six\n      what it does, in a sentence that is too long\n\nExit codes:\n"
        "  0  done, with everything in the target, and more\n  10  short\n";
    EXPECT_EQ(WrapFooter(footer, 40),
              "A paragraph of several lines.\n"
              "\n"
              "Examples:\n"
              "  tool --one 'a b c d e f' --two \\\n"
              "      three --four five --six\n"
              "      what it does, in a sentence that\n"
              "      is too long\n"
              "\n"
              "Exit codes:\n"
              "  0  done, with everything in the\n"
              "     target, and more\n"
              "  10  short\n");
}

TEST(HelpFormat, TheWidthIsThatOfTheEnvironmentWithinLimits) {
    const std::string before = platform::ReadEnvironment("COLUMNS");
    for (const auto& [columns, width] :
         std::map<std::string, std::size_t>{{"100", 100}, {"60", 60}, {"10", 40}, {"500", 120}}) {
        platform::SetEnvironment("COLUMNS", columns);
        EXPECT_EQ(HelpWidth(), width) << columns;
    }
    platform::SetEnvironment("COLUMNS", before);
}

}  // namespace
}  // namespace mqam
