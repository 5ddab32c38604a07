// SPDX-License-Identifier: Apache-2.0
#include "mqam/explain/failure_report.h"

#include <cstdio>
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

// The fact of a failure that came without an error text.
std::string FactOfBareCode(ReturnCode code) {
    const ReturnCodeRow* row = FindReturnCode(code);
    if (row == nullptr || code == pmrcFailure) return "the module gave no error text";
    return row->meaning;
}

std::string DescribeReason(const ErrorText& error) {
    if (error.mqReason == 0) return error.reason;
    std::string reason = std::to_string(error.mqReason);
    if (const MqReason* row = FindMqReason(error.mqReason)) {
        reason += std::string(" ") + row->name + ": " + row->meaning;
    }
    return reason;
}

// A message of one blank says nothing.
bool IsBlank(const std::string& text) {
    return text.empty() || text == " ";
}

}  // namespace

std::string DescribeFailure(const ModuleFailure& failure) {
    const std::string request = failure.request + " returned " + std::to_string(failure.code);
    ErrorText error;
    const bool isParsed = ParseErrorText(failure.text, error);
    if (!isParsed) {
        const std::string fact =
            failure.text.empty() ? FactOfBareCode(failure.code) : "the module failed: " + failure.text;
        std::string lines = fact + "\n";
        AddLine(lines, "request", request);
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
    AddLine(lines, "request", request);
    AddLine(lines, "function", error.function);
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
