// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/keyword_options.h"

#include <CLI/App.hpp>
#include <cstddef>
#include <iterator>
#include <sstream>
#include <string_view>

#include "mqam/base/progress.h"
#include "mqam/cli/parameter_file.h"
#include "platform/environment.h"
#include "platform/paths.h"

namespace mqam {

namespace {

constexpr const char* kQueueGroup = "Queue";
constexpr const char* kTraceGroup = "Diagnosis";
constexpr std::string_view kParmFile = "PARMFILE";

constexpr std::size_t kNameCharactersMax = 48;
constexpr std::size_t kChannelCharactersMax = 20;
constexpr std::size_t kServerCharactersMax = 264;
constexpr std::size_t kPathCharactersMax = 32766;

constexpr KeywordRule kName = {KeywordValue::kText, kNameCharactersMax};
constexpr KeywordRule kChannel = {KeywordValue::kText, kChannelCharactersMax};
constexpr KeywordRule kServer = {KeywordValue::kText, kServerCharactersMax};
constexpr KeywordRule kPath = {KeywordValue::kText, kPathCharactersMax};
constexpr KeywordRule kTenacity = {KeywordValue::kNumber, 0, {NumberUnit::kSeconds, 1, 6000}};
constexpr KeywordRule kOpenWait = {KeywordValue::kNumber, 0, {NumberUnit::kSeconds, 1, 600}};
constexpr KeywordRule kReadWait = {KeywordValue::kNumber, 0, {NumberUnit::kSeconds, 1, 600, true}};
constexpr KeywordRule kBlockSize = {KeywordValue::kNumber, 0, {NumberUnit::kBytes, 1, 16777216}};
constexpr KeywordRule kYesNo = {KeywordValue::kWord, 0, {}, "yes|no"};
constexpr KeywordRule kFlush = {KeywordValue::kWord, 0, {}, "yes|no|t"};
constexpr KeywordRule kConvert = {KeywordValue::kWordOrNumber, 0, {NumberUnit::kNone, 1, 65535}, "yes|no"};
constexpr KeywordRule kTrace = {KeywordValue::kNumberAndText, kPathCharactersMax, {NumberUnit::kNone, 0, 4}};

constexpr KeywordOption kTable[] = {
    {"QMGR", "--qmgr", 1, "NAME", kQueueGroup, "queue manager, 1..48 characters; required", "QM1", kName},
    {"QNM", "--queue,--qnm", 1, "NAME", kQueueGroup, "queue to read, 1..48 characters; required", "ORDERS",
     kName},
    {"CHNL", "--channel,--chnl", 1, "NAME", kQueueGroup,
     "client channel, 1..20 characters; needs --server. Default: MQ's own (MQSERVER), or a local connection",
     "DEV.APP.SVRCONN", kChannel},
    {"SRVR", "--server,--srvr", 1, "HOST(PORT)", kQueueGroup,
     "server connection of the client channel, 1..264 characters; needs --channel", "mq.example.com(1414)",
     kServer},
    {"MQEX", "--exclusive,--mqex", 0, "", kQueueGroup, "open the queue exclusively. Default: shared", "", {}},
    {"OTENACITY", "--otenacity", 1, "SECONDS", kQueueGroup,
     "how long to keep trying to open the queue, 1..6000: --otenacity divided by --owait is the number of attempts, at least 1. Default: 5",
     "60", kTenacity},
    {"OWAIT", "--owait", 1, "SECONDS", kQueueGroup,
     "with --otenacity sets the number of attempts to open the queue, 1..600; the pause between attempts is OWAIT milliseconds, not seconds. Default: 5",
     "5", kOpenWait},
    {"RWAIT", "--rwait", 1, "SECONDS", kReadGroup,
     "the input ends when the queue has been empty for this long, and at most 1 s later: 1..600 s, -1 = wait without end. A load that can be restarted then looks once more, which takes up to 2 s. Default: 15",
     "5", kReadWait},
    {"BKSZ", "--max-record,--bksz", 1, "BYTES", kReadGroup,
     "largest message, 1..16777216 bytes; a longer one stays on the queue and ends the load. Default: "
     "1048576",
     "4194304", kBlockSize},
    {"CONVERT", "--convert", 1, "yes|no|CCSID", kReadGroup,
     "have MQ convert the data to the queue manager's character set (yes) or to a CCSID. Default: no", "1208",
     kConvert},
    {"TDM", "--tdm", 1, "yes|no", kReadGroup,
     "a redelivered message that is identical to the previous one ends the input (no: it is loaded). Default: yes",
     "no", kYesNo},
    {"CKFILE", "--ckfile", 1, "FILE", kSafetyGroup,
     "checkpoint file, in which the module keeps the records since the last checkpoint. Default of mqam load: TARGET.load/checkpoint",
     "orders.ckpt", kPath, 0},
    {"FLUSH", "--flush", 1, "yes|no|t", kSafetyGroup,
     "force checkpoint data to disk. The module reports the setting, but flushes in the same way for yes and no. Default: no",
     "yes", kFlush},
    {"LOG", "--log", 1, "FILE", kSafetyGroup,
     "copy every message to this file; deleted at the end unless --preserve. Default: no log", "orders.log",
     kPath, 0},
    {"TLF", "--tlf", 1, "yes|no", kSafetyGroup,
     "a log that cannot be written ends the load (no: the load continues without a log). Default: yes", "no",
     kYesNo},
    {"TRCL", "--trace,--trcl", 2, "LEVEL FILE", kTraceGroup,
     "trace, appended to FILE: 0 none, 1 job events, 2 I/O events, 3 I/O buffers, 4 details. Default: 0",
     "2 orders.trc", kTrace, 1},
    {"HELP",
     "--keyword-help",
     0,
     "",
     kTraceGroup,
     "have the module print its own keyword help, on standard error",
     "",
     {}},
    {"PARMFILE", "--parmfile", 1, "FILE", "Options from elsewhere",
     "read keywords from FILE, one per line; '#' in column 1 starts a comment. May be combined with the options above; for a keyword given in both, the option counts",
     "orders.parm", kPath},
};

struct EnvironmentRow {
    const char* keyword;
    const char* variable;
};

// Only the connection: no forgotten variable may choose the queue that a load empties.
constexpr EnvironmentRow kEnvironment[] = {
    {"QMGR", "MQAM_QMGR"}, {"CHNL", "MQAM_CHANNEL"}, {"SRVR", "MQAM_SERVER"}};

// Returns the variable that can stand for the keyword's option, or an empty string.
std::string VariableOf(const std::string& keyword) {
    for (const EnvironmentRow& row : kEnvironment) {
        if (keyword == row.keyword) return row.variable;
    }
    return "";
}

std::string FirstName(const KeywordOption& row) {
    const std::string names = row.option;
    return names.substr(0, names.find(','));
}

std::string HelpText(const KeywordOption& row) {
    std::string text = row.help;
    const std::string variable = VariableOf(row.keyword);
    if (!variable.empty()) text += "; or set " + variable;
    text += std::string(" [") + row.keyword;
    if (row.values > 0) text += "; e.g. " + FirstName(row) + " " + row.example;
    return text + "]";
}

// Returns the values in the form that the module accepts.
std::vector<std::string> ModuleValues(const KeywordOption& row, std::vector<std::string> values) {
    if (row.path < values.size()) values[row.path] = platform::NativePath(values[row.path]);
    return values;
}

std::vector<std::string> SplitWords(const std::string& words) {
    std::vector<std::string> split;
    std::istringstream rest(words);
    for (std::string word; std::getline(rest, word, '|');)
        split.push_back(word);
    return split;
}

Status CheckText(const std::string& value, std::size_t charactersMax) {
    if (value.empty()) return Status::Refused("the value is empty");
    if (value.size() <= charactersMax) return {};
    return Status::Refused("'" + value + "' has " + std::to_string(value.size()) +
                           " characters; use at most " + std::to_string(charactersMax));
}

Status CheckNumber(const NumberRule& rule, std::string& value) {
    std::int64_t number = 0;
    Status read = ReadNumber(value, rule, number);
    if (read.IsOk()) value = std::to_string(number);
    return read;
}

Status CheckWord(const KeywordRule& rule, std::string& value) {
    const std::vector<std::string> words = SplitWords(rule.words);
    if (FindWord(value, words).empty()) return Status::Refused(DescribeWrongWord(value, words));
    return {};
}

Status CheckWordOrNumber(const KeywordRule& rule, std::string& value) {
    if (CheckWord(rule, value).IsOk() || CheckNumber(rule.number, value).IsOk()) return {};
    return Status::Refused("'" + value + "' is not a choice; use " + JoinWords(SplitWords(rule.words), "or") +
                           ", or a CCSID of " + DescribeNumbers(rule.number));
}

std::string PathOfParameterFile(const ModuleOptions& options) {
    for (std::size_t i = 0; i < std::size(kTable); ++i) {
        if (std::string_view(kTable[i].keyword) == kParmFile && !options.values[i].empty()) {
            return options.values[i].front();
        }
    }
    return "";
}

bool IsGiven(const ModuleOptions& options, std::size_t row) {
    return options.flags[row] != 0 || !options.values[row].empty();
}

// Whether the option and the file have the same keyword, so that the module would let the file win.
bool HasOverriddenKeyword(const ModuleOptions& options, const ParameterFile& file) {
    for (std::size_t i = 0; i < std::size(kTable); ++i) {
        if (IsGiven(options, i) && FindParameter(file, kTable[i].keyword) != nullptr) return true;
    }
    return false;
}

// Appends the keyword's value of the environment, if it has one.
Status AddFromEnvironment(const KeywordOption& row, std::vector<GivenKeyword>& given) {
    const std::string variable = VariableOf(row.keyword);
    std::string value = variable.empty() ? "" : platform::ReadEnvironment(variable);
    if (value.empty()) return {};
    const Status checked = CheckKeywordValue(row, 0, value);
    if (!checked.IsOk()) return Status::Refused(variable + ": " + checked.Error());
    given.push_back({row.keyword, variable, {value}});
    return {};
}

}  // namespace

std::span<const KeywordOption> AllKeywordOptions() {
    return kTable;
}

Status CheckKeywordValue(const KeywordOption& row, std::size_t index, std::string& value) {
    switch (row.rule.kind) {
        case KeywordValue::kNone: return {};
        case KeywordValue::kText: return CheckText(value, row.rule.charactersMax);
        case KeywordValue::kNumber: return CheckNumber(row.rule.number, value);
        case KeywordValue::kWord: return CheckWord(row.rule, value);
        case KeywordValue::kWordOrNumber: return CheckWordOrNumber(row.rule, value);
        case KeywordValue::kNumberAndText: break;
    }
    return index == 0 ? CheckNumber(row.rule.number, value) : CheckText(value, row.rule.charactersMax);
}

void AddModuleOptions(CLI::App& command, ModuleOptions& options) {
    const std::size_t rows = AllKeywordOptions().size();
    options.values.assign(rows, {});
    options.flags.assign(rows, 0);
    options.rawInitOption =
        command
            .add_option("--init", options.rawInit,
                        "the module's complete initialization string, instead of all keyword options [e.g. "
                        "--init \"-QMGR QM1 -QNM ORDERS\"]")
            ->type_name("STRING");
    for (std::size_t i = 0; i < rows; ++i) {
        const KeywordOption& row = kTable[i];
        CLI::Option* option = nullptr;
        if (row.values == 0) {
            char* flag = &options.flags[i];
            option = command.add_flag_callback(
                row.option, [flag] { *flag = 1; }, HelpText(row));
        } else {
            option = command.add_option(row.option, options.values[i], HelpText(row))
                         ->expected(row.values)
                         ->allow_extra_args(false)
                         ->type_name(row.valueName);
            for (int index = 0; index < row.values; ++index) {
                option->transform(
                    CLI::Validator(
                        [&row, index](std::string& value) {
                            return CheckKeywordValue(row, static_cast<std::size_t>(index), value).Error();
                        },
                        "")
                        .application_index(index));
            }
        }
        option->group(row.group)->excludes(options.rawInitOption);
    }
    options.rawInitOption->group("Options from elsewhere");
    command
        .add_option(
            "--config", options.configPath,
            "read options of this command from FILE, one per line: qmgr = QM1. Options of the command line count")
        ->type_name("FILE")
        ->group("Options from elsewhere");
    command
        .add_option("--module", options.modulePath,
                    "the access module to load. Default: the one next to this program")
        ->type_name("PATH")
        ->group(kTraceGroup);
}

Status CheckParameterFile(const ModuleOptions& options, std::vector<std::string>& warnings) {
    warnings.clear();
    const std::string path = PathOfParameterFile(options);
    if (path.empty()) return {};
    ParameterFile file;
    Status read = ReadParameterFile(path, file);
    if (!read.IsOk()) return read;
    warnings = file.warnings;
    if (!file.isUnderstood && HasOverriddenKeyword(options, file)) {
        warnings.push_back(path + ": a line of the file cannot be read, so its values override the options");
    }
    return {};
}

void PrintWarnings(const std::string& command, const std::vector<std::string>& warnings) {
    for (const std::string& warning : warnings)
        PrintMessage(command + ": warning: " + warning + "\n");
}

Status ComposeInitString(const ModuleOptions& options, std::string& initString) {
    initString.clear();
    if (options.rawInitOption != nullptr && options.rawInitOption->count() > 0) {
        initString = options.rawInit;
        return {};
    }
    const std::string parameterPath = PathOfParameterFile(options);
    ParameterFile file;
    // A file that cannot be read is left to the module; CheckParameterFile has refused it if the command asked.
    const bool isRead = !parameterPath.empty() && ReadParameterFile(parameterPath, file).IsOk();
    // A load shortens RWAIT with a keyword after all others, which would not count against a file.
    const bool isOverridden = HasOverriddenKeyword(options, file) || FindParameter(file, "RWAIT") != nullptr;
    const bool isInlined = isRead && file.isUnderstood && isOverridden;
    std::vector<GivenKeyword> given;
    bool namesQueue = false;
    for (std::size_t i = 0; i < AllKeywordOptions().size(); ++i) {
        const KeywordOption& row = kTable[i];
        const ParameterLine* line = isInlined ? FindParameter(file, row.keyword) : nullptr;
        if (IsGiven(options, i)) {
            namesQueue = true;
            if (isInlined && std::string_view(row.keyword) == kParmFile) continue;
            given.push_back({row.keyword, FirstName(row), ModuleValues(row, options.values[i])});
        } else if (line != nullptr) {
            given.push_back({row.keyword, parameterPath, line->values});
        } else {
            Status added = AddFromEnvironment(row, given);
            if (!added.IsOk()) return added;
        }
    }
    if (!namesQueue) {
        return Status::Refused("no queue is named; use --qmgr and --queue, or --parmfile, or --init");
    }
    return BuildInitString(given, initString);
}

std::string ValueOfKeyword(const ModuleOptions& options, const std::string& keyword, std::size_t index) {
    for (std::size_t i = 0; i < AllKeywordOptions().size(); ++i) {
        if (keyword == kTable[i].keyword && index < options.values[i].size()) return options.values[i][index];
    }
    return "";
}

void SetKeyword(ModuleOptions& options, const std::string& keyword, const std::vector<std::string>& values) {
    for (std::size_t i = 0; i < AllKeywordOptions().size(); ++i) {
        if (keyword == kTable[i].keyword) options.values[i] = values;
    }
}

bool WasKeywordGiven(const ModuleOptions& options, const std::string& keyword) {
    for (std::size_t i = 0; i < AllKeywordOptions().size(); ++i) {
        if (keyword == kTable[i].keyword) return IsGiven(options, i);
    }
    return false;
}

}  // namespace mqam
