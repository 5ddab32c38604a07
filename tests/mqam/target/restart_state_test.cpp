// SPDX-License-Identifier: Apache-2.0
#include "mqam/target/restart_state.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <set>

using namespace mqam;

namespace {

using testing::HasSubstr;

RestartState EveryFieldFilled() {
    RestartState state;
    state.phase = LoadPhase::kFinished;
    state.queueManager = "QM1";
    state.queue = "ORDERS.IN";
    state.checkpointFile = "/data/a load/orders.ckpt";
    state.logFile = "/data/a load/orders.log";
    state.target = "/data/a load/orders.txt";
    state.format = "length";
    state.begun = "2026-01-31 23:59:59 UTC";
    state.attempts = 3;
    state.records = 4000;
    state.bytes = 123456789012;
    state.targetLength = 123456805012;
    state.lastRecordLength = 517;
    state.lastRecordDigest = 0xFEDCBA9876543210U;
    state.position = PositionData{12, 4000, 517017};
    state.lastEnd = LastEnd::kEarly;
    state.lastEndRecords = 4012;
    state.directory = "/data/a load";
    state.command = {"load", "--to", "orders %1.txt", "", "--qmgr", "%", "\x01"};
    return state;
}

// Returns the text with the checksum that belongs to its lines.
std::string Sealed(const std::string& lines) {
    char digits[17];
    std::snprintf(digits, sizeof digits, "%016llx",
                  static_cast<unsigned long long>(DigestOf(lines.data(), lines.size())));
    return lines + "checksum=" + digits + "\n";
}

std::string Lines(const RestartState& state) {
    const std::string text = FormatRestartState(state);
    return text.substr(0, text.rfind("checksum="));
}

void Replace(std::string& text, const std::string& part, const std::string& by) {
    const std::size_t at = text.find(part);
    ASSERT_NE(at, std::string::npos) << part;
    text.replace(at, part.size(), by);
}

// Returns what is wrong with the text, or an empty string.
std::string Complaint(const std::string& text) {
    RestartState state;
    return ParseRestartState(text, state).Error();
}

TEST(RestartStateTest, TheTextIsLinesThatAnOperatorCanRead) {
    EXPECT_EQ(FormatRestartState(EveryFieldFilled()),
              Sealed("mqam restart information 1\n"
                     "phase=finished\n"
                     "queue-manager=QM1\n"
                     "queue=ORDERS.IN\n"
                     "checkpoint-file=/data/a load/orders.ckpt\n"
                     "log-file=/data/a load/orders.log\n"
                     "target=/data/a load/orders.txt\n"
                     "format=length\n"
                     "begun=2026-01-31 23:59:59 UTC\n"
                     "lives=3\n"
                     "records=4000\n"
                     "bytes=123456789012\n"
                     "target-length=123456805012\n"
                     "last-record-length=517\n"
                     "last-record-digest=fedcba9876543210\n"
                     "position=0c000000a00f000099e3070000000000\n"
                     "last-end=early\n"
                     "last-end-records=4012\n"
                     "directory=/data/a load\n"
                     "command=load --to orders%20%251.txt % --qmgr %25 %01\n"));
}

TEST(RestartStateTest, EveryFieldComesBack) {
    const RestartState state = EveryFieldFilled();
    RestartState back;
    ASSERT_EQ(ParseRestartState(FormatRestartState(state), back).Error(), "");
    EXPECT_EQ(back.phase, state.phase);
    EXPECT_EQ(back.queueManager, state.queueManager);
    EXPECT_EQ(back.queue, state.queue);
    EXPECT_EQ(back.checkpointFile, state.checkpointFile);
    EXPECT_EQ(back.logFile, state.logFile);
    EXPECT_EQ(back.target, state.target);
    EXPECT_EQ(back.format, state.format);
    EXPECT_EQ(back.begun, state.begun);
    EXPECT_EQ(back.attempts, state.attempts);
    EXPECT_EQ(back.records, state.records);
    EXPECT_EQ(back.bytes, state.bytes);
    EXPECT_EQ(back.targetLength, state.targetLength);
    EXPECT_EQ(back.lastRecordLength, state.lastRecordLength);
    EXPECT_EQ(back.lastRecordDigest, state.lastRecordDigest);
    ASSERT_TRUE(back.position);
    EXPECT_EQ(std::memcmp(&*back.position, &*state.position, MQAMOD_POSITION_BYTES), 0);
    EXPECT_EQ(back.lastEnd, state.lastEnd);
    EXPECT_EQ(back.lastEndRecords, state.lastEndRecords);
}

TEST(RestartStateTest, AFreshStateComesBackOverAUsedOne) {
    RestartState back = EveryFieldFilled();
    ASSERT_EQ(ParseRestartState(FormatRestartState(RestartState{}), back).Error(), "");
    EXPECT_EQ(FormatRestartState(back), FormatRestartState(RestartState{}));
    EXPECT_FALSE(back.position);
    EXPECT_EQ(back.queue, "");
    EXPECT_EQ(back.records, 0U);
}

TEST(RestartStateTest, EachPhaseAndEachEndHasItsOwnWord) {
    std::set<std::string> texts;
    for (const LoadPhase phase : {LoadPhase::kLoading, LoadPhase::kFinished, LoadPhase::kComplete}) {
        for (const LastEnd end : {LastEnd::kNone, LastEnd::kEarly, LastEnd::kAfterWait}) {
            RestartState state;
            state.phase = phase;
            state.lastEnd = end;
            RestartState back;
            ASSERT_EQ(ParseRestartState(FormatRestartState(state), back).Error(), "");
            EXPECT_EQ(back.phase, phase);
            EXPECT_EQ(back.lastEnd, end);
            texts.insert(FormatRestartState(state));
        }
    }
    EXPECT_EQ(texts.size(), 9U);
}

TEST(RestartStateTest, NamesOfAnyBytesStayOnOneLineAndComeBack) {
    std::string every;
    for (int byte = 0; byte < 256; ++byte)
        every += static_cast<char>(byte);
    for (const std::string& name :
         {every, std::string("100%"), std::string("%0A"), std::string("a\nphase=complete\nchecksum=0"),
          std::string("=x="), std::string(" blank at both ends "), std::string(40000, 'x')}) {
        RestartState state = EveryFieldFilled();
        state.target = name;
        state.queue = name;
        const std::string text = FormatRestartState(state);
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 21);
        RestartState back;
        ASSERT_EQ(ParseRestartState(text, back).Error(), "");
        EXPECT_EQ(back.target, name);
        EXPECT_EQ(back.queue, name);
    }
}

