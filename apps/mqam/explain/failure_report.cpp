#include "mqam/explain/failure_report.h"

#include <cstdio>
#include <vector>

#include "mqam/explain/advice.h"
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

// The codes that come without an error text.
const char* DescribeBareCode(ReturnCode code) {
    switch (code) {
        case pmrcBadVersion: return "the module speaks another version of the interface";
        case pmrcNotSupported: return "the module does not support the request";
        case pmrcBadAttrName: return "the module does not know an attribute of this name";
        case pmrcBadAttrValue: return "the module refuses this value of the attribute";
        default: return "the module gave no error text";
    }
}

std::string DescribeReason(const ErrorText& error) {
    if (error.mqReason == 0) return error.reason;
    std::string reason = std::to_string(error.mqReason);
    if (const ReasonAdvice* row = FindReasonAdvice(error.mqReason)) {
        reason += std::string(" ") + row->name + ": " + row->meaning;
    }
    return reason;
}

}  // namespace

std::string DescribeFailure(const ModuleFailure& failure) {
    std::string lines = "the module failed: " + failure.request + " returned " + std::to_string(failure.code);
    lines += '\n';
    ErrorText error;
    if (failure.text.empty()) {
        AddLine(lines, "message", DescribeBareCode(failure.code));
        return lines;
    }
    if (!ParseErrorText(failure.text, error)) {
        AddLine(lines, "message", failure.text);
        return lines;
    }
    AddLine(lines, "message", error.message == " " ? "(none)" : error.message);
    if (error.messageNumber != 0) {
        char number[24];
        std::snprintf(number, sizeof number, "MQA%04d", error.messageNumber);
        AddLine(lines, "number", number);
    }
    AddLine(lines, "function", error.function);
    if (!error.failingCall.empty() && error.failingCall != " ") AddLine(lines, "call", error.failingCall);
    if (!error.fileKind.empty()) AddLine(lines, "file", error.fileKind);
    const std::string reason = DescribeReason(error);
    if (!reason.empty()) AddLine(lines, "reason", reason);
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
    for (const std::string& next : FindAdvice(error))
        line += ". " + next;
    return line;
}

}  // namespace mqam
