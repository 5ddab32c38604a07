// The trace: a file that records what the module does, at one of four levels. Every line is flushed at once,
// so the trace survives a crash of the host.
//
// A line is "HH:MM:SS: FUNCTION(SEVERITY): TEXT". FUNCTION is the routine that the interface documents, which
// is not always the function that writes the line: most lines of open.cpp, read.cpp and requests.cpp say
// "PIDMMain", and those about releasing files say "CloseAll".
//
// How long a line can be depends on where its text was formatted. The message text (message_text.h) cuts it
// at 1023 characters. The untraced line, which replaces the trace file when none is open, has room for 2047.
#pragma once

#include <cstdio>

namespace mqamod {

/// The level of a statement: the value of the keyword TRCL from which on it is written.
enum class TraceLevel { Always = -1, JobEvents = 1, IoEvents = 2, IoBuffers = 3, Details = 4 };

enum class Severity { Info, Warning, Error };

/// Returns "info", "!warning!" or "!ERROR!".
[[nodiscard]] const char* SeverityWord(Severity severity);

/// Stores the level that statements are compared with: 0 at the start of Init, TRCL once that keyword has
/// been read, and TRCL + 1 when all parameters have been read.
void SetTraceLevel(int storedLevel);
[[nodiscard]] int StoredTraceLevel();

/// Returns whether a statement of this level is written: Always is written at any stored level, level N if
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
/// not admitted. That flush is part of the module's contract: the header of a new checkpoint file reaches the
/// operating system by it and by nothing else.
///   function  in  the routine that the line names. Trace lines and error texts name the routines of the
///                 documented interface, which operators search for. Where the code is divided differently, a
///                 file has its name in a constant: all that serves a request directly says "PIDMMain", and
///                 the release of the checkpoint file says "CloseAll"
///   text      in  as a rule MessageText()
void TraceLine(TraceLevel level, Severity severity, const char* function, const char* text);

/// Writes the statement that begins every request except Init, "entered for option 'WORD'", at
/// TraceLevel::IoEvents. Without a trace file, the untraced line is also appended to the console form of the
/// start-up report. Unlike TraceLine it flushes only the trace file.
void TraceEntry(const char* optionWord);

/// Formats into the untraced line, cut at 2047 characters, and returns it. It holds the most recent statement
/// that found no trace file open; the identification and the help are formatted in it, too.
[[gnu::format(printf, 1, 2)]] const char* FormatUntracedLine(const char* format, ...);

}  // namespace mqamod
