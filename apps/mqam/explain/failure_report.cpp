// SPDX-License-Identifier: Apache-2.0
#include "mqam/explain/failure_report.h"

#include <cstdio>
#include <string_view>
#include <vector>

#include "mqam/explain/advice.h"
#include "mqam/explain/code_tables.h"
#include "mqam/explain/module_messages.h"
#include "mqam/explain/mq_reasons.h"
#include "mqam/explain/sentences.h"
#include "mqam/module/error_text.h"

namespace mqam {

namespace {

void AddLine(std::string& lines, const char* label, const std::string& text) {
    char start[16];
    std::snprintf(start, sizeof start, "  %-9s ", label);
    lines += start;
    lines += text;
    lines += '\n';
}

struct Activity {
    const char* request;
    const char* text;
};

constexpr Activity kActivities[] = {
    {"Init", "reading the parameters"},      {"Open", "opening the queue"},
    {"Read", "reading a message"},           {"GetPos", "taking a checkpoint"},
    {"SetPos", "restoring a position"},      {"Close", "closing the queue"},
    {"Shut", "releasing the queue manager"},
};

// Returns the plain fact of a failure that came without an error text.
std::string FactOfBareCode(const ModuleFailure& failure) {
    constexpr std::string_view kPutAttribute = "PutAttribute ";
    const ReturnCodeRow* row = FindReturnCode(failure.code);
    const bool isExplained = row != nullptr && failure.code != pmrcFailure;
    if (failure.request.starts_with(kPutAttribute)) {
        return "--attribute " + failure.request.substr(kPutAttribute.size()) + ": " +
               (isExplained ? row->meaning : "the module refuses it without a reason");
    }
    if (isExplained) return row->meaning;
    for (const Activity& activity : kActivities) {
        if (failure.request == activity.request)
            return std::string("the module failed without an error text, ") + activity.text;
    }
    return "the module failed without an error text";
}

std::string DescribeReason(const ErrorText& error) {
    if (error.mqReason == 0) return error.reason;
    std::string reason = std::to_string(error.mqReason);
    if (const MqReason* row = FindMqReason(error.mqReason)) {
        reason += std::string(" ") + row->name + ": " + row->meaning;
    }
    return reason;
}

// Returns whether a message says nothing: the module has one that is a single blank.
bool IsBlank(const std::string& text) {
    return text.empty() || text == " ";
}

}  // namespace

std::string DescribeFailure(const ModuleFailure& failure, FailureDetail detail) {
    const bool showsAll = detail == FailureDetail::kForDevelopers;
    const std::string request = failure.request + " returned " + std::to_string(failure.code);
    ErrorText error;
    const bool isParsed = ParseErrorText(failure.text, error);
    if (!isParsed) {
        const std::string fact =
            failure.text.empty() ? FactOfBareCode(failure) : "the module failed: " + failure.text;
        std::string lines = fact + "\n";
        if (showsAll) AddLine(lines, "request", request);
        return lines;
    }
    const std::string fact = FindFact(error);
    std::string lines = (IsBlank(fact) ? "the module failed" : fact) + "\n";
    if (!IsBlank(error.message)) AddLine(lines, "message", error.message);
    if (error.messageNumber != 0) {
        char number[24];
        std::snprintf(number, sizeof number, "MQA%04d", error.messageNumber);
        AddLine(lines, "number", number);
    }
    if (showsAll) AddLine(lines, "request", request);
    if (showsAll) AddLine(lines, "function", error.function);
    if (!IsBlank(error.failingCall)) AddLine(lines, "call", error.failingCall);
    if (!error.fileKind.empty()) AddLine(lines, "file", error.fileKind);
    const std::string reason = DescribeReason(error);
    if (!reason.empty()) AddLine(lines, "reason", reason);
    const ModuleMessage* message = FindModuleMessage(error);
    if (message != nullptr && MakeSentence(fact) != message->cause) AddLine(lines, "cause", message->cause);
    for (const std::string& next : FindAdvice(error))
        AddLine(lines, "next", next);
    return lines;
}

std::string DescribeNotice(const std::string& text) {
    ErrorText error;
    if (!ParseErrorText(text, error)) return "note from the module: " + text;
    std::string line = error.severity == "info" ? "note" : "warning";
    line += " from the module (" + error.function + "): " + error.message;
    if (!error.failingCall.empty() && error.failingCall != " ") line += ", call " + error.failingCall;
    if (!error.reason.empty()) line += ", reason " + error.reason;
    const ModuleMessage* message = FindModuleMessage(error);
    line += message == nullptr ? "." : std::string(". ") + message->cause;
    for (const std::string& next : FindAdvice(error))
        line += " " + next;
    return line;
}

}  // namespace mqam
