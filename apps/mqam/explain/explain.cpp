// SPDX-License-Identifier: Apache-2.0
#include "mqam/explain/explain.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <sstream>
#include <tuple>
#include <utility>

#include "mqam/explain/code_tables.h"
#include "mqam/explain/module_messages.h"
#include "mqam/explain/mq_reasons.h"
#include "mqam/explain/rules.h"
#include "mqam/explain/sentences.h"
#include "mqam/explain/table_text.h"
#include "mqam/explain/text_match.h"

namespace mqam {

namespace {

constexpr std::size_t kTextWidth = 78;
constexpr std::size_t kLabelWidth = 12;
constexpr std::size_t kNearMatchesMax = 5;
// A message without a number is found by its beginning, which must have at least this many characters.
constexpr std::size_t kShortestBeginning = 6;

// ---- what was asked for

// Says which kinds of code a number may be.
struct Kinds {
    bool returnCode = false;
    bool exitCode = false;
    bool message = false;
    bool reason = false;
};

struct Selector {
    std::string_view word;
    Kinds kinds;
};

constexpr Kinds kAllKinds = {true, true, true, true};

// Of two words with the same beginning, the longer one comes first.
constexpr Selector kSelectors[] = {
    {"EXIT CODE", {.exitCode = true}},
    {"EXIT", {.exitCode = true}},
    {"RETURN CODE", {.returnCode = true}},
    {"RETURN", {.returnCode = true}},
    {"RC", {.returnCode = true, .reason = true}},
    {"MESSAGE", {.message = true}},
    {"REASON CODE", {.reason = true}},
    {"REASON", {.reason = true}},
    {"MQRC", {.reason = true}},
    {"MQA", {.message = true}},
    {"ZBQ", {.message = true}},
};

// Returns the text in capital letters, with single blanks, and without blanks around it.
std::string Normalize(std::string_view code) {
    std::istringstream words(ToUpper(code));
    std::string text;
    for (std::string word; words >> word;)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

std::optional<int> ParseNumber(std::string_view text) {
    constexpr std::size_t kDigitsMax = 8;
    if (text.empty() || text.find_first_not_of("0123456789") != std::string_view::npos) return std::nullopt;
    text.remove_prefix(std::min(text.find_first_not_of('0'), text.size() - 1));
    if (text.size() > kDigitsMax) return std::nullopt;
    return std::stoi(std::string(text));
}

struct NumberQuery {
    int number = 0;
    Kinds kinds;
};

std::optional<NumberQuery> ParseNumberQuery(std::string_view text) {
    if (const auto number = ParseNumber(text)) return NumberQuery{*number, kAllKinds};
    for (const Selector& selector : kSelectors) {
        if (!text.starts_with(selector.word)) continue;
        std::string_view rest = text.substr(selector.word.size());
        if (rest.starts_with(' ')) rest.remove_prefix(1);
        if (const auto number = ParseNumber(rest)) return NumberQuery{*number, selector.kinds};
    }
    return std::nullopt;
}

// ---- one reading

void AddParagraph(Explanation& explanation, const char* label, const std::string& text) {
    if (!text.empty()) explanation.paragraphs.push_back({label, text});
}

Explanation ExplainMessage(const ModuleMessage& message) {
    Explanation explanation;
    const std::string code = MessageCodeOf(message);
    explanation.title = (code.empty() ? "" : code + ": ") + MessageTextOf(message);
    explanation.kind = DescribeOrigin(message);
    AddParagraph(explanation, "meaning", message.cause);
    AddParagraph(explanation, "what to do", message.action);
    if (message.shown != Shown::kReserved)
        AddParagraph(explanation, "retry", DescribeRecovery(message.recovery));
    AddParagraph(explanation, "made by", message.emitter);
    return explanation;
}

Explanation ExplainReason(const MqReason& reason) {
    Explanation explanation;
    explanation.title = std::to_string(reason.number) + " " + reason.name;
    const std::string verbs = NameVerbs(reason);
    explanation.kind = verbs.empty() ? "MQ reason" : "MQ reason of " + verbs;
    AddParagraph(explanation, "meaning", MakeSentence(reason.meaning));
    AddParagraph(explanation, "causes", reason.causes);
    AddParagraph(explanation, "what to do", reason.action);
    AddParagraph(explanation, "retry", DescribeRecovery(reason.recovery));
    return explanation;
}

Explanation ExplainReturnCode(const ReturnCodeRow& row) {
    Explanation explanation;
    explanation.title = "return code " + std::to_string(row.code) + " " + row.name;
    explanation.kind = "what the module returns to its host";
    AddParagraph(explanation, "meaning", MakeSentence(row.meaning));
    AddParagraph(explanation, "causes", row.causes);
    AddParagraph(explanation, "what to do", row.action);
    AddParagraph(explanation, "retry", DescribeRecovery(row.recovery));
    return explanation;
}

Explanation ExplainExitCode(const ExitCodeRow& row) {
    Explanation explanation;
    explanation.title = "exit code " + std::to_string(row.code);
    explanation.kind = "what `mqam` returns to the shell";
    AddParagraph(explanation, "meaning", MakeSentence(row.meaning));
    AddParagraph(explanation, "causes", row.causes);
    AddParagraph(explanation, "what to do", row.action);
    return explanation;
}

Explanation ExplainRule(const LoadRule& rule) {
    Explanation explanation;
    explanation.title = rule.id;
    if (*rule.name != '\0') explanation.title += std::string(", ") + rule.name;
    explanation.kind = DescribeRuleKind(rule);
    const char* const label = *rule.id == 'G' || *rule.id == 'L' ? "meaning" : "rule";
    AddParagraph(explanation, label, rule.statement);
    AddParagraph(explanation, "details", rule.detail);
    AddParagraph(explanation, "what to do",
                 *rule.action == '\0'
                     ? "Nothing: `mqam load` with restart information follows this rule. The author of "
                       "another host must follow it, see docs/hosts.md."
                     : rule.action);
    return explanation;
}

void ExplainNumber(const NumberQuery& query, std::vector<Explanation>& readings) {
    if (query.kinds.returnCode) {
        if (const ReturnCodeRow* row = FindReturnCode(query.number))
            readings.push_back(ExplainReturnCode(*row));
    }
    if (query.kinds.exitCode) {
        for (const ExitCodeRow& row : AllExitCodes()) {
            if (row.code == query.number) readings.push_back(ExplainExitCode(row));
        }
    }
    if (query.kinds.message && query.number != 0) {
        if (const ModuleMessage* message = FindModuleMessage(query.number))
            readings.push_back(ExplainMessage(*message));
    }
    if (query.kinds.reason) {
        if (const MqReason* reason = FindMqReason(query.number)) readings.push_back(ExplainReason(*reason));
    }
}

void ExplainName(const std::string& name, std::vector<Explanation>& readings) {
    if (const LoadRule* rule = FindLoadRule(name)) readings.push_back(ExplainRule(*rule));
    if (const MqReason* reason = FindMqReason(name)) readings.push_back(ExplainReason(*reason));
    for (const ReturnCodeRow& row : AllReturnCodes()) {
        if (ToUpper(row.name) == name) readings.push_back(ExplainReturnCode(row));
    }
    if (name.size() < kShortestBeginning) return;
    for (const ModuleMessage& message : UnnumberedMessages()) {
        if (ToUpper(MessageTextOf(message)).starts_with(name)) readings.push_back(ExplainMessage(message));
    }
}

// ---- near matches and lists

struct Candidate {
    std::size_t distance = 0;
    // This is the difference between the numbers at the end of the two codes. Of codes with the same
    // distance, the one with the nearest number comes first.
    int difference = 0;
    std::string code;
};

std::size_t ColumnWidth(CodeList list) {
    switch (list) {
        case CodeList::kMessages: return 8;
        case CodeList::kReasons: return 36;
        case CodeList::kReturnCodes: return 19;
        case CodeList::kExitCodes: return 2;
        case CodeList::kRules: return 3;
    }
    return 0;
}

int NumberAtEnd(const std::string& text) {
    const std::size_t letter = text.find_last_not_of("0123456789");
    return ParseNumber(text.substr(letter == std::string::npos ? 0 : letter + 1)).value_or(0);
}

void AddCandidate(std::vector<Candidate>& candidates, const std::string& wanted, const std::string& spelling,
                  const std::string& code) {
    const std::size_t distance = EditDistance(wanted, ToUpper(spelling));
    const std::size_t distanceMax = std::max<std::size_t>(1, wanted.size() / 3);
    const bool isPart = wanted.size() >= 4 && ToUpper(spelling).find(wanted) != std::string::npos;
    if (distance > distanceMax && !isPart) return;
    const int difference = std::abs(NumberAtEnd(wanted) - NumberAtEnd(spelling));
    candidates.push_back({isPart ? 1 : distance, difference, code});
}

}  // namespace

std::vector<Explanation> Explain(std::string_view code) {
    const std::string text = Normalize(code);
    std::vector<Explanation> readings;
    if (const auto query = ParseNumberQuery(text)) {
        ExplainNumber(*query, readings);
    } else if (!text.empty()) {
        ExplainName(text, readings);
    }
    return readings;
}

std::vector<std::string> FindNearMatches(std::string_view code) {
    const std::string wanted = Normalize(code);
    std::vector<Candidate> candidates;
    for (const MqReason& reason : AllMqReasons()) {
        const std::string name = reason.name;
        AddCandidate(candidates, wanted, name, name);
        AddCandidate(candidates, wanted, name.substr(name.find('_') + 1), name);
        AddCandidate(candidates, wanted, std::to_string(reason.number), std::to_string(reason.number));
    }
    for (const ModuleMessage& message : NumberedMessages()) {
        AddCandidate(candidates, wanted, MessageCodeOf(message), MessageCodeOf(message));
        AddCandidate(candidates, wanted, std::to_string(message.number), std::to_string(message.number));
    }
    for (const LoadRule& rule : AllLoadRules())
        AddCandidate(candidates, wanted, rule.id, rule.id);
    for (const ReturnCodeRow& row : AllReturnCodes())
        AddCandidate(candidates, wanted, row.name, row.name);
    std::ranges::stable_sort(candidates, [](const Candidate& left, const Candidate& right) {
        return std::tie(left.distance, left.difference) < std::tie(right.distance, right.difference);
    });

    std::vector<std::string> matches;
    for (const Candidate& candidate : candidates) {
        if (matches.size() == kNearMatchesMax) break;
        if (std::ranges::find(matches, candidate.code) == matches.end()) matches.push_back(candidate.code);
    }
    return matches;
}

std::vector<ListedCode> CodesOf(CodeList list) {
    std::vector<ListedCode> codes;
    const auto add = [&codes](std::string code, std::string meaning) {
        codes.push_back({std::move(code), std::move(meaning)});
    };
    switch (list) {
        case CodeList::kMessages:
            for (const ModuleMessage& message : NumberedMessages()) {
                if (message.shown != Shown::kReserved)
                    add(MessageCodeOf(message), FirstSentence(message.cause));
            }
            for (const ModuleMessage& message : UnnumberedMessages())
                add("", "\"" + MessageTextOf(message) + "\": " + FirstSentence(message.cause));
            break;
        case CodeList::kReasons:
            for (const MqReason& reason : AllMqReasons())
                add(std::to_string(reason.number) + " " + reason.name, reason.meaning);
            break;
        case CodeList::kReturnCodes:
            for (const ReturnCodeRow& row : AllReturnCodes())
                add(std::to_string(row.code) + " " + row.name, row.meaning);
            break;
        case CodeList::kExitCodes:
            for (const ExitCodeRow& row : AllExitCodes())
                add(std::to_string(row.code), row.meaning);
            break;
        case CodeList::kRules:
            for (const LoadRule& rule : AllLoadRules())
                add(rule.id, rule.statement);
            break;
    }
    return codes;
}

std::string ListCodes(CodeList list) {
    std::string lines;
    for (ListedCode& row : CodesOf(list)) {
        const std::size_t width = ColumnWidth(list);
        if (row.code.size() < width) row.code.resize(width, ' ');
        lines += row.code + "  " + row.meaning + "\n";
    }
    return lines;
}

std::string FormatExplanation(const Explanation& explanation) {
    std::string lines = explanation.title + "\n" + WrapSentences(explanation.kind, kTextWidth) + "\n";
    for (const Explanation::Paragraph& paragraph : explanation.paragraphs) {
        std::string label = "  " + std::string(paragraph.label);
        label.resize(kLabelWidth + 2, ' ');
        std::istringstream wrapped(WrapSentences(paragraph.text, kTextWidth - label.size()));
        for (std::string line; std::getline(wrapped, line);) {
            lines += label + line + "\n";
            label.assign(label.size(), ' ');
        }
    }
    return lines;
}

}  // namespace mqam
