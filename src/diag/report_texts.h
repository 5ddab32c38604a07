// SPDX-License-Identifier: Apache-2.0

// Collects the start-up report (the identification, the parameters in effect and the help) in two forms. Open
// prints the console form to standard output, or the host-log form if the host has supplied its log handle.
// When that handle arrives, the host-log form is passed to the host.
//
// Each text has room for 8191 characters and only grows; no request clears it. A line that does not fit is
// dropped as a whole, and later lines that fit are still appended.
#pragma once

namespace mqamod {

/// These return the two forms. The texts belong to the module and are valid until it is unloaded.
[[nodiscard]] const char* ConsoleReportText();
[[nodiscard]] const char* HostLogReportText();

/// Appends the line and a newline to the console form.
void SaveConsoleLine(const char* line);

/// Reads the clock once. Numbered lines show this local time until it is read again.
void ReadReportTime();

/// Appends a numbered line to both forms, with its own wording in each. The number has five digits.
void AddNumberedLine(int number, const char* text);

/// Appends a line of the parameter report to both forms.
void AddParameterLine(const char* text);

}  // namespace mqamod
