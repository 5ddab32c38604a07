// SPDX-License-Identifier: Apache-2.0
#include "diag/error_text.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "diag/module_id.h"

namespace mqamod {

namespace {

// Holds the error text. Only the routines of this file write it.
struct ErrorTextState {
    char* text;            // null when the module is loaded; each report replaces it, Shut frees it
    std::uint32_t length;  // the number of bytes allocated for `text`
};
ErrorTextState state;

constexpr char kErrorLabel[] = "--ERROR: ";
constexpr char kCallLabel[] = "--Failing function: ";
constexpr char kActivityLabel[] = "--Error occured while processing ";
constexpr char kReasonLabel[] = "--Reason: ";

const char* ActivityWord(Activity activity) {
    static constexpr const char* kWords[] = {"Parameter", "Log", "Checkpoint", "Temp"};
    return kWords[static_cast<int>(activity)];
}

// A label and its text. Both are empty if the piece is omitted.
struct Piece {
    const char* label;
    const char* text;
};
constexpr int kPieces = 4;

void TracePieces(Severity severity, const char* function, const Piece (&pieces)[kPieces]) {
    std::FILE* file = TraceFile();
    if (file == nullptr) return;
    WriteTraceStamp();
    (void)std::fprintf(file, "%s/%s(%s).  Error message follows.\n", kModuleId, function,
                       SeverityWord(severity));
    for (const Piece& piece : pieces) {
        if (piece.label[0] != '\0') (void)std::fprintf(file, "%s%s.\n", piece.label, piece.text);
    }
    (void)std::fflush(file);
}

void ReportNoMemory() {
    constexpr char kText[] = "Error Text memory allocation failed";
    if (std::FILE* file = TraceFile()) {
        WriteTraceStamp();
        (void)std::fputs(kText, file);
        (void)std::fflush(file);
    } else {
        (void)std::printf("%s: %s", kModuleId, kText);
    }
}

void Report(Severity severity, const char* function, const Piece (&pieces)[kPieces]) {
    state.length = 0;
    TracePieces(severity, function, pieces);

    // The host sees this size, so its formula is fixed: 11 bytes for the punctuation and the NUL, of which
    // only 8 are needed, and the text of the last piece twice.
    std::size_t size =
        std::strlen(kModuleId) + std::strlen(function) + std::strlen(SeverityWord(severity)) + 11;
    for (const Piece& piece : pieces)
        size += std::strlen(piece.label) + std::strlen(piece.text);
    size += std::strlen(pieces[kPieces - 1].text);

    std::free(state.text);
    state.text = static_cast<char*>(std::calloc(size, 1));
    if (state.text == nullptr) {
        ReportNoMemory();
        return;
    }
    state.length = static_cast<std::uint32_t>(size);
    std::snprintf(state.text, size, "%s/%s(%s).  %s%s%s%s%s%s%s%s.", kModuleId, function,
                  SeverityWord(severity), pieces[0].label, pieces[0].text, pieces[1].label, pieces[1].text,
                  pieces[2].label, pieces[2].text, pieces[3].label, pieces[3].text);
}

Piece CallPiece(const char* failingCall) {
    return failingCall == nullptr ? Piece{"", ""} : Piece{kCallLabel, failingCall};
}

}  // namespace

void ReportError(Severity severity, const char* function, const char* message, const char* failingCall) {
    Report(severity, function, {{kErrorLabel, message}, CallPiece(failingCall), {"", ""}, {"", ""}});
}

void ReportStreamError(Severity severity, const char* function, const char* message, const char* failingCall,
                       Activity activity, const char* reason) {
    Report(severity, function,
           {{kErrorLabel, message},
            CallPiece(failingCall),
            {kActivityLabel, ActivityWord(activity)},
            {kReasonLabel, reason}});
}

const char* StreamReason(std::FILE* stream) {
    return StreamReason(stream, errno);
}

const char* StreamReason(std::FILE* stream, int error) {
    return std::ferror(stream) != 0 ? std::strerror(error) : "Undefined";
}

const char* ErrorText() {
    return state.text;
}

std::uint32_t ErrorTextLength() {
    return state.length;
}

void FreeErrorText() {
    std::free(state.text);
    state = {};
}

}  // namespace mqamod
