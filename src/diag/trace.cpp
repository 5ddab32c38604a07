// SPDX-License-Identifier: Apache-2.0
#include "diag/trace.h"

#include <cstdarg>
#include <cstring>
#include <ctime>

#include "diag/module_id.h"
#include "diag/report_texts.h"

namespace mqamod {

namespace {

constexpr std::size_t kTimeCharacters = 8;  // HH:MM:SS

// Holds the level and the file of the trace. Only the routines of this file write it.
struct TraceState {
    int storedLevel;          // 0 when the module is loaded; reset by each Init
    std::FILE* file;          // null when the module is loaded; open from the first Init with a trace on,
                              // and never closed except to be replaced
    char untracedLine[2048];  // empty when the module is loaded; never cleared
    char stamp[kTimeCharacters + 1];  // scratch space: the time of the statement being written
};
TraceState state;

constexpr char kFunction[] = "PIDMMain";

// Returns the current time of day as HH:MM:SS, or an empty string if the clock cannot be read.
const char* TimeStamp() {
    constexpr std::size_t kTimeAt = 11;  // in "Www Mmm dd hh:mm:ss yyyy\n"
    state.stamp[0] = '\0';
    const std::time_t now = std::time(nullptr);
    if (now == static_cast<std::time_t>(-1)) return state.stamp;
    if (const char* text = std::ctime(&now)) {
        std::memcpy(state.stamp, text + kTimeAt, kTimeCharacters);
        state.stamp[kTimeCharacters] = '\0';
    }
    return state.stamp;
}

}  // namespace

const char* SeverityWord(Severity severity) {
    static constexpr const char* kWords[] = {"info", "!warning!", "!ERROR!"};
    return kWords[static_cast<int>(severity)];
}

void SetTraceLevel(int storedLevel) {
    state.storedLevel = storedLevel;
}

int StoredTraceLevel() {
    return state.storedLevel;
}

bool TraceAdmits(TraceLevel level) {
    return level == TraceLevel::kAlways || state.storedLevel > static_cast<int>(level);
}

std::FILE* TraceFile() {
    return state.file;
}

void UseTraceFile(std::FILE* file) {
    if (state.file != nullptr) (void)std::fclose(state.file);
    state.file = file;
}

void WriteTraceStamp() {
    (void)std::fprintf(state.file, "%s: ", TimeStamp());
}

void TraceLine(TraceLevel level, Severity severity, const char* function, const char* text) {
    if (TraceAdmits(level)) {
        if (state.file != nullptr) {
            WriteTraceStamp();
            (void)std::fprintf(state.file, "%s(%s): %s\n", function, SeverityWord(severity), text);
            (void)std::fflush(state.file);
        } else {
            FormatUntracedLine("%s/%s(%s): %s", kModuleId, function, SeverityWord(severity), text);
        }
    }
    // The contract (trace.h) asks for this flush of all streams. It is not a leftover: a checkpoint needs it.
    (void)std::fflush(nullptr);
}

void TraceEntry(const char* optionWord) {
    if (!TraceAdmits(TraceLevel::kIoEvents)) return;
    const char* severity = SeverityWord(Severity::kInfo);
    if (state.file != nullptr) {
        WriteTraceStamp();
        (void)std::fprintf(state.file, "%s(%s): entered for option '%s'\n", kFunction, severity, optionWord);
        (void)std::fflush(state.file);
    } else {
        SaveConsoleLine(FormatUntracedLine("%s/%s(%s): entered for option '%s'", kModuleId, kFunction,
                                           severity, optionWord));
    }
}

const char* FormatUntracedLine(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(state.untracedLine, sizeof state.untracedLine, format, arguments);
    va_end(arguments);
    return state.untracedLine;
}

}  // namespace mqamod
