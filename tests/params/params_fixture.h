// What the tests of the parameters share: Init in every form, and the views on what it took from the
// keywords.
#pragma once

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/support/expected_report.h"
#include "tests/support/module_fixture.h"

class ParamsFixture : public ModuleFixture {
  protected:
    /// Init with the required keywords, a trace at level 1 and further keywords; it must succeed.
    /// Returns the trace between "Paramters in effect:" and the return, without stamps.
    std::vector<std::string> TraceOfInit(const std::string& keywords);

    /// The report lines alone of such an Init.
    std::vector<std::string> ReportOfInit(const std::string& keywords);

    /// Leaves a trace file open at level 1, as an earlier load in the same process does, and shuts the
    /// module.
    void LeaveTraceOpen();

    /// What Open prints, whatever comes of it otherwise.
    std::string PrintedAtOpen();

    /// Shuts, so that the next Init is accepted.
    void StartOver() { ASSERT_EQ(Shut().returnCode, pmrcOK); }
};

/// Required keywords with further ones in front, for a value that must be the last token.
std::string Required(const std::string& keywords);

/// An error of keyword validation, of the parameters as a whole, and of reading the parameter file.
ExpectedError KeywordError(const std::string& message);
ExpectedError ParametersError(const std::string& message);
ExpectedError ParameterFileError(const std::string& message);

/// A message as the module holds it: cut at 1023 characters.
std::string Cut(const std::string& message);

/// The system's reason why the file cannot be opened.
std::string ReasonNotOpened(const std::string& path, const char* mode);
