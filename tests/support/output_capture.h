// SPDX-License-Identifier: Apache-2.0

// Captures the standard output of the process, the module's as well as the test's, in a file.
#pragma once

#include <string>

class OutputCapture {
  public:
    /// Captures everything from now on in a file of that name.
    explicit OutputCapture(const std::string& path = "standard_output.txt");
    ~OutputCapture();
    OutputCapture(const OutputCapture&) = delete;
    OutputCapture& operator=(const OutputCapture&) = delete;

    /// Ends the capture and returns what was written, with "\n" as line end.
    std::string Finish();

  private:
    std::string path_;
    int token_;
};

/// Turns "\r\n" into "\n".
std::string WithPlainLineEnds(const std::string& text);
