// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/command_pages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

namespace mqam {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Key;
using ::testing::Not;

/// Makes a program with two commands, one of which has a command of its own, and a hidden command.
class CommandPages : public ::testing::Test {
  protected:
    CommandPages() {
        CLI::App* copy = program_.add_subcommand("copy", "Copy a file");
        copy->add_option("FILE", file_, "what to copy")->required();
        copy->add_option("--to", to_, "where to; it's \\ or a\n.directory")->type_name("TARGET")->required();
        copy->add_option("--mode", mode_, "how")->type_name("fast|safe")->group("Speed");
        copy->add_flag("-f,--force", force_, "replace a file");
        copy->footer("Examples:\n  tool copy a --to b\n");
        CLI::App* list = program_.add_subcommand("list", "Show things");
        list->add_subcommand("files", "Show files");
        program_.add_subcommand("secret", "Do something that nobody asks for")->group("");
        pages_ = MakeManualPages(program_, "product 1.2");
    }

    CLI::App program_{"Does things.", "tool"};
    std::string file_;
    std::string to_;
    std::string mode_;
    bool force_ = false;
    std::map<std::string, std::string> pages_;
};

TEST_F(CommandPages, ThereIsAPageForEachCommandThatIsNotHidden) {
    EXPECT_THAT(pages_,
                ElementsAre(Key("tool-copy.1"), Key("tool-list-files.1"), Key("tool-list.1"), Key("tool.1")));
}

TEST_F(CommandPages, APageBeginsWithItsTitleNameAndSynopsis) {
    EXPECT_THAT(pages_["tool-copy.1"],
                ::testing::StartsWith(".TH TOOL\\-COPY 1 \"\" \"product 1.2\" \"User commands\"\n"
                                      ".SH NAME\n"
                                      "tool\\-copy \\- Copy a file\n"
                                      ".SH SYNOPSIS\n"
                                      ".B tool copy\n"
                                      "\\fB\\-\\-to\\fR \\fITARGET\\fR\n"
                                      "[\\fIOPTIONS\\fR]\n"
                                      "\\fIFILE\\fR\n"
                                      ".SH DESCRIPTION\n"));
}

TEST_F(CommandPages, TheProgramsPageListsItsCommandsAndTheirPages) {
    EXPECT_THAT(pages_["tool.1"],
                HasSubstr(".SH COMMANDS\n.TP\n\\fBcopy\\fR\nCopy a file\n.TP\n\\fBlist\\fR\n"));
    EXPECT_THAT(pages_["tool.1"],
                HasSubstr(".SH SEE ALSO\n\\fBtool\\-copy\\fR(1),\n\\fBtool\\-list\\fR(1)\n"));
    EXPECT_THAT(pages_["tool.1"], Not(HasSubstr("secret")));
}

TEST_F(CommandPages, OptionsAreGroupedAndTheirTextIsEscapedForRoff) {
    const std::string& page = pages_["tool-copy.1"];
    EXPECT_THAT(page, HasSubstr(".TP\n\\fB\\-\\-to\\fR \\fITARGET\\fR (required)\n"
                                "where to; it's \\e or a\n\\&.directory\n"));
    EXPECT_THAT(page, HasSubstr(".SS \"Speed\"\n.TP\n\\fB\\-\\-mode\\fR \\fIfast|safe\\fR\nhow\n"));
    EXPECT_THAT(page, HasSubstr(".TP\n\\fB\\-f, \\-\\-force\\fR\nreplace a file\n"));
}

TEST_F(CommandPages, AFooterIsShownLineByLine) {
    EXPECT_THAT(pages_["tool-copy.1"],
                HasSubstr(".SH NOTES\n.nf\nExamples:\n  tool copy a \\-\\-to b\n.fi\n"));
}

TEST_F(CommandPages, CompletionOffersWordsOfAnOptionAndPathsForTheOthers) {
    const std::string bash = MakeBashCompletion(program_);
    EXPECT_THAT(
        bash, HasSubstr("'tool copy --mode')\n            mapfile -t COMPREPLY < <(compgen -W 'fast safe' "));
    EXPECT_THAT(bash, HasSubstr("'tool copy --to')\n            mapfile -t COMPREPLY < <(compgen -f "));
    EXPECT_THAT(bash, Not(HasSubstr("'tool copy --force')")));
    EXPECT_THAT(bash, Not(HasSubstr("secret")));
}

TEST_F(CommandPages, CompletionForZshDescribesCommandsAndOptions) {
    const std::string zsh = MakeZshCompletion(program_);
    EXPECT_THAT(zsh, ::testing::StartsWith("#compdef tool\n"));
    EXPECT_THAT(zsh, HasSubstr("'files:Show files'"));
    EXPECT_THAT(zsh, HasSubstr("'--to:where to; it'\\''s \\ or a .directory'"));
    EXPECT_THAT(zsh, HasSubstr("'tool copy --mode')\n            compadd -- 'fast' 'safe'"));
}

}  // namespace
}  // namespace mqam
