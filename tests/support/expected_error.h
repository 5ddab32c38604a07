// SPDX-License-Identifier: Apache-2.0

// The forms in which the module reports one error, written out independently of the module: the text that the
// host receives, the size that is reported for it, and the block in the trace file.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/host_requests.h"

inline constexpr char kModuleId[] = "Norvane Websphere MQ AMOD";

class ExpectedError {
  public:
    /// function   the routine that reports, as "ParseParms"
    /// message    what follows "--ERROR: "
    ExpectedError(std::string function, std::string message);

    /// Adds "--Failing function: ".
    ExpectedError& Calling(const std::string& failingCall);
    /// Adds "--Error occured while processing " and "--Reason: ".
    ExpectedError& Processing(const std::string& activity, const std::string& reason);
    ExpectedError& Warning();
    ExpectedError& Info();

    [[nodiscard]] std::string Text() const;
    /// Returns the length that the module reports to the host, which can be greater than that of the text.
    [[nodiscard]] std::uint32_t Size() const;
    /// Returns the lines of the trace file, without their stamp.
    [[nodiscard]] std::vector<std::string> TraceLines() const;

  private:
    std::string severity_ = "!ERROR!";
    std::string function_;
    std::string message_;
    std::optional<std::string> failingCall_;
    std::optional<std::string> activity_;
    std::string reason_;
};

/// Checks that the outcome has this error text, with its exact size.
testing::AssertionResult Carries(const Outcome& outcome, const ExpectedError& error);
/// Checks that the outcome is pmrcFailure with this error text.
testing::AssertionResult FailsWith(const Outcome& outcome, const ExpectedError& error);
/// Checks that the outcome is pmrcOK without an error text.
testing::AssertionResult Succeeds(const Outcome& outcome);
