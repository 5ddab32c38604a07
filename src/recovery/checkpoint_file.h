// The checkpoint file: the records that the host has received since its last checkpoint.
//
// Layout, little-endian, without padding or trailer: the 4-byte sequence number of the checkpoint that the
// file belongs to, then records, each an 8-byte length and that many bytes. The first record is the last one
// that the host had received before the checkpoint, the others came after it. A new file stays empty until
// the first checkpoint.
//
// This file owns the stream. What rewrites it stands in checkpoint_rewrite, what reads it back in restart.
#pragma once

#include <cstdint>
#include <cstdio>

#include "diag/return_codes.h"

/// Opens the file of the CKFILE setting: one that exists for recovery, its contents kept, unless this process
/// has closed a checkpoint file before; else a new, empty one. Clears the last-record buffer. Does nothing
/// when there is no checkpointing. Returns pmrcOK; or pmrcFailure, with an error text, when the file cannot
/// be looked for or opened, or when there is no last-record buffer because Init failed.
[[nodiscard]] ReturnCode OpenCkPtFile();

/// Makes a message safe before it is committed: it becomes the last record, is appended to the file behind
/// the position that CkPtOffset then holds, and is flushed.
///   length  in  bytes, at most BKSZ
/// Returns pmrcOK; or pmrcFailure, with an error text, after the unit of work was backed out.
[[nodiscard]] ReturnCode SaveRecord(const void* record, std::uint32_t length);

/// Closes the file, if it is open, and keeps or deletes it by PreserveRestartInfo; the next Open then begins
/// a fresh one. A file that an earlier close kept is looked at again: it is deleted when PreserveRestartInfo
/// has been cleared.
void ReleaseCkPtFile();

/// The open checkpoint file, or null before Open, after Close and after a rewrite that could not open it
/// again.
[[nodiscard]] std::FILE* CkPtFileStream();

/// Closes the stream, if there is one, and opens the checkpoint file in the mode given.
/// Returns pmrcOK; or pmrcFailure, with an error text naming the function, and no stream.
[[nodiscard]] ReturnCode ReopenCkPtFile(const char* mode, const char* function);

/// Closes the stream, if there is one; the file stays as it is.
void DropCkPtFileStream();
