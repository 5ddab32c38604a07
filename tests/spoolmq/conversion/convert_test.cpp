// SPDX-License-Identifier: Apache-2.0

// Tests gets with MQGMO_CONVERT.
#include <cstring>
#include <map>

#include "tests/spoolmq/support/spool_test.h"

namespace {

class ConvertTest : public SpoolTest {
  protected:
    void SetUp() override { ConnectAndOpen(); }

    void PutText(const std::string& body, MQLONG ccsid, const char* format = "MQSTR   ",
                 MQLONG encoding = 546) {
        mqi::MQMD md = NewMd();
        std::memcpy(md.Format, format, 8);
        md.CodedCharSetId = ccsid;
        md.Encoding = encoding;
        ASSERT_EQ(kDone, PutWith(connection_, object_, body, &md));
    }
    Got GetAs(MQLONG ccsid, std::size_t bufferBytes = 1000, MQLONG encoding = 546, MQLONG options = kSync) {
        mqi::MQMD md = NewMd();
        md.CodedCharSetId = ccsid;
        md.Encoding = encoding;
        return GetWith(connection_, object_, md, NewGmo(options | MQGMO_CONVERT, 3), bufferBytes);
    }
    void ExpectTaken() {
        EXPECT_EQ(FailedWith(MQRC_NO_MSG_AVAILABLE), Get(connection_, object_, kNoSync).codes);
        EXPECT_EQ(kDone, Commit(connection_));
    }
};

TEST_F(ConvertTest, CommonPairsConvertInBothDirections) {
    // These are the bytes of "Grüße, 50 £ ½" in each of the character sets.
    const std::string utf8 =
        "Gr\xC3\xBC\xC3\x9F"
        "e, 50 \xC2\xA3 \xC2\xBD";
    const std::map<MQLONG, std::string> texts = {
        {819,
         "Gr\xFC\xDF"
         "e, 50 \xA3 \xBD"},
        {850,
         "Gr\x81\xE1"
         "e, 50 \x9C \xAB"},
        {437,
         "Gr\x81\xE1"
         "e, 50 \x9C \xAB"},
        {1252,
         "Gr\xFC\xDF"
         "e, 50 \xA3 \xBD"},
        {37, "\xC7\x99\xDC\x59\x85\x6B\x40\xF5\xF0\x40\xB1\x40\xB8"},
        {500, "\xC7\x99\xDC\x59\x85\x6B\x40\xF5\xF0\x40\xB1\x40\xB8"},
        {1202, std::string("G\0r\0\xFC\0\xDF\0e\0,\0 \0"
                           "5\0"
                           "0\0 \0\xA3\0 \0\xBD\0",
                           26)},
    };
    for (const auto& [ccsid, text] : texts) {
        PutText(text, ccsid);
        Got got = GetAs(1208);
        EXPECT_EQ(kDone, got.codes) << ccsid;
        EXPECT_EQ(utf8, got.body) << ccsid;
        EXPECT_EQ(1208, got.md.CodedCharSetId) << ccsid;
        EXPECT_EQ(static_cast<MQLONG>(utf8.size()), got.dataLength) << ccsid;
        EXPECT_EQ(static_cast<MQLONG>(utf8.size()), got.gmo.ReturnedLength) << ccsid;
        PutText(utf8, 1208);
        got = GetAs(ccsid);
        EXPECT_EQ(kDone, got.codes) << ccsid;
        EXPECT_EQ(text, got.body) << ccsid;
        EXPECT_EQ(ccsid, got.md.CodedCharSetId);
    }
    ExpectTaken();
}

TEST_F(ConvertTest, EveryByteOfEverySingleByteSetSurvivesARoundTrip) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte) {
        all += static_cast<char>(byte);
    }
    for (const MQLONG ccsid : {37, 437, 500, 819, 850, 1252}) {
        PutText(all, ccsid);
        const Got wide = GetAs(1200);
        ASSERT_EQ(kDone, wide.codes) << ccsid;
        PutText(wide.body, 1200);
        EXPECT_EQ(all, GetAs(ccsid).body) << ccsid;
    }
}

TEST_F(ConvertTest, CharacterSet1200HasTheByteOrderOfTheEncoding) {
    const std::string clef = "\xF0\x9D\x84\x9E";  // a character that needs two units of 16 bits
    PutText(clef, 1208);
    EXPECT_EQ("\xD8\x34\xDD\x1E", GetAs(1200, 1000, 273).body);
    PutText("\xD8\x34\xDD\x1E", 1200, "MQSTR   ", 273);
    EXPECT_EQ("\x34\xD8\x1E\xDD", GetAs(1200, 1000, 546).body);
    PutText("\x34\xD8\x1E\xDD", 1200);
    EXPECT_EQ(clef, GetAs(1208).body);
}

TEST_F(ConvertTest, DataInTheWantedFormIsReturnedUnchangedWhateverItsFormat) {
    const std::string body("\xFF\0x", 3);
    PutText(body, 819, "        ");
    const Got got = GetAs(819);
    EXPECT_EQ(kDone, got.codes);
    EXPECT_EQ(body, got.body);
    ExpectTaken();
}

