// The message log: the bytes of every record that was got from the queue, one behind the other, without
// headers or separators. It is flushed after every record.
#pragma once

#include <cstdint>

#include "mqamod.h"

/// Opens the log of the LOG setting. A file that exists is kept and overwritten from its beginning, in spite
/// of the trace saying "will append": restarts rely on it. Returns pmrcOK; or pmrcFailure, with an error
/// text, when the file cannot be looked for or opened.
[[nodiscard]] ReturnCode OpenLogFile();

/// Writes one record to the message log and flushes it.
///   record  in  the bytes as handed to the host; not kept
///   length  in  bytes; 0 writes nothing but still flushes
/// Returns pmrcOK, also when the write failed and the TLF setting lets the load go on without a log (logging
/// is then off and the error text says so); or pmrcFailure, with an error text, when the write or the flush
/// failed. Requires an open log.
[[nodiscard]] ReturnCode WriteLogRec(const void* record, std::uint32_t length);

/// Closes the log, if it is open, and keeps or deletes its file by PreserveRestartInfo. Never fails.
void CloseLogFile();

/// Whether the log is open.
[[nodiscard]] bool LogIsOpen();

/// Whether an earlier close kept the log's file.
[[nodiscard]] bool LogPreserved();

/// Closes a log that a failed Open left open; its file stays as it is.
void DropLogStream();
