#include "params/check_parm.h"

#include <cstdio>
#include <cstring>

#include "diag/error_text.h"
#include "diag/keyword_help.h"
#include "diag/message_text.h"
#include "diag/trace.h"
#include "mqi/client_channel.h"
#include "params/number.h"
#include "params/settings_writer.h"
#include "params/tokens.h"

namespace {

constexpr char kFunction[] = "CheckParm";
constexpr std::size_t kMaxKeywordCharacters = 250;
constexpr int kUnidentifiedKeyword = 100;
constexpr int kArgumentMissing = 164;

struct KeywordRow;

// The tokens being validated and the place of the keyword among them.
struct Position {
    char* const* tokens;
    std::int32_t count;
    std::int32_t* index;
};

using Check = ReturnCode (*)(const KeywordRow&, const Position&);

// One keyword. What `check` needs beyond the name stands in the columns of its kind.
struct KeywordRow {
    const char* name;
    Check check;
    int message = 0;                        // the numbered message for a value that is refused
    std::int32_t limit = 0;                 // largest number, or most characters
    char* text = nullptr;                   // paths and names: where the value goes
    bool* flag = nullptr;                   // set when the value is taken; for Yes and No the setting itself
    void (*store)(std::int32_t) = nullptr;  // numbers: stores the value, before it is checked
    bool (*inRange)(std::int32_t) = nullptr;
};

ReturnCode Refuse(const char* message) {
    ReportError(Severity::Error, kFunction, message);
    return pmrcFailure;
}

bool HasToken(const Position& at, std::int32_t offset) {
    return offset < at.count - *at.index && at.tokens[*at.index + offset][0] != '\0';
}

char* Token(const Position& at, std::int32_t offset) {
    return at.tokens[*at.index + offset];
}

// The value of a keyword, or null with the error reported when there is none.
char* Value(const Position& at) {
    if (HasToken(at, 1)) return Token(at, 1);
    (void)Refuse(FormatNumbered(kArgumentMissing, Token(at, 0)));
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

ReturnCode CheckNumber(const KeywordRow& row, const Position& at) {
    const char* value = Value(at);
    if (value == nullptr) return pmrcFailure;
    const std::int32_t number = ReadNumber(value, std::strlen(value));
    row.store(number);
    if (!row.inRange(number)) return Refuse(FormatNumbered(row.message, row.name, number, row.limit));
    return Consume(at, 2);
}

// Sets *setting by YES or NO in any case, upper-casing the value in place. Returns false for any other word.
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
    if (!ReadYesNo(value, row.flag)) return Refuse(FormatNumbered(row.message, row.name, value));
    return Consume(at, 2);
}

ReturnCode CheckFlush(const KeywordRow& row, const Position& at) {
    char* value = Value(at);
    if (value == nullptr) return pmrcFailure;
    if (!ReadYesNo(value, &writableSettings.FLUSH)) {
        if (std::strcmp(value, "T") != 0) return Refuse(FormatNumbered(row.message, row.name, value));
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
    if (!ReadYesNo(value, &convert)) return Refuse(FormatNumbered(row.message, row.name, value));
    writableSettings.CONVERT = convert ? 1 : 0;
    return Consume(at, 2);
}

// Copies a value that fits into a text of limit + 1 bytes and clears what is behind it.
bool TakeText(const char* value, std::int32_t limit, char* text) {
    if (std::strlen(value) > static_cast<std::size_t>(limit)) return false;
    std::strncpy(text, value, static_cast<std::size_t>(limit) + 1);
    return true;
}

int LengthOf(const char* value) {
    return static_cast<int>(std::strlen(value));
}

ReturnCode CheckPath(const KeywordRow& row, const Position& at) {
    const char* value = Value(at);
    if (value == nullptr) return pmrcFailure;
    if (!TakeText(value, row.limit, row.text)) {
        return Refuse(FormatNumbered(row.message, row.name, kPathname, value, LengthOf(value), row.limit));
    }
    *row.flag = true;
    return Consume(at, 2);
}

ReturnCode CheckName(const KeywordRow& row, const Position& at) {
    const char* value = Value(at);
    if (value == nullptr) return pmrcFailure;
    if (!TakeText(value, row.limit, row.text)) {
        return Refuse(FormatNumbered(row.message, row.name, value, LengthOf(value), row.limit));
    }
    *row.flag = true;
    return Consume(at, 2);
}

ReturnCode TakeChannelField(const KeywordRow& row, const Position& at, void (*set)(const char*)) {
    const char* value = Value(at);
    if (value == nullptr) return pmrcFailure;
    if (std::strlen(value) > static_cast<std::size_t>(row.limit)) {
        return Refuse(FormatNumbered(row.message, row.name, value, LengthOf(value), row.limit));
    }
    *row.flag = true;
    set(value);
    return Consume(at, 2);
}

// The line on standard output is on purpose: users know it.
ReturnCode CheckServer(const KeywordRow& row, const Position& at) {
    (void)std::printf("keyword= %s\n", row.name);
    return TakeChannelField(row, at, SetConnectionName);
}

ReturnCode CheckChannel(const KeywordRow& row, const Position& at) {
    return TakeChannelField(row, at, SetChannelName);
}

// The token behind the level is always the path, even when it looks like a keyword. A level out of range is
// reported, but the path is still taken.
ReturnCode CheckTrace(const KeywordRow& row, const Position& at) {
    const char* levelText = Value(at);
    if (levelText == nullptr) return pmrcFailure;
    ReturnCode rc = pmrcOK;
    const std::int32_t level = ReadNumber(levelText, std::strlen(levelText));
    SetTraceLevel(level);
    if (level < 0 || level > 4) rc = Refuse(FormatNumbered(101, row.name, level));

    if (!HasToken(at, 2)) return Refuse(FormatNumbered(kArgumentMissing, levelText));
    const char* path = Token(at, 2);
    if (!TakeText(path, row.limit, row.text)) {
        return Refuse(FormatNumbered(row.message, row.name, kPathname, path, LengthOf(path), row.limit));
    }
    (void)Consume(at, 3);
    return rc;
}

void StoreBlockSize(std::int32_t bytes) {
    writableSettings.BKSZ = bytes;
}
bool IsBlockSize(std::int32_t bytes) {
    return bytes >= 1 && bytes <= kMaxBlockSize;
}

bool IsWait(std::int32_t seconds) {
    return seconds >= 1 && seconds <= 600;
}
bool IsReadWait(std::int32_t seconds) {
    return seconds == kUnlimitedWait || IsWait(seconds);
}
bool IsTenacity(std::int32_t seconds) {
    return seconds >= 1 && seconds <= 6000;
}

void StoreReadWait(std::int32_t seconds) {
    writableSettings.RWAIT = IsWait(seconds) ? seconds * 1000 : seconds;
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
     .message = 103,
     .limit = kMaxPathCharacters,
     .text = writableSettings.tracePath},
    {.name = "BKSZ",
     .check = CheckNumber,
     .message = 106,
     .limit = kMaxBlockSize,
     .store = StoreBlockSize,
     .inRange = IsBlockSize},
    {.name = "RWAIT", .check = CheckNumber, .message = 107, .store = StoreReadWait, .inRange = IsReadWait},
    {.name = "OTENACITY",
     .check = CheckNumber,
     .message = 108,
     .store = StoreTenacity,
     .inRange = IsTenacity},
    {.name = "OWAIT", .check = CheckNumber, .message = 109, .store = StoreOpenWait, .inRange = IsWait},
    {.name = "LOG",
     .check = CheckPath,
     .message = 110,
     .limit = kMaxPathCharacters,
     .text = writableSettings.logPath,
     .flag = &writableSettings.LOG},
    {.name = "TLF", .check = CheckYesNo, .message = 112, .flag = &writableSettings.TLF},
    {.name = "TDM", .check = CheckYesNo, .message = 114, .flag = &writableSettings.TDM},
    {.name = "CONVERT", .check = CheckConvert, .message = 115},
    {.name = "FLUSH", .check = CheckFlush, .message = 116},
    {.name = "CKFILE",
     .check = CheckPath,
     .message = 117,
     .limit = kMaxPathCharacters,
     .text = writableSettings.checkpointPath,
     .flag = &writableSettings.CKFILE},
    {.name = "MQEX", .check = CheckFlag, .flag = &writableSettings.MQEX},
    {.name = "QMGR",
     .check = CheckName,
     .message = 118,
     .limit = kMaxNameCharacters,
     .text = writableSettings.QMGR,
     .flag = &writableSettings.qmgrGiven},
    {.name = "QNM",
     .check = CheckName,
     .message = 119,
     .limit = kMaxNameCharacters,
     .text = writableSettings.QNM,
     .flag = &writableSettings.qnmGiven},
    {.name = "SRVR",
     .check = CheckServer,
     .message = 120,
     .limit = sizeof(MQCD::ConnectionName),
     .flag = &writableSettings.srvrGiven},
    {.name = "CHNL",
     .check = CheckChannel,
     .message = 121,
     .limit = sizeof(MQCD::ChannelName),
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
        return Refuse(FormatNumbered(kUnidentifiedKeyword, token));

    char keyword[kMaxKeywordCharacters + 1];
    std::snprintf(keyword, sizeof keyword, "%s", token[0] == '-' ? token + 1 : token);
    UpperCase(keyword);
    TraceLine(TraceLevel::Always, Severity::Info, kFunction, FormatText("Keyword: %s", keyword));

    const KeywordRow* row = FindKeyword(keyword);
    if (row == nullptr) return Refuse(FormatNumbered(kUnidentifiedKeyword, keyword));
    return row->check(*row, {tokens, count, index});
}
