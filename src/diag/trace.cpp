#include "diag/trace.h"

#include <cstdarg>
#include <cstring>
#include <ctime>

#include "diag/identification.h"
#include "diag/report_texts.h"

namespace {

struct TraceState {
    int storedLevel;  // 0 when loaded; set by Init alone
    std::FILE* file;  // none when loaded; opened by Init, stays open for the life of the loaded module
    char untracedLine[2048];  // overwritten by each statement that finds no trace file
};
TraceState state;

constexpr char kFunction[] = "PIDMMain";

// The time of day of now, HH:MM:SS, or the empty string when the clock cannot be read.
const char* TimeStamp() {
    static char stamp[9];
    stamp[0] = '\0';
    const std::time_t now = std::time(nullptr);
    if (now == static_cast<std::time_t>(-1)) return stamp;
    // "Www Mmm dd hh:mm:ss yyyy\n": the time of day stands at 11 to 18.
    if (const char* text = std::ctime(&now)) {
        std::memcpy(stamp, text + 11, 8);
        stamp[8] = '\0';
    }
    return stamp;
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
    return level == TraceLevel::Always || state.storedLevel > static_cast<int>(level);
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
    (void)std::fflush(nullptr);
}

void TraceEntry(const char* optionWord) {
    if (!TraceAdmits(TraceLevel::IoEvents)) return;
    const char* severity = SeverityWord(Severity::Info);
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
