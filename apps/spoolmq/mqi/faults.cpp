// SPDX-License-Identifier: Apache-2.0
#include "spoolmq/mqi/faults.h"

#include <array>
#include <atomic>
#include <charconv>
#include <mutex>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/environment.h"
#include "platform/file.h"
#include "platform/file_status.h"
#include "platform/process.h"
#include "spoolmq/store/crash_points.h"

namespace spoolmq {

namespace {

constexpr std::array<std::string_view, 11> kVerbNames = {"MQCONN",  "MQCONNX", "MQDISC", "MQOPEN",
                                                         "MQCLOSE", "MQGET",   "MQPUT",  "MQPUT1",
                                                         "MQCMIT",  "MQBACK",  "MQINQ"};

struct CallRange {
    std::int64_t first = 1;
    std::int64_t last = INT64_MAX;
};

struct VerbRule {
    std::size_t verb;  // an index into kVerbNames
    CallRange calls;
    Fault fault;
};

struct PointRule {
    std::string point;
    CallRange range;
    std::int64_t reached = 0;
};

// The plan is read once, before the first call; after that only its counts change.
struct FaultPlan {
    std::mutex guard;
    bool isLoaded = false;
    std::string error;
    std::vector<VerbRule> verbRules;
    std::vector<PointRule> pointRules;
    std::array<std::int64_t, kVerbNames.size()> calls{};
};

FaultPlan& Plan() {
    // The plan is never destroyed, because calls may come while the process is ending.
    static auto* const plan = new FaultPlan;
    return *plan;
}

std::vector<std::string_view> Words(std::string_view line) {
    std::vector<std::string_view> words;
    while (true) {
        const std::size_t first = line.find_first_not_of(" \t\r");
        if (first == std::string_view::npos) {
            return words;
        }
        line.remove_prefix(first);
        const std::size_t end = std::min(line.find_first_of(" \t\r"), line.size());
        words.push_back(line.substr(0, end));
        line.remove_prefix(end);
    }
}

std::optional<std::int64_t> Number(std::string_view word) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error != std::errc() || end != word.data() + word.size() || number < 0) {
        return std::nullopt;
    }
    return number;
}

// Parses "5", "5-7", "5+" or "*".
std::optional<CallRange> ParseRange(std::string_view word) {
    if (word == "*") {
        return CallRange{};
    }
    if (!word.empty() && word.back() == '+') {
        const std::optional<std::int64_t> first = Number(word.substr(0, word.size() - 1));
        return first && *first >= 1 ? std::optional(CallRange{*first, INT64_MAX}) : std::nullopt;
    }
    const std::size_t dash = word.find('-');
    const std::optional<std::int64_t> first = Number(word.substr(0, dash));
    const std::optional<std::int64_t> last =
        dash == std::string_view::npos ? first : Number(word.substr(dash + 1));
    if (!first || !last || *first < 1 || *last < *first) {
        return std::nullopt;
    }
    return CallRange{*first, *last};
}

std::optional<Fault> ParseAction(const std::vector<std::string_view>& words) {
    const std::string_view action = words[2];
    if (action == "kill" && words.size() == 4) {
        if (words[3] == "before") {
            return Fault{FaultKind::kKillBefore, 0, 0};
        }
        if (words[3] == "after") {
            return Fault{FaultKind::kKillAfter, 0, 0};
        }
    }
    if (action == "warn" && words.size() == 4) {
        const std::optional<std::int64_t> reason = Number(words[3]);
        if (reason) {
            return Fault{FaultKind::kFailAfter, MQCC_WARNING, static_cast<MQLONG>(*reason)};
        }
    }
    if ((action == "fail" || action == "fail-after") && words.size() == 5) {
        const std::optional<std::int64_t> compCode = Number(words[3]);
        const std::optional<std::int64_t> reason = Number(words[4]);
        const FaultKind kind = action == "fail" ? FaultKind::kFail : FaultKind::kFailAfter;
        if (compCode && reason && *compCode <= 2) {
            return Fault{kind, static_cast<MQLONG>(*compCode), static_cast<MQLONG>(*reason)};
        }
    }
    return std::nullopt;
}

