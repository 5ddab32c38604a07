// SPDX-License-Identifier: Apache-2.0

// Tests the keywords whose value is Yes or No, and CONVERT and FLUSH, which also accept other words.
#include <algorithm>

#include "tests/params/params_fixture.h"

using testing::ElementsAreArray;

namespace {

class WordTest : public ParamsFixture {
  protected:
    void ExpectReport(const std::string& keywords, const ExpectedParameters& parameters) {
        EXPECT_THAT(ReportOfInit(keywords), ElementsAreArray(parameters.TraceLines())) << keywords;
        StartOver();
    }
};

TEST_F(WordTest, TlfAcceptsYesAndNoInAnyCase) {
    ExpectedParameters parameters;
    for (const char* yes : {"YES", "yes", "Yes", "yEs"}) {
        parameters.logging = {"Logging pathname: 'log.dat'", "Terminate on Log failure: yes"};
        ExpectReport(std::string("-LOG log.dat -TLF no -TLF ") + yes, parameters);
    }
    for (const char* no : {"NO", "no", "nO"}) {
        parameters.logging = {"Logging pathname: 'log.dat'", "Terminate on Log failure: no"};
        ExpectReport(std::string("-LOG log.dat -TLF ") + no, parameters);
    }
}

TEST_F(WordTest, TdmAcceptsYesAndNoInAnyCase) {
    ExpectedParameters parameters;
    ExpectReport("-TDM no -TDM yes", parameters);
    parameters.duplicates = "Terminate on duplicate message: no";
    ExpectReport("-TDM nO", parameters);
}

TEST_F(WordTest, FlushAcceptsYesAndNoInAnyCase) {
    ExpectedParameters parameters;
    ExpectReport("-FLUSH yes -FLUSH no", parameters);
    parameters.mediaFlush = "Media flush: Yes";
    ExpectReport("-FLUSH yEs", parameters);
}

TEST_F(WordTest, FlushTIsAcceptedAndLeavesFlushUnchanged_Kept) {
    ExpectedParameters parameters;
    ExpectReport("-FLUSH t", parameters);
    parameters.mediaFlush = "Media flush: Yes";
    ExpectReport("-FLUSH yes -FLUSH T", parameters);
}

TEST_F(WordTest, ConvertAcceptsAWordOrANumber) {
    ExpectedParameters parameters;
    ExpectReport("-CONVERT yes -CONVERT no", parameters);
    parameters.convert = "MQ convert message data: yes";
    ExpectReport("-CONVERT Yes", parameters);
    ExpectReport("-CONVERT 1", parameters);
    parameters.convert = "MQ convert message data to CCSID: 819\n";
    ExpectReport("-CONVERT 819", parameters);
    ExpectReport("-CONVERT 819no", parameters);
}

TEST_F(WordTest, ConvertReportsANumberWithALineEndOfItsOwn_Kept) {
    const std::vector<std::string> report = ReportOfInit("-CONVERT 1208");
    const auto line =
        std::find(report.begin(), report.end(), "ParseParms(info): MQ convert message data to CCSID: 1208");
    ASSERT_TRUE(line != report.end() && line + 1 != report.end());
    EXPECT_EQ(*(line + 1), "");
}

TEST_F(WordTest, ConvertStoresANegativeNumberUnchanged_Kept) {
    ExpectedParameters parameters;
    parameters.convert = "MQ convert message data to CCSID: -1\n";
    ExpectReport("-CONVERT -1", parameters);
}

TEST_F(WordTest, ConvertOfANumberBeyond32BitsStoresTheLimit) {
    ExpectedParameters parameters;
    parameters.convert = "MQ convert message data to CCSID: 2147483647\n";
    ExpectReport("-CONVERT 4294967296", parameters);
    parameters.convert = "MQ convert message data to CCSID: -2147483648\n";
    ExpectReport("-CONVERT -4294967296", parameters);
}

struct RejectedWord {
    const char* name;
    const char* keyword;
    const char* value;
    const char* message;
};

void PrintTo(const RejectedWord& row, std::ostream* out) {
    *out << row.keyword << ' ' << row.value;
}

std::string RejectedWordName(const testing::TestParamInfo<RejectedWord>& row) {
    return std::string(row.param.keyword) + row.param.name;
}

class RejectedWordTest : public ParamsFixture, public testing::WithParamInterface<RejectedWord> {};

TEST_P(RejectedWordTest, FailsAndIsQuotedInUpperCase) {
    const RejectedWord& row = GetParam();
    EXPECT_TRUE(
        FailsWith(Init(Required(std::string(row.keyword) + " " + row.value)), KeywordError(row.message)));
}

const RejectedWord kRejectedWords[] = {
    {"OneLetter", "TLF", "y", "MQA0112: <Invalid Terminate on Log failure (TLF) parameter 'Y'>"},
    {"Longer", "TLF", "yess", "MQA0112: <Invalid Terminate on Log failure (TLF) parameter 'YESS'>"},
    {"T", "TLF", "t", "MQA0112: <Invalid Terminate on Log failure (TLF) parameter 'T'>"},
    {"OneLetter", "TDM", "n", "MQA0114: <Invalid Terminate on duplicate message (TDM) parameter 'N'>"},
    {"Number", "TDM", "1", "MQA0114: <Invalid Terminate on duplicate message (TDM) parameter '1'>"},
    {"Zero", "CONVERT", "0", "MQA0115: <Invalid Convert text (CONVERT) parameter '0'>"},
    {"ZeroWithText", "CONVERT", "0x10", "MQA0115: <Invalid Convert text (CONVERT) parameter '0X10'>"},
    {"Word", "CONVERT", "utf-8", "MQA0115: <Invalid Convert text (CONVERT) parameter 'UTF-8'>"},
    {"Dash", "CONVERT", "-", "MQA0115: <Invalid Convert text (CONVERT) parameter '-'>"},
    {"OneLetter", "FLUSH", "y", "MQA0116: <Invalid media flush (FLUSH) parameter 'Y'>"},
    {"TwoT", "FLUSH", "tt", "MQA0116: <Invalid media flush (FLUSH) parameter 'TT'>"},
};

INSTANTIATE_TEST_SUITE_P(Row, RejectedWordTest, testing::ValuesIn(kRejectedWords), RejectedWordName);

TEST_F(WordTest, LongerThanAnyMessageIsQuotedUntilTheMessageIsFull) {
    EXPECT_TRUE(FailsWith(Init(Required("-TLF " + std::string(5000, 'y'))),
                          KeywordError(Cut("MQA0112: <Invalid Terminate on Log failure (TLF) parameter '" +
                                           std::string(5000, 'Y')))));
}

}  // namespace
