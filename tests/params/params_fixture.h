// SPDX-License-Identifier: Apache-2.0

// The base of the tests of the parameters: Init in every form, and ways to see the effect of the keywords.
#pragma once

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/support/expected_report.h"
#include "tests/support/module_fixture.h"

class ParamsFixture : public ModuleFixture {
  protected:
    /// Runs Init with the required keywords, a trace at level 1 and further keywords. It must succeed.
    /// Returns the trace between "Paramters in effect:" and the return, without times.
    std::vector<std::string> TraceOfInit(const std::string& keywords);

    /// Does the same as TraceOfInit, but returns only the report lines.
    std::vector<std::string> ReportOfInit(const std::string& keywords);

    /// Opens a trace file at level 1 and shuts the module. The file stays open, as after an earlier load in
    /// the same process.
    void LeaveTraceOpen();

    /// Calls Open and returns what it prints, whether it succeeds or not.
    std::string PrintedAtOpen();

    /// Calls Shut, so that the next Init is accepted.
    void StartOver() { ASSERT_EQ(Shut().returnCode, pmrcOK); }
};

/// Returns the required keywords followed by `keywords`, so that a value in them can be the last token.
std::string Required(const std::string& keywords);

/// These return the errors for a keyword, for the parameters as a whole, and for the parameter file.
ExpectedError KeywordError(const std::string& message);
ExpectedError ParametersError(const std::string& message);
ExpectedError ParameterFileError(const std::string& message);

/// Returns a message as the module stores it: cut at 1023 characters.
std::string Cut(const std::string& message);

/// Returns the system's reason why the file cannot be opened.
std::string ReasonNotOpened(const std::string& path, const char* mode);
