// The error text: what the host is told of the most recent failure, beside the return code.
//
// There is at most one. Each report replaces it, a later success leaves it as it is, and only Shut frees it:
// the host judges success by the return code alone.
#pragma once

#include <cstdint>
#include <cstdio>

#include "diag/trace.h"

/// The object that was being processed when a call on a stream failed.
enum class Activity { Parameter, Log, Checkpoint, Temp };

/// Reports a failure: a block of lines in the trace file, when one is open, whatever the level; and the error
/// text "MODULE/FUNCTION(SEVERITY).  --ERROR: MESSAGE--Failing function: CALL--Error occured while processing
/// ACTIVITY--Reason: REASON.", with the pieces that are given.
///   function     in  the reporting routine's name
///   message      in  as a rule the message text
///   failingCall  in  the call that failed, or null
/// When there is no memory for the text the trace file, or standard output, says so and the error text is
/// none.
void ReportError(Severity severity, const char* function, const char* message,
                 const char* failingCall = nullptr);

/// The same for a call that failed on an open stream.
///   failingCall  in  the call that failed, or null
///   reason       in  as a rule StreamReason, taken right after the failing call
void ReportStreamError(Severity severity, const char* function, const char* message, const char* failingCall,
                       Activity activity, const char* reason);

/// Why a call on the stream failed: the system's text for errno when the stream's error indicator is set,
/// else "Undefined". Ask right after the failing call. Valid until the next system error text is asked for.
[[nodiscard]] const char* StreamReason(std::FILE* stream);

/// The error text, or null when there is none. The module's own.
[[nodiscard]] const char* ErrorText();

/// The bytes allocated for the error text: more than its length, the rest is zero. 0 when there is none.
[[nodiscard]] std::uint32_t ErrorTextLength();

/// Frees the error text.
void FreeErrorText();
