// SPDX-License-Identifier: Apache-2.0
#include "mqam/target/record_encoder.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace mqam {
namespace {

constexpr RecordLayout kLines = {RecordFormat::kLines, NewlineRule::kKeep};
constexpr RecordLayout kEscaped = {RecordFormat::kLines, NewlineRule::kEscape};
constexpr RecordLayout kJson = {RecordFormat::kJson, NewlineRule::kKeep};
constexpr RecordLayout kLength = {RecordFormat::kLength, NewlineRule::kKeep};
constexpr RecordLayout kRaw = {RecordFormat::kRaw, NewlineRule::kKeep};

// Returns the bytes of the records in a file, or the error.
std::string Encode(RecordLayout layout, const std::vector<std::string>& records, std::uint64_t before = 0) {
    RecordEncoder encoder(layout, before);
    std::string file;
    for (const std::string& record : records) {
        RecordEncoder::Encoded encoded;
        const Status status = encoder.Encode(record.data(), record.size(), encoded);
        if (!status.IsOk()) return status.Error();
        EXPECT_EQ(encoded.Bytes(), encoded.before.size() + encoded.body.size() + encoded.after.size());
        file += std::string(encoded.before) + std::string(encoded.body) + std::string(encoded.after);
    }
    return file;
}

TEST(RecordEncoder, EachFormatHasItsFrame) {
    EXPECT_EQ(Encode(kLines, {"a", "b\nc"}), "a\nb\nc\n");
    EXPECT_EQ(Encode(kRaw, {"a", "b"}), "ab");
    EXPECT_EQ(Encode(kLength, {"ab"}), std::string("\2\0\0\0ab", 6));
    EXPECT_EQ(Encode(kEscaped, {"a\nb", "c\\n", "\\"}), "a\\nb\nc\\\\n\n\\\\\n");
}

TEST(RecordEncoder, JsonHasOneObjectALineNumberedFromTheBeginningOfTheLoad) {
    EXPECT_EQ(Encode(kJson, {"one", "two"}),
              "{\"number\":1,\"text\":\"one\"}\n{\"number\":2,\"text\":\"two\"}\n");
    EXPECT_EQ(Encode(kJson, {"x"}, 41), "{\"number\":42,\"text\":\"x\"}\n");
    EXPECT_EQ(Encode(kJson, {"\"\\/\n\r\t\x01\x7F"}),
              "{\"number\":1,\"text\":\"\\\"\\\\/\\n\\u000d\\u0009\\u0001\x7F\"}\n");
    EXPECT_EQ(Encode(kJson, {std::string("a\0b", 3)}), "{\"number\":1,\"text\":\"a\\u0000b\"}\n");
    EXPECT_EQ(Encode(kJson, {"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"}),
              "{\"number\":1,\"text\":\"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\"}\n");
}

TEST(RecordEncoder, JsonHasBase64ForBytesThatAreNoUtf8) {
    EXPECT_EQ(Encode(kJson, {"\xFF"}), "{\"number\":1,\"base64\":\"/w==\"}\n");
    EXPECT_EQ(Encode(kJson, {"\xFF\xFE"}), "{\"number\":1,\"base64\":\"//4=\"}\n");
    EXPECT_EQ(Encode(kJson, {"\xFF\xFE\xFD"}), "{\"number\":1,\"base64\":\"//79\"}\n");
    // Overlong forms, surrogates, what is beyond Unicode, and characters that are cut off.
    for (const char* bytes :
         {"\xC0\xAF", "\xE0\x80\xAF", "\xED\xA0\x80", "\xF0\x80\x80\x80", "\xF4\x90\x80\x80", "\xF5", "\xC3",
          "\xE2\x82", "\xF0\x9F\x98", "\x80", "a\xC3(b"})
        EXPECT_NE(Encode(kJson, {bytes}).find("\"base64\""), std::string::npos) << bytes;
}

TEST(RecordEncoder, RecordsWithLineFeedsAreCountedOrRefused) {
    RecordEncoder encoder(kLines, 0);
    RecordEncoder::Encoded encoded;
    for (const std::string record : {"a", "b\n", "\n\n"})
        EXPECT_TRUE(encoder.Encode(record.data(), record.size(), encoded).IsOk());
    EXPECT_EQ(encoder.RecordsWithLineFeeds(), 2U);
    EXPECT_EQ(Encode({RecordFormat::kLines, NewlineRule::kFail}, {"a", "b"}), "a\nb\n");
    EXPECT_TRUE(Encode({RecordFormat::kLines, NewlineRule::kFail}, {"a", "b\n"})
                    .starts_with(
                        "record 2 of the load contains a line feed, and --on-newline fail refuses it; use "));
}

TEST(RecordEncoder, TheLastRecordIsFoundAgainInEveryLayout) {
    std::mt19937 random(7);
    for (const RecordLayout& layout : {kLines, kEscaped, kJson, kLength, kRaw}) {
        std::vector<std::string> records;
        for (int i = 0; i < 200; ++i) {
            std::string record(random() % 40, '\0');
            // Few different bytes, so that every kind of escape is next to every other one.
            for (char& c : record)
                c = "a\n\\\"n\x01\xC3\xA4"[random() % 8];
            records.push_back(record);
            const std::string file = Encode(layout, records);
            const std::uint64_t most = TailBytes(layout, record.size());
            const std::string tail = file.size() > most ? file.substr(file.size() - most) : file;
            std::string found;
            ASSERT_TRUE(DecodeLastRecord(layout, tail, record.size(), found)) << NameOf(layout) << " " << i;
            ASSERT_EQ(found, record) << NameOf(layout) << " " << i;
        }
    }
}

TEST(RecordEncoder, WhatIsNotTheLastRecordIsNotTakenForIt) {
    std::string record = "unchanged";
    EXPECT_FALSE(DecodeLastRecord(kLines, "abc", 3, record));
    EXPECT_FALSE(DecodeLastRecord(kLines, "ab\n", 3, record));
    EXPECT_FALSE(DecodeLastRecord(kEscaped, "abcd\n", 3, record));
    for (const char* tail : {"{\"number\":1,\"text\":\"abcd\"}\n", "{\"number\":1,\"text\":\"abc\"}",
                             "{\"number\":1,\"text\":\"abc\n", "{\"number\":1,\"data\":\"abc\"}\n",
                             "{\"number\":1,\"base64\":\"YW*j\"}\n", "{\"number\":1,\"base64\":\"YWJ\"}\n",
                             "{\"number\":1,\"text\":\"ab\\u00\"}\n", "abc\n", "\n", ""})
        EXPECT_FALSE(DecodeLastRecord(kJson, tail, 3, record)) << tail;
    EXPECT_EQ(record, "unchanged");
}

TEST(RecordEncoder, LayoutsThatMakeTheSameFileHaveOneName) {
    EXPECT_EQ(NameOf(kLines), "lines");
    EXPECT_EQ(NameOf(RecordLayout{RecordFormat::kLines, NewlineRule::kFail}), "lines");
    EXPECT_EQ(NameOf(kEscaped), "lines-escaped");
    EXPECT_EQ(NameOf(kJson), "json");
    EXPECT_EQ(NameOf(RecordLayout{RecordFormat::kRaw, NewlineRule::kEscape}), "raw");
}

}  // namespace
}  // namespace mqam
