// SPDX-License-Identifier: Apache-2.0

// Stores the error text: the description of the most recent failure, which the host receives with the return
// code.
//
// There is at most one error text. Each report replaces it, a later success leaves it as it is, and only Shut
// frees it. The host must therefore judge success only by the return code.
#pragma once

#include <cstdint>
#include <cstdio>

#include "diag/trace.h"

namespace mqamod {

/// The kind of file that was being processed when a call on a stream failed.
enum class Activity { kParameter, kLog, kCheckpoint, kTemp };

/// Reports a failure in two places: as a block of lines in the trace file, if one is open, whatever the trace
/// level; and as the error text "MODULE/FUNCTION(SEVERITY).  --ERROR: MESSAGE--Failing function: CALL.".
/// Without a failing call the text ends after the message and a point.
///   function     in  the routine that the report names
///   message      in  as a rule MessageText()
///   failingCall  in  the call that failed, or null
/// If there is no memory for the error text, the trace file or standard output says so, and ErrorText returns
/// null.
void ReportError(Severity severity, const char* function, const char* message,
                 const char* failingCall = nullptr);

/// Reports a call that failed on an open stream. The error text of ReportError is then followed by
/// "--Error occured while processing ACTIVITY--Reason: REASON", before the final point.
///   failingCall  in  the call that failed, or null
///   reason       in  as a rule StreamReason, called right after the call that failed
void ReportStreamError(Severity severity, const char* function, const char* message, const char* failingCall,
                       Activity activity, const char* reason);

/// Returns the reason why a call on the stream failed: the system's text for errno if the error indicator of
/// the stream is set, otherwise "Undefined". Call it right after the call that failed. The text is valid
/// until the next call of std::strerror.
[[nodiscard]] const char* StreamReason(std::FILE* stream);

/// Does the same for a call that failed earlier and set errno to `error`.
[[nodiscard]] const char* StreamReason(std::FILE* stream, int error);

/// Returns the error text, or null if there is none. It belongs to the module.
[[nodiscard]] const char* ErrorText();

/// Returns the number of bytes allocated for the error text, or 0 if there is no error text. The text needs
/// fewer; the unused bytes are zero.
[[nodiscard]] std::uint32_t ErrorTextLength();

/// Frees the error text. Shut calls it.
void FreeErrorText();

}  // namespace mqamod
