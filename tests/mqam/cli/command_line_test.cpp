// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/command_line.h"

#include <gtest/gtest.h>

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <sstream>

#include "platform/environment.h"

namespace mqam {
namespace {

// A program with the shapes of options that mqam has.
class CommandLines : public ::testing::Test {
  protected:
    CommandLines() {
        program_.set_version_flag("--version", "1.2");
        CLI::App* load = program_.add_subcommand("load", "Load");
        load->add_option("--qmgr", text_, "queue manager, 1..48 characters")->type_name("NAME");
        load->add_option("--to", target_, "where the records go. -: standard output")
            ->type_name("TARGET")
            ->required();
        load->add_option("--trace", trace_, "trace")
            ->type_name("LEVEL FILE")
            ->expected(2)
            ->allow_extra_args(false);
        load->add_option("--attribute", list_, "attribute")->expected(1)->allow_extra_args(false)->take_all();
        load->add_option("--checkpoint-every", text_, "checkpoint");
        load->add_option("--checkpoint-seconds", text_, "checkpoint");
        CLI::Option* force = load->add_flag("--force", flag_, "replace");
        load->add_flag("--append", flag_, "add")->excludes(force);
        load->add_flag("-q,--quiet", flag_, "quiet");
        load->add_flag("-v,--verbose", flag_, "verbose");
        load->add_option("--hidden", text_, "")->group("");
        CLI::App* queue = program_.add_subcommand("queue", "Queues");
        queue->require_subcommand(1);
        CLI::App* put = queue->add_subcommand("put", "Put");
        put->add_option("--spool", spool_, "the spool directory")
            ->type_name("DIR")
            ->envname("MQAM_TEST_SPOOL")
            ->required();
        put->add_option("QMGR", qmgr_, "the queue manager")->required();
        put->add_option("FILE", list_, "files");
        program_.require_subcommand(1);
    }

    // Returns the error, or "help" or "fine", after the path of the command.
    std::string Read(const std::string& line) {
        std::istringstream rest(line);
        std::vector<std::string> words;
        for (std::string word; rest >> word;)
            words.push_back(word);
        const CommandLine read = ReadCommandLine(program_, words);
        return PathOf(*read.command) + ": " +
               (!read.error.empty() ? read.error
                : read.wantsHelp    ? "help"
                                    : "fine");
    }

