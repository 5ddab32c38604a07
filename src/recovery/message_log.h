// SPDX-License-Identifier: Apache-2.0

// Writes the message log: the bytes of every record read from the queue, one after another, without headers
// or separators. It is flushed after every record.
#pragma once

#include <cstdint>

#include "mqamod.h"

namespace mqamod {

/// Opens the log of the LOG setting. A file that exists is kept and overwritten from its beginning, although
/// the trace says "will append": restarts rely on that. Returns pmrcOK; or pmrcFailure, with an error text,
/// when the file cannot be looked for or opened.
[[nodiscard]] ReturnCode OpenLogFile();

/// Writes one record to the message log and flushes it.
///   record  in  the bytes as handed to the host
///   length  in  bytes; 0 writes nothing but still flushes
/// Returns pmrcOK, even if the write failed, when the TLF setting allows the load to continue without a log:
/// logging is then off, and the error text says so. Returns pmrcFailure, with an error text, if the write
/// failed and TLF does not allow that, or if the flush failed. Requires an open log.
[[nodiscard]] ReturnCode WriteLogRec(const void* record, std::uint32_t length);

/// Closes the log, if it is open, and keeps or deletes its file depending on PreserveRestartInfo. Never
/// fails.
void CloseLogFile();

/// Returns whether the log is open.
[[nodiscard]] bool LogIsOpen();

/// Returns whether the last CloseLogFile kept the file.
[[nodiscard]] bool LogPreserved();

/// Closes a log that a failed Open left open, without deleting its file.
void DropLogStream();

}  // namespace mqamod