TEST(RestartStateTest, NumbersComeBackAtTheirLimits) {
    RestartState state;
    state.records = state.bytes = state.targetLength = state.lastEndRecords = UINT64_MAX;
    state.lastRecordDigest = UINT64_MAX;
    state.position = PositionData{INT32_MAX, INT32_MIN, INT64_MIN};
    RestartState back;
    ASSERT_EQ(ParseRestartState(FormatRestartState(state), back).Error(), "");
    EXPECT_EQ(back.records, UINT64_MAX);
    EXPECT_EQ(back.lastEndRecords, UINT64_MAX);
    EXPECT_EQ(back.lastRecordDigest, UINT64_MAX);
    EXPECT_EQ(std::memcmp(&*back.position, &*state.position, MQAMOD_POSITION_BYTES), 0);
}

TEST(RestartStateTest, ATextCutAtAnyByteIsRefused) {
    const std::string text = FormatRestartState(EveryFieldFilled());
    for (std::size_t bytes = 0; bytes < text.size(); ++bytes)
        EXPECT_NE(Complaint(text.substr(0, bytes)), "") << bytes;
    EXPECT_EQ(Complaint(""), "is empty");
    EXPECT_EQ(Complaint("mqam rest"), "is cut short");
    EXPECT_EQ(Complaint(text.substr(0, text.size() - 1)), "is cut short");
    EXPECT_EQ(Complaint(text.substr(0, text.size() / 2)), "is cut short");
}

TEST(RestartStateTest, ATextWithAnyBitTurnedIsRefused) {
    const std::string text = FormatRestartState(EveryFieldFilled());
    for (std::size_t bit = 0; bit < text.size() * 8; ++bit) {
        std::string turned = text;
        turned[bit / 8] = static_cast<char>(turned[bit / 8] ^ (1 << bit % 8));
        EXPECT_NE(Complaint(turned), "") << "bit " << bit % 8 << " of byte " << bit / 8;
    }
}

TEST(RestartStateTest, WhatFollowsTheChecksumIsRefused) {
    const std::string text = FormatRestartState(EveryFieldFilled());
    EXPECT_NE(Complaint(text + "\n"), "");
    EXPECT_NE(Complaint(text + text), "");
    EXPECT_NE(Complaint(text + std::string(1, '\0')), "");
}

