// SPDX-License-Identifier: Apache-2.0

// Compares the message table with itself and with the sources of the module.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include "diag/message_text.h"

namespace {

using namespace mqamod;

enum class Shown { kErrorText, kTrace, kNowhere, kReserved };
enum class Recovery { kPermanent, kTransient, kByReason, kWarning };

struct Row {
    std::string name;  // empty for a message without a number
    int number;
    std::string text;
    std::string call;
    Shown shown;
    Recovery recovery;
    std::string request;
    std::string emitter;
    std::string cause;
    std::string action;
};

std::string TextOf(const char* text) {
    return text == nullptr ? "" : text;
}

std::vector<Row> AllRows() {
    using enum Shown;
    using enum Recovery;
    return {
#define MESSAGE(name, number, format, shown, recovery, request, emitter, cause, action) \
    {#name, number, format, "", shown, recovery, request, emitter, cause, action},
#define UNNUMBERED(text, call, shown, recovery, request, emitter, cause, action) \
    {"", 0, text, TextOf(call), shown, recovery, request, emitter, cause, action},
#include "diag/messages.inc"
    };
}

/// Returns the files that the column of emitters names.
std::vector<std::string> FilesOf(const Row& row) {
    std::vector<std::string> files;
    const std::regex file(R"([a-z_]+/[a-z_]+\.cpp)");
    for (std::sregex_iterator match(row.emitter.begin(), row.emitter.end(), file), end; match != end; ++match)
        files.push_back(match->str());
    return files;
}

std::string ReadSource(const std::string& file) {
    std::ifstream stream(std::string(MQAMOD_SOURCE_DIR "/src/") + file);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

TEST(MessageTable, NumbersAndNamesAreUnique) {
    std::set<int> numbers;
    std::set<std::string> names;
    for (const Row& row : AllRows()) {
        if (row.number == 0) continue;
        EXPECT_TRUE(numbers.insert(row.number).second) << row.number;
        EXPECT_TRUE(names.insert(row.name).second) << row.name;
    }
    EXPECT_EQ(numbers.size(), 67U);
}

TEST(MessageTable, TextsWithoutNumberDifferInTextOrCall) {
    std::set<std::string> keys;
    for (const Row& row : AllRows()) {
        if (row.number != 0) continue;
        EXPECT_TRUE(keys.insert(row.text + '\n' + row.call).second) << row.text;
    }
    EXPECT_FALSE(keys.empty());
}

TEST(MessageTable, EveryRowExplainsItselfInSentences) {
    for (const Row& row : AllRows()) {
        for (const std::string& text : {row.cause, row.action}) {
            ASSERT_GT(text.size(), 10U) << row.number << row.text;
            EXPECT_EQ(text.back(), '.') << text;
        }
    }
}

TEST(MessageTable, FormatBeginsWithTheNumber) {
    EXPECT_STREQ(GetMsgFormat(142), "MQA%04d: <MQCLOSE failed.  QName = %s. Reason code = %ld>");
    EXPECT_STREQ(GetMsgFormat(19080), "MQA%04d: <%s, Version %s>");
    EXPECT_STREQ(
        GetMsgFormat(134),
        "MQA%04d: <Channel Name (keyword:%s) was not specified.\nChannel Name used will be that found "
        "in environment variable.>");
}

TEST(MessageTable, NumberWithoutARowHasNoFormat) {
    for (const int number : {-1, 0, 99, 166, 19081})
        EXPECT_EQ(GetMsgFormat(number), nullptr) << number;
}

TEST(MessageTable, ArgumentsThatDoNotFitTheFormatAreRejected) {
    using format_check::Takes;
    constexpr const char* kFormat = "MQA%04d: <MQDISC failed. QMName = %s, reason code = %ld>";
    EXPECT_TRUE((Takes<int, const char*, long>(kFormat)));
    EXPECT_TRUE((Takes<int, char*, long>(kFormat)));
    EXPECT_FALSE((Takes<int, const char*, int>(kFormat)));
    EXPECT_FALSE((Takes<int, long, const char*>(kFormat)));
    EXPECT_FALSE((Takes<int, const char*>(kFormat)));
    EXPECT_FALSE((Takes<int, const char*, long, int>(kFormat)));
    EXPECT_FALSE((Takes<int, const char*, unsigned long>(kFormat)));
    EXPECT_FALSE((Takes<int>("MQA%04d: 5%")));
    EXPECT_TRUE((Takes<>("no arguments")));
}

TEST(MessageTable, EmittersUseTheNameOfTheirMessage) {
    for (const Row& row : AllRows()) {
        if (row.number == 0 || row.shown == Shown::kReserved) continue;
        const std::vector<std::string> files = FilesOf(row);
        EXPECT_FALSE(files.empty()) << row.name;
        for (const std::string& file : files)
            EXPECT_NE(ReadSource(file).find("Message::" + row.name + ">"), std::string::npos)
                << row.name << " in " << file;
    }
}

TEST(MessageTable, EmittersContainTheTextOfTheirMessage) {
    // The sources make both of these messages from one format, so they contain the format and not the texts.
    const std::map<std::string, std::string> made = {{"not initialized", "%s initialized"},
                                                     {"already initialized", "%s initialized"}};
    for (const Row& row : AllRows()) {
        if (row.number != 0) continue;
        const std::string text = made.contains(row.text) ? made.at(row.text) : row.text;
        const std::vector<std::string> files = FilesOf(row);
        EXPECT_FALSE(files.empty()) << row.text;
        for (const std::string& file : files)
            EXPECT_NE(ReadSource(file).find('"' + text + '"'), std::string::npos) << text << " in " << file;
    }
}

TEST(MessageTable, ReservedMessagesHaveNoEmitter) {
    for (const Row& row : AllRows()) {
        if (row.shown != Shown::kReserved) continue;
        EXPECT_EQ(row.emitter + row.request, "") << row.name;
    }
}

}  // namespace
