// SPDX-License-Identifier: Apache-2.0

// Writes the trace: a file that records what the module does, at one of four levels. Every line is flushed
// immediately, so the trace survives a crash of the host.
//
// A line is "HH:MM:SS: FUNCTION(SEVERITY): TEXT". FUNCTION, also in error texts, is a routine of the
// documented interface, which operators search for. It is not always the function that writes the line: code
// that serves a request directly says "PIDMMain", wherever it is, and the release of the checkpoint file
// says "CloseAll". Each file has these names in constants.
//
// How long a line can be depends on where its text was formatted. The message text (message_text.h) cuts it
// at 1023 characters. The untraced line, which replaces the trace file when none is open, has room for 2047.
#pragma once

#include <cstdio>

namespace mqamod {

/// The level of a statement is the lowest value of the keyword TRCL with which the statement is written.
enum class TraceLevel { kAlways = -1, kJobEvents = 1, kIoEvents = 2, kIoBuffers = 3, kDetails = 4 };

enum class Severity { kInfo, kWarning, kError };

/// Returns "info", "!warning!" or "!ERROR!".
[[nodiscard]] const char* SeverityWord(Severity severity);

/// Stores the level that statements are compared with: 0 at the start of Init, TRCL once that keyword has
/// been read, and TRCL + 1 when all parameters have been read.
void SetTraceLevel(int storedLevel);
[[nodiscard]] int StoredTraceLevel();

/// Returns whether a statement of this level is written: kAlways is written at any stored level, level N if
/// the stored level is greater than N.
[[nodiscard]] bool TraceAdmits(TraceLevel level);

/// Returns the open trace file, or null. Only UseTraceFile closes it.
[[nodiscard]] std::FILE* TraceFile();

/// Takes ownership of a file opened for appending, makes it the trace file, and closes the previous one.
void UseTraceFile(std::FILE* file);

/// Writes the time of day and ": " to the trace file. The time is empty if the clock cannot be read.
/// Requires an open trace file.
void WriteTraceStamp();

/// Writes one statement, if its level is admitted: to the trace file, or, when none is open, after the
/// module's name to the untraced line. Then flushes all output streams of the process, even if the level was
/// not admitted. That flush is part of the module's contract: nothing else takes the header of a new
/// checkpoint file to the operating system.
///   function  in  the routine that the line names (see the top of this file)
///   text      in  as a rule MessageText()
void TraceLine(TraceLevel level, Severity severity, const char* function, const char* text);

/// Writes the statement that begins every request except Init, "entered for option 'WORD'", at
/// TraceLevel::kIoEvents. Without a trace file, the untraced line is also appended to the console form of the
/// start-up report. Unlike TraceLine it flushes only the trace file.
void TraceEntry(const char* optionWord);

/// Formats into the untraced line, cut at 2047 characters, and returns it. The untraced line holds the most
/// recent statement that was made without an open trace file. The identification and the help are formatted
/// in it, too.
[[gnu::format(printf, 1, 2)]] const char* FormatUntracedLine(const char* format, ...);

}  // namespace mqamod
