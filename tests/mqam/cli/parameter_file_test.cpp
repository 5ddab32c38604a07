// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/parameter_file.h"

#include <gtest/gtest.h>

#include <fstream>

#include "tests/support/test_directory.h"

namespace mqam {
namespace {

class ParameterFiles : public ::testing::Test {
  protected:
    // Returns the lines as "1 QMGR QM1;", or the error without the path.
    std::string Read(const std::string& text) {
        std::ofstream(path_, std::ios::binary) << text;
        const Status read = ReadParameterFile(path_, file_);
        if (!read.IsOk()) return "refused" + read.Error().substr(read.Error().find(path_) + path_.size());
        std::string lines;
        for (const ParameterLine& line : file_.lines) {
            lines += std::to_string(line.number) + " " + line.keyword;
            for (const std::string& value : line.values)
                lines += " " + value;
            lines += ";";
        }
        return lines;
    }

    TestDirectory folder_;
    std::string path_ = folder_.Path("parm");
    ParameterFile file_;
};

TEST_F(ParameterFiles, AWarningDoesNotQuoteTheEndOfTheLine) {
    EXPECT_EQ(Read("CKFILE my file.ckpt \r\n"), "1 CKFILE my;");
    ASSERT_EQ(file_.warnings.size(), 1U);
    EXPECT_NE(file_.warnings[0].find("ignores 'file.ckpt'; "), std::string::npos) << file_.warnings[0];
}

TEST_F(ParameterFiles, LinesAreReadAsTheModuleReadsThem) {
    EXPECT_EQ(Read("# comment\nqmgr QM1\n\n -Rwait\t7\r\nTRCL 2 t.trc\nMQEX\n"),
              "2 QMGR QM1;4 RWAIT 7;5 TRCL 2 t.trc;6 MQEX;");
    EXPECT_TRUE(file_.isUnderstood);
    EXPECT_TRUE(file_.warnings.empty());
}

TEST_F(ParameterFiles, AValueWithABlankIsWarnedAbout) {
    EXPECT_EQ(Read("CKFILE my file.ckpt\nMQEX yes\n"), "1 CKFILE my;2 MQEX;");
    ASSERT_EQ(file_.warnings.size(), 2U);
    EXPECT_EQ(file_.warnings[0],
              path_ +
                  ", line 1: CKFILE my: the module ignores 'file.ckpt'; a value ends at the first "
                  "blank, so only 'my' is used");
    EXPECT_EQ(
        file_.warnings[1],
        path_ +
            ", line 2: MQEX: the module ignores 'yes'; a value ends at the first blank, so only MQEX is used");
}

TEST_F(ParameterFiles, AKeywordGivenTwiceIsWarnedAboutAndTheLastOneCounts) {
    EXPECT_EQ(Read("RWAIT 5\nRWAIT 6\n"), "1 RWAIT 5;2 RWAIT 6;");
    ASSERT_EQ(file_.warnings.size(), 1U);
    EXPECT_EQ(file_.warnings[0],
              path_ + ", line 2: RWAIT 6: the keyword is in the file more than once; the last one counts");
    EXPECT_EQ(FindParameter(file_, "RWAIT")->values, std::vector<std::string>{"6"});
    EXPECT_EQ(FindParameter(file_, "QMGR"), nullptr);
}

TEST_F(ParameterFiles, ANumberThatTheModuleWouldMisreadIsRefused) {
    EXPECT_EQ(Read("QMGR QM1\nRWAIT 5m\n"),
              "refused, line 2: RWAIT 5m: '5m' has a unit, which the module ignores; write 300");
    EXPECT_EQ(Read("BKSZ 1M\n"),
              "refused, line 1: BKSZ 1M: '1M' has a unit, which the module ignores; write 1048576");
    EXPECT_EQ(
        Read("RWAIT 1.5\n"),
        "refused, line 1: RWAIT 1.5: '1.5' is not a whole number; use 1 to 600 seconds (or with a unit: s, m, h, "
        "d), or -1 to wait forever");
    EXPECT_EQ(Read("TRCL x f\n"), "refused, line 1: TRCL x f: 'x' is not a number; use 0 to 4");
    // The module itself refuses what is out of range, and says so.
    EXPECT_EQ(Read("RWAIT 0\nRWAIT -1\n"), "1 RWAIT 0;2 RWAIT -1;");
}

TEST_F(ParameterFiles, WhatTheModuleRefusesIsNotUnderstood) {
    for (const std::string& text :
         {std::string("COLOUR red\n"), std::string("RWAIT\n"), std::string("TRCL 2\n"),
          std::string("PARMFILE other\n"), "# " + std::string(600, 'x') + "\n"}) {
        EXPECT_EQ(Read(text).find("refused"), std::string::npos) << text;
        EXPECT_FALSE(file_.isUnderstood) << text;
    }
}

TEST_F(ParameterFiles, AFileThatCannotBeReadIsRefusedWithItsPath) {
    Status read = ReadParameterFile(folder_.Path("none"), file_);
    EXPECT_EQ(read.Code(), StatusCode::kRefused);
    EXPECT_TRUE(
        read.Error().starts_with("--parmfile " + folder_.Path("none") + ": the file cannot be examined: "))
        << read.Error();
    read = ReadParameterFile(folder_.Root(), file_);
    EXPECT_EQ(read.Error(), "--parmfile " + folder_.Root() + " is a directory; name the file in it");
}

}  // namespace
}  // namespace mqam