std::string Quoted(std::string_view text) {
    std::string quoted(1, '"');
    quoted += text;
    quoted += '"';
    return quoted;
}

// Adds the rule of a line. Returns the error, which is empty when the line is valid.
std::string ParseLine(const std::vector<std::string_view>& words, FaultPlan& plan) {
    if (words.size() < 3) {
        return "a line has at least three words: VERB CALLS ACTION";
    }
    if (words[0] == "point") {
        const std::optional<CallRange> range = ParseRange(words[2]);
        if (!range || words.size() != 4 || words[3] != "kill") {
            return "a point line reads: point NAME CALLS kill";
        }
        plan.pointRules.push_back({std::string(words[1]), *range});
        return {};
    }
    std::size_t verb = 0;
    while (verb < kVerbNames.size() && kVerbNames[verb] != words[0]) {
        ++verb;
    }
    if (verb == kVerbNames.size()) {
        return Quoted(words[0]) + " is not a verb that can fail";
    }
    const std::optional<CallRange> calls = ParseRange(words[1]);
    if (!calls) {
        return Quoted(words[1]) + " is not a number of calls: give 5, 5-7, 5+ or *";
    }
    const std::optional<Fault> fault = ParseAction(words);
    if (!fault) {
        return "the action is not one of: fail CC RC, fail-after CC RC, warn RC, kill before, kill after (CC is 0 to 2)";
    }
    plan.verbRules.push_back({verb, *calls, *fault});
    return {};
}

void ParsePlan(std::string_view text, const std::string& source, FaultPlan& plan) {
    for (int number = 1; !text.empty() && plan.error.empty(); ++number) {
        const std::size_t end = std::min(text.find_first_of("\n;"), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        const std::string_view wholeLine = line;
        line = line.substr(0, line.find('#'));
        const std::vector<std::string_view> words = Words(line);
        if (words.empty()) {
            continue;
        }
        const std::string error = ParseLine(words, plan);
        if (!error.empty()) {
            plan.error = source + ", line " + std::to_string(number) + " " + Quoted(wholeLine) + ": " + error;
        }
    }
}

void ReachPlannedPoint(std::string_view point) {
    FaultPlan& plan = Plan();
    const std::lock_guard<std::mutex> lock(plan.guard);
    for (PointRule& rule : plan.pointRules) {
        if (rule.point != point) {
            continue;
        }
        ++rule.reached;
        if (rule.reached >= rule.range.first && rule.reached <= rule.range.last) {
            platform::KillCurrentProcess();
        }
    }
}

void ReadPlan(FaultPlan& plan) {
    ParsePlan(platform::ReadEnvironment("SPOOLMQ_FAULTS"), "SPOOLMQ_FAULTS", plan);
    const std::string path = platform::ReadEnvironment("SPOOLMQ_FAULT_FILE");
    if (path.empty() || !plan.error.empty()) {
        return;
    }
    std::string content;
    if (platform::ReadWholeFile(path, content) == FileStatus::kOk) {
        ParsePlan(content, path, plan);
    } else {
        plan.error = "SPOOLMQ_FAULT_FILE \"" + path + "\": " + platform::LastFileError();
    }
}

}  // namespace

Status LoadFaultPlan() {
    FaultPlan& plan = Plan();
    const std::lock_guard<std::mutex> lock(plan.guard);
    if (!plan.isLoaded) {
        plan.isLoaded = true;
        ReadPlan(plan);
        if (!plan.pointRules.empty()) {
            SetCrashPointListener(ReachPlannedPoint);
        }
    }
    return plan.error.empty() ? Status() : Status{StatusCode::kFailed, plan.error};
}

Fault NextFault(Verb verb) {
    FaultPlan& plan = Plan();
    const std::lock_guard<std::mutex> lock(plan.guard);
    const auto index = static_cast<std::size_t>(verb);
    const std::int64_t call = ++plan.calls[index];
    for (const VerbRule& rule : plan.verbRules) {
        if (rule.verb == index && call >= rule.calls.first && call <= rule.calls.last) {
            return rule.fault;
        }
    }
    return {};
}

}  // namespace spoolmq
