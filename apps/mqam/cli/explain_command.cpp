// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/explain_command.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cstdio>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "mqam/base/exit_codes.h"
#include "mqam/base/json_writer.h"
#include "mqam/base/progress.h"
#include "mqam/explain/explain.h"
#include "mqam/explain/reference_page.h"

namespace mqam {

namespace {

constexpr const char* kExamples =
    "Examples:\n"
    "  mqam explain MQA0151        a message of the module; 151 is the same\n"
    "  mqam explain 2085           an MQ reason, by number\n"
    "  mqam explain not_authorized an MQ reason, by name; MQRC_NOT_AUTHORIZED is the same\n"
    "  mqam explain exit 3         an exit code of mqam\n"
    "  mqam explain 9              every meaning of a number: a return code of the module, an exit code\n"
    "  mqam explain H6             a rule (H, T), guarantee (G) or limit (L) of restarting\n"
    "  mqam explain --list         all codes; --list messages, reasons, returns, exit or rules only some\n"
    "\n"
    "Exit codes: 0 explained, 1 there is no such code or an option is wrong, 3 standard output cannot be\n"
    "written.\n";

constexpr std::pair<const char*, CodeList> kLists[] = {
    {"messages", CodeList::kMessages}, {"reasons", CodeList::kReasons}, {"returns", CodeList::kReturnCodes},
    {"exit", CodeList::kExitCodes},    {"rules", CodeList::kRules},
};

struct ExplainOptions {
    std::vector<std::string> code;
    std::string list;
    bool listWanted = false;
    bool markdownWanted = false;
    bool json = false;
};

int Print(const std::string& text) {
    const bool isWritten = std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
    if (isWritten) return kExitDone;
    PrintMessage("mqam explain: cannot write to standard output\n");
    return kExitTargetFailed;
}

std::string FormatLists(const std::string& wanted) {
    std::string text;
    for (const auto& [name, list] : kLists) {
        if (!wanted.empty() && wanted != name) continue;
        if (!text.empty()) text += "\n";
        if (wanted.empty()) text += std::string(name) + "\n\n";
        text += ListCodes(list);
    }
    return text;
}

std::string FormatListsAsJson(const std::string& wanted) {
    JsonWriter json;
    json.BeginObject();
    for (const auto& [name, list] : kLists) {
        if (!wanted.empty() && wanted != name) continue;
        json.Key(name).BeginArray();
        for (const ListedCode& row : CodesOf(list)) {
            json.BeginObject().TextMember("code", row.code).TextMember("meaning", row.meaning).EndObject();
        }
        json.EndArray();
    }
    return json.EndObject().Line() + "\n";
}

std::string FormatReadingsAsJson(const std::string& code, const std::vector<Explanation>& readings) {
    JsonWriter json;
    json.BeginObject().TextMember("code", code).Key("readings").BeginArray();
    for (const Explanation& reading : readings) {
        json.BeginObject().TextMember("title", reading.title).TextMember("kind", reading.kind);
        for (const Explanation::Paragraph& paragraph : reading.paragraphs) {
            std::string key = paragraph.label;
            std::ranges::replace(key, ' ', '_');
            json.TextMember(key, paragraph.text);
        }
        json.EndObject();
    }
    return json.EndArray().EndObject().Line() + "\n";
}

int ReportUnknownCode(const std::string& code) {
    std::string message = "mqam explain: there is no code " + code + "\n";
    const std::vector<std::string> matches = FindNearMatches(code);
    if (!matches.empty()) {
        message += "  similar   ";
        for (const std::string& match : matches)
            message += (&match == &matches.front() ? "" : ", ") + match;
        message += "\n";
    }
    message += "  next      `mqam explain --list` prints all codes; `mqam explain` shows how to ask";
    const bool isNumber = code.find_first_not_of("0123456789") == std::string::npos;
    message += isNumber ? "; for any other MQ reason `mqrc " + code + "` prints its name\n" : "\n";
    PrintMessage(message);
    return kExitNotStarted;
}

int RunExplain(const ExplainOptions& options) {
    if (options.markdownWanted) return Print(FormatReferencePage());
    if (options.listWanted) {
        return Print(options.json ? FormatListsAsJson(options.list) : FormatLists(options.list));
    }
    std::string code;
    for (const std::string& word : options.code)
        code += (code.empty() ? "" : " ") + word;
    if (code.empty())
        return Print(std::string("What does a code mean, and what is to be done?\n\n") + kExamples);
    const std::vector<Explanation> readings = Explain(code);
    if (readings.empty()) return ReportUnknownCode(code);
    if (options.json) return Print(FormatReadingsAsJson(code, readings));
    std::string text;
    for (const Explanation& reading : readings)
        text += (text.empty() ? "" : "\n") + FormatExplanation(reading);
    return Print(text);
}

}  // namespace

void AddExplainCommand(CLI::App& app, int& exitCode) {
    CLI::App* command =
        app.add_subcommand("explain", "Explain a message, reason, code or rule, and what to do");
    const auto options = std::make_shared<ExplainOptions>();
    std::vector<std::string> names;
    for (const auto& [name, list] : kLists)
        names.emplace_back(name);
    command->add_option("code", options->code, "the code, as in the examples")->type_name("CODE");
    CLI::Option* list = command->add_option("--list", options->list, "print all codes, or those of one list")
                            ->type_name("LIST")
                            ->expected(0, 1)
                            ->check(CLI::IsMember(names));
    command->add_flag("--json", options->json, "one JSON object on one line, for programs");
    command->add_flag("--markdown", options->markdownWanted, "print docs/messages.md")->group("");
    command->footer(kExamples);
    command->callback([options, list, &exitCode] {
        options->listWanted = list->count() > 0;
        exitCode = RunExplain(*options);
    });
}

}  // namespace mqam
