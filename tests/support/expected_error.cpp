// SPDX-License-Identifier: Apache-2.0
#include "tests/support/expected_error.h"

#include <utility>

namespace {
constexpr char kError[] = "--ERROR: ";
constexpr char kFailingFunction[] = "--Failing function: ";
constexpr char kProcessing[] = "--Error occured while processing ";
constexpr char kReason[] = "--Reason: ";

std::size_t Length(const std::string& text) {
    return text.size();
}
}  // namespace

ExpectedError::ExpectedError(std::string function, std::string message)
    : function_(std::move(function)), message_(std::move(message)) {}

ExpectedError& ExpectedError::Calling(const std::string& failingCall) {
    failingCall_ = failingCall;
    return *this;
}

ExpectedError& ExpectedError::Processing(const std::string& activity, const std::string& reason) {
    activity_ = activity;
    reason_ = reason;
    return *this;
}

ExpectedError& ExpectedError::Warning() {
    severity_ = "!warning!";
    return *this;
}

ExpectedError& ExpectedError::Info() {
    severity_ = "info";
    return *this;
}

std::string ExpectedError::Text() const {
    std::string text =
        std::string(kModuleId) + "/" + function_ + "(" + severity_ + ").  " + kError + message_;
    if (failingCall_) text += kFailingFunction + *failingCall_;
    if (activity_) text += kProcessing + *activity_ + kReason + reason_;
    return text + ".";
}

std::uint32_t ExpectedError::Size() const {
    std::size_t size =
        Length(kModuleId) + Length(function_) + Length(severity_) + Length(kError) + Length(message_) + 11;
    if (failingCall_) size += Length(kFailingFunction) + Length(*failingCall_);
    // The module reserves room for the reason twice, and the length that it reports to the host includes the
    // unused room.
    if (activity_) size += 33 + Length(*activity_) + 10 + 2 * Length(reason_);
    return static_cast<std::uint32_t>(size);
}

std::vector<std::string> ExpectedError::TraceLines() const {
    std::vector<std::string> lines;
    lines.push_back(std::string(kModuleId) + "/" + function_ + "(" + severity_ +
                    ").  Error message follows.");
    lines.push_back(kError + message_ + ".");
    if (failingCall_) lines.push_back(kFailingFunction + *failingCall_ + ".");
    if (activity_) {
        lines.push_back(kProcessing + *activity_ + ".");
        lines.push_back(kReason + reason_ + ".");
    }
    return lines;
}

testing::AssertionResult Carries(const Outcome& outcome, const ExpectedError& error) {
    if (!outcome.hasErrorText)
        return testing::AssertionFailure() << "no error text, expected: " << error.Text();
    if (outcome.errorText != error.Text()) {
        return testing::AssertionFailure()
               << "error text: " << outcome.errorText << "\n  expected: " << error.Text();
    }
    if (outcome.errorTextLength != error.Size()) {
        return testing::AssertionFailure() << "error text size " << outcome.errorTextLength << ", expected "
                                           << error.Size() << " for: " << error.Text();
    }
    return testing::AssertionSuccess();
}

testing::AssertionResult FailsWith(const Outcome& outcome, const ExpectedError& error) {
    if (outcome.returnCode != pmrcFailure) {
        return testing::AssertionFailure()
               << "return code " << outcome.returnCode << ", error text: " << outcome.errorText
               << "\n  expected 34 with: " << error.Text();
    }
    return Carries(outcome, error);
}

testing::AssertionResult Succeeds(const Outcome& outcome) {
    if (outcome.returnCode == pmrcOK && !outcome.hasErrorText) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "return code " << outcome.returnCode << ", error text: " << outcome.errorText;
}
