// The trace: a file that follows what the module does, at one of four levels. Every line is flushed at once,
// so the trace survives a crash of the host.
#pragma once

#include <cstdio>

/// How much has to be asked for (keyword TRCL) before a statement is written.
enum class TraceLevel { Always = -1, JobEvents = 1, IoEvents = 2, IoBuffers = 3, Details = 4 };

enum class Severity { Info, Warning, Error };

/// "info", "!warning!" or "!ERROR!".
[[nodiscard]] const char* SeverityWord(Severity severity);

/// Stores the level that statements are tested against. It is TRCL + 1 once the parameters are parsed, TRCL
/// itself while they are being parsed, and 0 from the start of Init until TRCL is met.
void SetTraceLevel(int storedLevel);
[[nodiscard]] int StoredTraceLevel();

/// Whether a statement of that level is written: Always at any stored level, level N when the stored level is
/// above N.
[[nodiscard]] bool TraceAdmits(TraceLevel level);

/// The open trace file, or null. It is never closed but by UseTraceFile.
[[nodiscard]] std::FILE* TraceFile();

/// Takes over a file opened for appending as the trace file, and closes the one in use before.
void UseTraceFile(std::FILE* file);

/// Writes the time of day and ": " to the trace file; the time is empty when the clock cannot be read.
/// Requires an open trace file.
void WriteTraceStamp();

/// One trace statement: "FUNCTION(SEVERITY): TEXT" behind a time stamp in the trace file, or, without a trace
/// file, behind the module's name in the untraced line. Flushes all output streams, also when the level is
/// not admitted: the checkpoint file's header reaches the disk that way.
void TraceLine(TraceLevel level, Severity severity, const char* function, const char* text);

/// The statement that begins every request but Init: "entered for option 'WORD'" at TraceLevel::IoEvents,
/// info. Without a trace file it goes on into the console report text. Unlike TraceLine it flushes the trace
/// file alone.
void TraceEntry(const char* optionWord);

/// The untraced line: 2048 bytes that take a trace statement when no trace file is open, and in which
/// the identification is formatted.
[[gnu::format(printf, 1, 2)]] const char* FormatUntracedLine(const char* format, ...);