TEST_F(ConvertTest, ZeroMeansTheQueueManagersCharacterSet) {
    SetQmgr("ccsid = 819\n");
    PutText("\xC3\xBC", 1208);
    const Got got = GetAs(0);
    EXPECT_EQ("\xFC", got.body);
    EXPECT_EQ(819, got.md.CodedCharSetId);
}

TEST_F(ConvertTest, OtherFormatsAre2110AndTheMessageIsTakenUnconverted) {
    for (const char* format : {"        ", "OURS    "}) {
        PutText("\xFC", 819, format);
        const Got got = GetAs(1208);
        EXPECT_EQ(WarnedWith(mqi::MQRC_FORMAT_ERROR), got.codes);
        EXPECT_EQ("\xFC", got.body);
        EXPECT_EQ(819, got.md.CodedCharSetId);
        EXPECT_EQ(546, got.md.Encoding);
        ExpectTaken();
    }
}

TEST_F(ConvertTest, UnknownCharacterSetsAre2111And2115) {
    PutText("x", 4711);
    Got got = GetAs(1208);
    EXPECT_EQ(WarnedWith(mqi::MQRC_SOURCE_CCSID_ERROR), got.codes);
    EXPECT_EQ("x", got.body);
    EXPECT_EQ(4711, got.md.CodedCharSetId);
    ExpectTaken();
    PutText("x", 819);
    got = GetAs(4711);
    EXPECT_EQ(WarnedWith(mqi::MQRC_TARGET_CCSID_ERROR), got.codes);
    EXPECT_EQ(819, got.md.CodedCharSetId);
    ExpectTaken();
}

TEST_F(ConvertTest, UnknownByteOrdersAre2112And2116WhereTheyMatter) {
    PutText(std::string("x\0", 2), 1200, "MQSTR   ", 0);
    EXPECT_EQ(WarnedWith(mqi::MQRC_SOURCE_INTEGER_ENC_ERROR), GetAs(1208).codes);
    PutText("x", 819);
    EXPECT_EQ(WarnedWith(mqi::MQRC_TARGET_INTEGER_ENC_ERROR), GetAs(1200, 1000, 0).codes);
    PutText("x", 819, "MQSTR   ", 0);
    EXPECT_EQ(kDone, GetAs(1208).codes);
    ExpectTaken();
}

TEST_F(ConvertTest, TextThatCannotBeConvertedIs2119AndReturnedUnconverted) {
    const std::string euro = "5 \xE2\x82\xAC";
    for (const std::string& text :
         {euro, std::string("\xC3("), std::string("\xED\xA0\x80"), std::string("\xC0\x80"),
          std::string("\xF5\x80\x80\x80"), std::string("\xE2\x82")}) {
        PutText(text, 1208);
        const Got got = GetAs(819);
        EXPECT_EQ(WarnedWith(mqi::MQRC_NOT_CONVERTED), got.codes);
        EXPECT_EQ(text, got.body);
        EXPECT_EQ(1208, got.md.CodedCharSetId);
        ExpectTaken();
    }
    PutText("odd", 1200);
    EXPECT_EQ(WarnedWith(mqi::MQRC_NOT_CONVERTED), GetAs(819).codes);
    PutText("\x34\xD8x", 1202);
    EXPECT_EQ(WarnedWith(mqi::MQRC_NOT_CONVERTED), GetAs(819).codes);
    ExpectTaken();
}

TEST_F(ConvertTest, GrowingBeyondTheBufferIs2120AndTheMessageIsTakenUnconverted) {
    PutText("\xFC\xFC\xFC", 819);
    const Got got = GetAs(1208, 5);
    EXPECT_EQ(WarnedWith(mqi::MQRC_CONVERTED_MSG_TOO_BIG), got.codes);
    EXPECT_EQ("\xFC\xFC\xFC", got.body);
    EXPECT_EQ(819, got.md.CodedCharSetId);
    EXPECT_EQ(3, got.gmo.ReturnedLength);
    ExpectTaken();
}

TEST_F(ConvertTest, TruncatedDataIsNotConverted) {
    PutText("\xFC\xFC\xFC", 819);
    Got got = GetAs(1208, 2);
    EXPECT_EQ(WarnedWith(MQRC_TRUNCATED_MSG_FAILED), got.codes);
    EXPECT_EQ(819, got.md.CodedCharSetId);
    got = GetAs(1208, 2, 546, kSync | mqi::MQGMO_ACCEPT_TRUNCATED_MSG);
    EXPECT_EQ(WarnedWith(mqi::MQRC_TRUNCATED_MSG_ACCEPTED), got.codes);
    EXPECT_EQ("\xFC\xFC", got.body);
    EXPECT_EQ(819, got.md.CodedCharSetId);
    ExpectTaken();
}

TEST_F(ConvertTest, AnEmptyMessageNeedsNoConversion) {
    PutText("", 4711, "        ");
    EXPECT_EQ(kDone, GetAs(1208).codes);
}

}  // namespace