    CLI::App program_{"Does things.", "tool"};
    std::string text_;
    std::string target_;
    std::string spool_;
    std::string qmgr_;
    std::vector<std::string> trace_;
    std::vector<std::string> list_;
    bool flag_ = false;
};

TEST_F(CommandLines, AMisspelledCommandIsSuggestedAndAllAreListed) {
    EXPECT_EQ(Read("laod --to x"),
              "tool: there is no command 'laod'; did you mean load? The commands are load and queue");
    EXPECT_EQ(Read("print"), "tool: there is no command 'print'; the commands are load and queue");
    EXPECT_EQ(Read("queue putt"),
              "tool queue: there is no command 'putt'; did you mean put? The commands are put");
    EXPECT_EQ(Read(""), "tool: the command is missing; the commands are load and queue");
    EXPECT_EQ(Read("queue"), "tool queue: the command is missing; the commands are put");
}

TEST_F(CommandLines, AMisspelledOptionIsSuggested) {
    EXPECT_EQ(Read("load --qmgrr QM1 --to x"), "tool load: there is no option --qmgrr; did you mean --qmgr?");
    EXPECT_EQ(Read("load --vebrose --to x"),
              "tool load: there is no option --vebrose; did you mean --verbose?");
    EXPECT_EQ(Read("load --qmgrr=QM1"), "tool load: there is no option --qmgrr; did you mean --qmgr?");
    EXPECT_EQ(
        Read("load --check 5"),
        "tool load: there is no option --check; did you mean --checkpoint-every or --checkpoint-seconds?");
    EXPECT_EQ(Read("load --colour red"),
              "tool load: there is no option --colour; `mqam help load` lists the options");
    EXPECT_EQ(Read("load -m QM1"), "tool load: there is no option -m; `mqam help load` lists the options");
    EXPECT_EQ(
        Read("--verbose load"),
        "tool: there is no option --verbose before a command; options follow the command that they belong to");
}

TEST_F(CommandLines, AHiddenOptionIsNotSuggestedButTaken) {
    EXPECT_EQ(Read("load --hiddn 1"),
              "tool load: there is no option --hiddn; `mqam help load` lists the options");
    EXPECT_EQ(Read("load --hidden 1 --to x"), "tool load: fine");
}

TEST_F(CommandLines, TheStyleOfTheModulesKeywordsIsRecognized) {
    EXPECT_EQ(Read("load -QMGR QM1"), "tool load: there is no option -QMGR; did you mean --qmgr?");
    EXPECT_EQ(Read("load --QMGR QM1"), "tool load: there is no option --QMGR; did you mean --qmgr?");
    EXPECT_EQ(Read("load -qmgr QM1"), "tool load: there is no option -qmgr; did you mean --qmgr?");
}

TEST_F(CommandLines, AValueThatIsMissingIsReportedBeforeTheNextOptionIsTakenForIt) {
    EXPECT_EQ(Read("load --to"), "tool load: --to needs TARGET: where the records go");
    EXPECT_EQ(Read("load --qmgr --to x"),
              "tool load: --qmgr needs NAME: queue manager; the next word is the option --to");
    EXPECT_EQ(
        Read("load --trace 2 --to x"),
        "tool load: --trace needs LEVEL FILE; only the first of these values was given; the next word is the "
        "option --to");
    EXPECT_EQ(Read("load --qmgr -1 --to x"), "tool load: fine");
    EXPECT_EQ(Read("load --qmgr=--to --to x"), "tool load: fine");
}

TEST_F(CommandLines, AnOptionGivenTwiceIsReportedWithBothValues) {
    EXPECT_EQ(Read("load --qmgr A --qmgr B --to x"),
              "tool load: an option is given twice: --qmgr A and --qmgr B; keep one of them");
    EXPECT_EQ(Read("load --attribute A=1 --attribute B=2 --to x --force --force"), "tool load: fine");
}

TEST_F(CommandLines, AWordThatBelongsToNothingIsReported) {
    EXPECT_EQ(Read("load verify --to x"), "tool load: 'verify' belongs to no option");
    EXPECT_EQ(Read("load qmgr QM1"), "tool load: 'qmgr' belongs to no option; did you mean --qmgr?");
    EXPECT_EQ(Read("load -q Q1 --to x"), "tool load: 'Q1' belongs to no option; -q takes no value");
}

TEST_F(CommandLines, ARequiredOptionThatIsMissingIsExplained) {
    EXPECT_EQ(Read("load --qmgr QM1"), "tool load: --to TARGET is missing: where the records go");
    EXPECT_EQ(Read("queue put Q"),
              "tool queue put: --spool DIR is missing: the spool directory; or set MQAM_TEST_SPOOL");
    EXPECT_EQ(Read("queue put --spool s"), "tool queue put: QMGR is missing: the queue manager");
    platform::SetEnvironment("MQAM_TEST_SPOOL", "s");
    EXPECT_EQ(Read("queue put Q a b c"), "tool queue put: fine");
    platform::SetEnvironment("MQAM_TEST_SPOOL", "");
}

TEST_F(CommandLines, WhatIsRightIsLeftToTheParser) {
    EXPECT_EQ(Read("load -qv --to x --trace 2 f --attribute=A=1"), "tool load: fine");
    EXPECT_EQ(Read("load --to -"), "tool load: fine");
    EXPECT_EQ(Read("queue put --spool s Q -- --a -b"), "tool queue put: fine");
    EXPECT_EQ(Read("--version"), "tool: fine");
}

TEST_F(CommandLines, HelpWinsOverWhateverElseIsWrongAfterIt) {
    EXPECT_EQ(Read("--help"), "tool: help");
    EXPECT_EQ(Read("load -h"), "tool load: help");
    EXPECT_EQ(Read("load --qmgr x --help --nonsense"), "tool load: help");
    EXPECT_EQ(Read("load help"), "tool load: help");
    EXPECT_EQ(Read("queue --help"), "tool queue: help");
}

TEST_F(CommandLines, RulesBetweenOptionsAreReportedInPlainEnglish) {
    EXPECT_EQ(DescribeParseError(CLI::ExcludesError("--append", "--force")),
              "--append and --force exclude each other; use one of them");
    EXPECT_EQ(DescribeParseError(CLI::RequiresError("--seed", "--count")),
              "--seed has no effect without --count; use both or neither");
    EXPECT_EQ(DescribeParseError(CLI::ValidationError("--rwait", "'x' is not a number")),
              "--rwait: 'x' is not a number");
}

TEST_F(CommandLines, TheUsageLineShowsWhatACallNeeds) {
    EXPECT_EQ(UsageLineOf(*program_.get_subcommand("load")),
              "  usage     tool load --qmgr NAME --to TARGET [OPTIONS]; `mqam help load` shows more\n");
    EXPECT_EQ(SynopsisOf(*program_.get_subcommand("queue")->get_subcommand("put")),
              "tool queue put QMGR [FILE...] [OPTIONS]");
    EXPECT_EQ(SynopsisOf(program_), "tool COMMAND [OPTIONS]");
}

TEST_F(CommandLines, ACommandIsFoundByItsPath) {
    std::string error;
    EXPECT_EQ(FindCommand(program_, {"queue", "put"}, error)->get_name(), "put");
    EXPECT_EQ(FindCommand(program_, {}, error), &program_);
    EXPECT_EQ(FindCommand(program_, {"queue", "pit"}, error), nullptr);
    EXPECT_EQ(error, "there is no command 'pit'; did you mean put? The commands are put");
    EXPECT_EQ(FindCommand(program_, {"load", "x"}, error), nullptr);
    EXPECT_EQ(error, "tool load has no commands of its own");
}

}  // namespace
}  // namespace mqam
