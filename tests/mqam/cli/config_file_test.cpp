// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/config_file.h"

#include <gtest/gtest.h>

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <fstream>
#include <sstream>

#include "tests/support/test_directory.h"

namespace mqam {
namespace {

class ConfigFiles : public ::testing::Test {
  protected:
    ConfigFiles() {
        CLI::App* load = program_.add_subcommand("load", "Load");
        load->add_option("--config", text_, "file")->type_name("FILE");
        load->add_option("--qmgr,--manager", text_, "queue manager");
        load->add_option("--trace", list_, "trace")->expected(2)->allow_extra_args(false);
        load->add_option("--attribute", list_, "attribute")->expected(1)->allow_extra_args(false)->take_all();
        load->add_option("--hidden", text_, "")->group("");
        CLI::Option* force = load->add_flag("--force", flag_, "replace");
        load->add_flag("--append", flag_, "add")->excludes(force);
        load->add_flag("-q,--quiet", flag_, "quiet");
        program_.add_subcommand("check", "Check");
    }

    // Returns the words after the expansion, without "load --config PATH"; or the error after the path.
    std::string Expand(const std::string& text, const std::string& line = "") {
        const std::string path = folder_.Path("config");
        std::ofstream(path, std::ios::binary) << text;
        std::vector<std::string> words = {"load"};
        std::istringstream rest(line);
        for (std::string word; rest >> word;)
            words.push_back(word);
        words.insert(words.end(), {"--config", path});
        const Status expanded = ExpandConfigFile(program_, words);
        if (!expanded.IsOk()) return "refused" + expanded.Error().substr(path.size());
        EXPECT_EQ(words.front(), "load");
        std::string joined;
        for (std::size_t i = 1; i + 2 < words.size(); ++i)
            joined += (i > 1 ? "|" : "") + words[i];
        return joined;
    }

    CLI::App program_{"Does things.", "tool"};
    TestDirectory folder_;
    std::string text_;
    std::vector<std::string> list_;
    bool flag_ = false;
};

TEST_F(ConfigFiles, OptionsOfTheFileFollowTheCommand) {
    EXPECT_EQ(Expand("# comment\nqmgr = QM1\nforce = true\nquiet = false\n", "--trace 1 f"),
              "--qmgr=QM1|--force|--trace|1|f");
    EXPECT_EQ(Expand("trace = [\"2\", \"my file\"]\n"), "--trace|2|my file");
    EXPECT_EQ(Expand("qmgr = \"a b\"\n"), "--qmgr=a b");
    EXPECT_EQ(Expand("attribute = [\"A=1\", \"B=2\"]\n"), "--attribute=A=1|--attribute=B=2");
}

TEST_F(ConfigFiles, OnlyTheSectionOfTheCommandIsUsed) {
    EXPECT_EQ(Expand("quiet = true\n[load]\nqmgr = QM1\n[check]\nqmgr = QM2\n"), "--quiet|--qmgr=QM1");
}

TEST_F(ConfigFiles, TheCommandLineOverridesTheFile) {
    EXPECT_EQ(Expand("qmgr = QM1\n", "--qmgr QM2"), "--qmgr|QM2");
    EXPECT_EQ(Expand("qmgr = QM1\n", "--manager=QM2"), "--manager=QM2");
    EXPECT_EQ(Expand("quiet = true\n", "-q"), "-q");
    EXPECT_EQ(Expand("append = true\n", "--force"), "--force");
}

TEST_F(ConfigFiles, MistakesInTheFileAreRefused) {
    EXPECT_EQ(Expand("qmgrr = QM1\n"), "refused: there is no option --qmgrr; did you mean --qmgr?");
    EXPECT_EQ(Expand("hidden = 1\n"),
              "refused: there is no option --hidden; `mqam help load` lists the options");
    EXPECT_EQ(Expand("force = maybe\n"), "refused: force is either true or false, not 'maybe'");
    EXPECT_EQ(Expand("qmgr = a b\n"),
              "refused: qmgr has 2 values and needs 1; put a value that contains blanks into double quotes");
}

TEST_F(ConfigFiles, AFileThatIsMissingIsRefused) {
    std::vector<std::string> words = {"load", "--config=" + folder_.Path("none")};
    EXPECT_EQ(ExpandConfigFile(program_, words).Error(),
              "--config " + folder_.Path("none") + ": the file cannot be read; name a file that exists");
}

TEST_F(ConfigFiles, WordsWithoutTheOptionAreUnchanged) {
    for (const std::vector<std::string>& line :
         std::vector<std::vector<std::string>>{{},
                                               {"load", "--qmgr", "Q"},
                                               {"load", "--config"},
                                               {"check", "--config", "x"},
                                               {"--config", "x"}}) {
        std::vector<std::string> words = line;
        EXPECT_TRUE(ExpandConfigFile(program_, words).IsOk());
        EXPECT_EQ(words, line);
    }
}

}  // namespace
}  // namespace mqam
