// The start-up report: identification, parameters in effect and help, collected in two forms. Open prints the
// console form to standard output, or the host-log form when the host has supplied its log handle; the
// handle's arrival hands the host-log form to the host. Both texts hold 8192 bytes and only ever grow; a line
// that does not fit in the room left is dropped whole, later lines that fit are still taken.
#pragma once

[[nodiscard]] const char* ConsoleReportText();
[[nodiscard]] const char* HostLogReportText();

/// Appends the line and a newline to the console report text.
void SaveConsoleLine(const char* line);

/// Reads the clock once; its local time stamps the numbered console lines until it is read again.
void TakeReportTime();

/// One numbered line of the identification, in the trace file when one is open (not flushed: the caller does
/// that behind its last line), else in both report texts.
///   number    in  printed with five digits
///   function  in  the reporting routine's name
void ReportLine(int number, const char* function, const char* text);

/// Begins the parameter report: a numbered heading in both report texts.
void ReportParameterHeading(int number, const char* text);

/// One line of the parameter report, in both report texts.
void ReportParameter(const char* text);
