// SPDX-License-Identifier: Apache-2.0
#include "params/check_parm.h"

#include <cstdio>
#include <cstring>

#include "diag/error_text.h"
#include "diag/keyword_help.h"
#include "diag/message_text.h"
#include "diag/trace.h"
#include "mqi/client_channel.h"
#include "params/keyword_text.h"
#include "params/settings.h"

namespace mqamod {

namespace {

constexpr char kFunction[] = "CheckParm";
constexpr std::size_t kMaxKeywordCharacters = 250;

struct KeywordRow;

// The tokens that are being validated, and the index of the keyword among them.
struct Position {
    char* const* tokens;
    std::int32_t count;
    std::int32_t* index;
};

using Check = ReturnCode (*)(const KeywordRow&, const Position&);

// Formats the message for a value that is refused.
//   number  in  the value as a number, or the number of its characters when it is a path or a name
using Refusal = const char* (*)(const KeywordRow&, const char* value, std::int32_t number);

// Describes one keyword. Its check determines which columns are used.
struct KeywordRow {
    const char* name;
    Check check;
    Refusal refusal = nullptr;
    std::int32_t smallest = 1;  // for numbers
    std::int32_t largest = 0;   // for numbers; for paths and names the largest number of characters
    char* text = nullptr;       // where a path or name is stored
    bool* flag = nullptr;       // set when a value is accepted; for Yes and No the setting itself
    void (*store)(std::int32_t) = nullptr;  // stores a number, before it is checked
};

template <Message kMessage>
const char* RefuseNumber(const KeywordRow& row, const char*, std::int32_t number) {
    return FormatNumbered<kMessage>(row.name, number);
}

const char* RefuseBlockSize(const KeywordRow& row, const char*, std::int32_t number) {
    return FormatNumbered<Message::kBlockSizeOutOfRange>(row.name, number, row.largest);
}

template <Message kMessage>
const char* RefuseWord(const KeywordRow& row, const char* value, std::int32_t) {
    return FormatNumbered<kMessage>(row.name, value);
}

template <Message kMessage>
const char* RefuseName(const KeywordRow& row, const char* value, std::int32_t characters) {
    return FormatNumbered<kMessage>(row.name, value, characters, row.largest);
}

template <Message kMessage>
const char* RefusePath(const KeywordRow& row, const char* value, std::int32_t characters) {
    return FormatNumbered<kMessage>(row.name, "pathname", value, characters, row.largest);
}

ReturnCode Fail(const char* message) {
    ReportError(Severity::kError, kFunction, message);
    return pmrcFailure;
}

bool HasToken(const Position& at, std::int32_t offset) {
    return offset < at.count - *at.index && at.tokens[*at.index + offset][0] != '\0';
}

char* Token(const Position& at, std::int32_t offset) {
    return at.tokens[*at.index + offset];
}

// Returns the value after the keyword, or null, with the error reported, if there is none.
char* Value(const Position& at) {
    if (HasToken(at, 1)) return Token(at, 1);
    (void)Fail(FormatNumbered<Message::kArgumentMissing>(Token(at, 0)));
    return nullptr;
}

ReturnCode Consume(const Position& at, std::int32_t tokens) {
    *at.index += tokens;
    return pmrcOK;
}

ReturnCode CheckHelp(const KeywordRow&, const Position& at) {
    ShowKeywordHelp();
    return Consume(at, 1);
}

ReturnCode CheckFlag(const KeywordRow& row, const Position& at) {
    *row.flag = true;
    return Consume(at, 1);
}

bool IsInRange(const KeywordRow& row, std::int32_t number) {
    return number >= row.smallest && number <= row.largest;
}

ReturnCode StoreNumber(const KeywordRow& row, const Position& at,
                       bool (*isAccepted)(const KeywordRow&, std::int32_t)) {
    const char* value = Value(at);
    if (value == nullptr) return pmrcFailure;
    const std::int32_t number = ReadNumber(value, std::strlen(value));
    row.store(number);
    if (!isAccepted(row, number)) return Fail(row.refusal(row, value, number));
    return Consume(at, 2);
}

ReturnCode CheckNumber(const KeywordRow& row, const Position& at) {
    return StoreNumber(row, at, IsInRange);
}

ReturnCode CheckReadWait(const KeywordRow& row, const Position& at) {
    return StoreNumber(row, at, [](const KeywordRow& r, std::int32_t seconds) {
        return seconds == kUnlimitedWait || IsInRange(r, seconds);
    });
}

// Sets *setting if the value is YES or NO, in upper or lower case, and converts the value to upper case in
// place. Returns false for any other word.
bool ReadYesNo(char* value, bool* setting) {
    UpperCase(value);
    const bool yes = std::strcmp(value, "YES") == 0;
    if (!yes && std::strcmp(value, "NO") != 0) return false;
    *setting = yes;
    return true;
}

ReturnCode CheckYesNo(const KeywordRow& row, const Position& at) {
    char* value = Value(at);
    if (value == nullptr) return pmrcFailure;
    if (!ReadYesNo(value, row.flag)) return Fail(row.refusal(row, value, 0));
    return Consume(at, 2);
}

ReturnCode CheckFlush(const KeywordRow& row, const Position& at) {
    char* value = Value(at);
    if (value == nullptr) return pmrcFailure;
    if (!ReadYesNo(value, row.flag)) {
        if (std::strcmp(value, "T") != 0) return Fail(row.refusal(row, value, 0));
        writableSettings.flushT = true;
    }
    return Consume(at, 2);
}

ReturnCode CheckConvert(const KeywordRow& row, const Position& at) {
    char* value = Value(at);
    if (value == nullptr) return pmrcFailure;
    const std::int32_t number = ReadNumber(value, std::strlen(value));
    if (number != 0) {
        writableSettings.CONVERT = number;
        return Consume(at, 2);
    }
    bool convert = false;
    if (!ReadYesNo(value, &convert)) return Fail(row.refusal(row, value, 0));
    writableSettings.CONVERT = convert ? 1 : 0;
    return Consume(at, 2);
}

// Returns pmrcOK if the value has at most row.largest characters; otherwise fails with the row's message.
ReturnCode CheckLength(const KeywordRow& row, const char* value) {
    const std::size_t characters = std::strlen(value);
    if (characters <= static_cast<std::size_t>(row.largest)) return pmrcOK;
    return Fail(row.refusal(row, value, static_cast<std::int32_t>(characters)));
}

// Copies an accepted value into the row's text, which has room for row.largest characters and a NUL, and
// fills the rest of it with zeros.
void StoreText(const KeywordRow& row, const char* value) {
    std::strncpy(row.text, value, static_cast<std::size_t>(row.largest) + 1);
}

ReturnCode CheckText(const KeywordRow& row, const Position& at) {
    const char* value = Value(at);
    if (value == nullptr || CheckLength(row, value) != pmrcOK) return pmrcFailure;
    StoreText(row, value);
    *row.flag = true;
    return Consume(at, 2);
}

ReturnCode StoreChannelField(const KeywordRow& row, const Position& at, void (*set)(const char*)) {
    const char* value = Value(at);
    if (value == nullptr || CheckLength(row, value) != pmrcOK) return pmrcFailure;
    *row.flag = true;
    set(value);
    return Consume(at, 2);
}

// The keyword is printed to standard output on purpose: hosts and their operators know the line.
ReturnCode CheckServer(const KeywordRow& row, const Position& at) {
    (void)std::printf("keyword= %s\n", row.name);
    return StoreChannelField(row, at, SetConnectionName);
}

ReturnCode CheckChannel(const KeywordRow& row, const Position& at) {
    return StoreChannelField(row, at, SetChannelName);
}

// The token after the level is always the path, even if it looks like a keyword. If the level is out of
// range, the path is nevertheless stored.
ReturnCode CheckTrace(const KeywordRow& row, const Position& at) {
    constexpr int kMaxLevel = 4;
    const char* levelText = Value(at);
    if (levelText == nullptr) return pmrcFailure;
    ReturnCode rc = pmrcOK;
    const std::int32_t level = ReadNumber(levelText, std::strlen(levelText));
    SetTraceLevel(level);
    if (level < 0 || level > kMaxLevel) {
        rc = Fail(FormatNumbered<Message::kTraceLevelOutOfRange>(row.name, level));
    }
    if (!HasToken(at, 2)) return Fail(FormatNumbered<Message::kArgumentMissing>(levelText));
    const char* path = Token(at, 2);
    if (CheckLength(row, path) != pmrcOK) return pmrcFailure;
    StoreText(row, path);
    (void)Consume(at, 3);
    return rc;
}

void StoreBlockSize(std::int32_t bytes) {
    writableSettings.BKSZ = bytes;
}
// Stores the wait in milliseconds. -1 and a number that is about to be refused are stored as they are.
void StoreReadWait(std::int32_t seconds) {
    const bool isWait = seconds >= 1 && seconds <= kMaxWaitSeconds;
    writableSettings.RWAIT = isWait ? seconds * 1000 : seconds;
}
void StoreOpenWait(std::int32_t seconds) {
    writableSettings.OWAIT = static_cast<std::uint32_t>(seconds);
}
void StoreTenacity(std::int32_t seconds) {
    writableSettings.OTENACITY = static_cast<std::uint32_t>(seconds);
}

constexpr KeywordRow kKeywords[] = {
    {.name = "HELP", .check = CheckHelp},
    {.name = "TRCL",
     .check = CheckTrace,
     .refusal = RefusePath<Message::kTracePathTooLong>,
     .largest = kMaxPathCharacters,
     .text = writableSettings.tracePath},
    {.name = "BKSZ",
     .check = CheckNumber,
     .refusal = RefuseBlockSize,
     .largest = kMaxBlockSize,
     .store = StoreBlockSize},
    {.name = "RWAIT",
     .check = CheckReadWait,
     .refusal = RefuseNumber<Message::kReadWaitOutOfRange>,
     .largest = kMaxWaitSeconds,
     .store = StoreReadWait},
    {.name = "OTENACITY",
     .check = CheckNumber,
     .refusal = RefuseNumber<Message::kTenacityOutOfRange>,
     .largest = kMaxTenacitySeconds,
     .store = StoreTenacity},
    {.name = "OWAIT",
     .check = CheckNumber,
     .refusal = RefuseNumber<Message::kOpenWaitOutOfRange>,
     .largest = kMaxWaitSeconds,
     .store = StoreOpenWait},
    {.name = "LOG",
     .check = CheckText,
     .refusal = RefusePath<Message::kLogPathTooLong>,
     .largest = kMaxPathCharacters,
     .text = writableSettings.logPath,
     .flag = &writableSettings.LOG},
    {.name = "TLF",
     .check = CheckYesNo,
     .refusal = RefuseWord<Message::kLogFailureWordInvalid>,
     .flag = &writableSettings.TLF},
    {.name = "TDM",
     .check = CheckYesNo,
     .refusal = RefuseWord<Message::kDuplicateWordInvalid>,
     .flag = &writableSettings.TDM},
    {.name = "CONVERT", .check = CheckConvert, .refusal = RefuseWord<Message::kConvertWordInvalid>},
    {.name = "FLUSH",
     .check = CheckFlush,
     .refusal = RefuseWord<Message::kFlushWordInvalid>,
     .flag = &writableSettings.FLUSH},
    {.name = "CKFILE",
     .check = CheckText,
     .refusal = RefusePath<Message::kCheckpointPathTooLong>,
     .largest = kMaxPathCharacters,
     .text = writableSettings.checkpointPath,
     .flag = &writableSettings.CKFILE},
    {.name = "MQEX", .check = CheckFlag, .flag = &writableSettings.MQEX},
    {.name = "QMGR",
     .check = CheckText,
     .refusal = RefuseName<Message::kQueueManagerNameTooLong>,
     .largest = kMaxNameCharacters,
     .text = writableSettings.QMGR,
     .flag = &writableSettings.qmgrGiven},
    {.name = "QNM",
     .check = CheckText,
     .refusal = RefuseName<Message::kQueueNameTooLong>,
     .largest = kMaxNameCharacters,
     .text = writableSettings.QNM,
     .flag = &writableSettings.qnmGiven},
    {.name = "SRVR",
     .check = CheckServer,
     .refusal = RefuseName<Message::kServerNameTooLong>,
     .largest = sizeof(MQCD::ConnectionName),
     .flag = &writableSettings.srvrGiven},
    {.name = "CHNL",
     .check = CheckChannel,
     .refusal = RefuseName<Message::kChannelNameTooLong>,
     .largest = sizeof(MQCD::ChannelName),
     .flag = &writableSettings.chnlGiven},
};

const KeywordRow* FindKeyword(const char* name) {
    for (const KeywordRow& row : kKeywords) {
        if (std::strcmp(name, row.name) == 0) return &row;
    }
    return nullptr;
}

}  // namespace

ReturnCode CheckParm(char* const* tokens, std::int32_t count, std::int32_t* index) {
    const char* token = tokens[*index];
    if (std::strlen(token) > kMaxKeywordCharacters)
        return Fail(FormatNumbered<Message::kUnidentifiedKeyword>(token));

    char keyword[kMaxKeywordCharacters + 1];
    std::snprintf(keyword, sizeof keyword, "%s", token[0] == '-' ? token + 1 : token);
    UpperCase(keyword);
    TraceLine(TraceLevel::kAlways, Severity::kInfo, kFunction, FormatText("Keyword: %s", keyword));

    const KeywordRow* row = FindKeyword(keyword);
    if (row == nullptr) return Fail(FormatNumbered<Message::kUnidentifiedKeyword>(keyword));
    return row->check(*row, {tokens, count, index});
}

}  // namespace mqamod