TEST(RestartStateTest, LineEndsOfAnotherSystemAreRefused) {
    std::string text;
    for (const char c : FormatRestartState(EveryFieldFilled()))
        text += c == '\n' ? std::string("\r\n") : std::string(1, c);
    EXPECT_EQ(Complaint(text), "is not restart information of mqam, or was written by another version");
}

TEST(RestartStateTest, AnotherVersionIsNotGuessedAt) {
    std::string lines = Lines(EveryFieldFilled());
    Replace(lines, "information 1\n", "information 2\n");
    EXPECT_EQ(Complaint(Sealed(lines)),
              "is not restart information of mqam, or was written by another version");
}

TEST(RestartStateTest, ADamagedLineIsNamedByItsChecksum) {
    std::string text = FormatRestartState(EveryFieldFilled());
    Replace(text, "records=4000", "records=4001");
    EXPECT_EQ(Complaint(text), "is damaged: its checksum does not match its lines");
}

// The limits of the fields also refuse a text whose checksum someone has corrected.
TEST(RestartStateTest, AValueThatThisProgramDoesNotWriteIsRefusedWithItsLine) {
    const std::pair<const char*, const char*> changes[] = {
        {"phase=finished", "phase=done"},
        {"phase=finished", "phase="},
        {"queue=ORDERS.IN", "queue=%4"},
        {"queue=ORDERS.IN", "queue=%"},
        {"queue=ORDERS.IN", "queue=%-1"},
        {"lives=3", "lives="},
        {"lives=3", "lives=-3"},
        {"lives=3", "lives=+3"},
        {"lives=3", "lives= 3"},
        {"lives=3", "lives=3x"},
        {"records=4000", "records=18446744073709551616"},
        {"last-record-digest=fedcba9876543210", "last-record-digest=1"},
        {"last-record-digest=fedcba9876543210", "last-record-digest=fedcba987654321x"},
        {"position=0c", "position=none0c"},
        {"position=0c", "position=0"},
        {"last-end=early", "last-end=late"},
        {"bytes=", "byte="},
        {"queue=ORDERS.IN\n", ""},
    };
    for (const auto& [part, by] : changes) {
        std::string lines = Lines(EveryFieldFilled());
        Replace(lines, std::string("\n") + part, std::string("\n") + by);
        EXPECT_THAT(Complaint(Sealed(lines)), HasSubstr("was not written by this program")) << by;
    }
    EXPECT_EQ(Complaint(Sealed(Lines(EveryFieldFilled()) + "more=1\n")),
              "was not written by this program: it has additional lines");
}

TEST(RestartStateTest, TheDigestIsFnv1aOf64Bits) {
    EXPECT_EQ(DigestOf("", 0), 0xcbf29ce484222325U);
    EXPECT_EQ(DigestOf("a", 1), 0xaf63dc4c8601ec8cU);
    EXPECT_EQ(DigestOf("foobar", 6), 0x85944171f73967e8U);
    EXPECT_EQ(DigestOf("\xFF\0", 2), (((0xcbf29ce484222325U ^ 0xFF) * 0x100000001b3U) * 0x100000001b3U));
}

TEST(RestartStateTest, TheCommandIsKeptWordByWordAndAnOlderStateHasNone) {
    const RestartState state = EveryFieldFilled();
    RestartState parsed;
    ASSERT_EQ(ParseRestartState(FormatRestartState(state), parsed).Error(), "");
    EXPECT_EQ(parsed.command, state.command);
    EXPECT_EQ(parsed.directory, state.directory);
    EXPECT_THAT(FormatRestartState(state),
                HasSubstr("\ncommand=load --to orders%20%251.txt % --qmgr %25 %01\n"));

    std::string lines = Lines(state);
    lines.resize(lines.find("directory="));
    parsed = state;
    EXPECT_EQ(ParseRestartState(Sealed(lines), parsed).Error(), "");
    EXPECT_EQ(parsed.lastEndRecords, state.lastEndRecords);
    EXPECT_TRUE(parsed.command.empty());
    EXPECT_EQ(parsed.directory, "");
    // One of the two lines alone is not what any version wrote.
    EXPECT_NE(ParseRestartState(Sealed(lines + "directory=/data\n"), parsed).Error(), "");
    EXPECT_NE(ParseRestartState(Sealed(lines + "command=load\n"), parsed).Error(), "");
    EXPECT_NE(ParseRestartState(Sealed(lines + "directory=/data\ncommand=load  --to\n"), parsed).Error(), "");
}

}  // namespace
