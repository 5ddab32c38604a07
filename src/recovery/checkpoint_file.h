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

#include "mqamod.h"

/// Opens the file of the CKFILE setting: one that exists for recovery, its contents kept, unless
/// ReleaseCkPtFile has run in this process; else a new, empty one. Clears the last-record buffer. Does
/// nothing when there is no checkpointing. Returns pmrcOK; or pmrcFailure, with an error text, when the file
/// cannot be looked for or opened, when there is no last-record buffer because Init failed, or, with
/// checkpoints by MQ, when a new file does not take one record: the last-record buffer is then freed.
[[nodiscard]] ReturnCode OpenCkPtFile();

/// Makes a message safe before it is committed: it becomes the last record, is appended to the file at the
/// position that CkPtOffset then holds, and is flushed.
///   length  in  bytes, at most BKSZ
/// Returns pmrcOK; or pmrcFailure, when no file is open, when the file has lost bytes before, and when
/// telling its position, writing or flushing failed. The unit of work was then backed out, and the error text
/// is that of the failure or, when backing out failed as well, of that. The record stays the last one;
/// CkPtOffset has changed unless the position could not be told.
[[nodiscard]] ReturnCode SaveRecord(const void* record, std::uint32_t length);

/// Looks whether the stream has lost bytes: a flush that failed, as the flush of all streams does without
/// anyone being told, drops what it could not write with some C libraries, and later writes succeed. A record
/// behind such a hole would be taken for the missing one, so that none is saved until the file is opened
/// again. To be called right behind the call that pushed written bytes out, with its errno.
void NoteLostBytes();

/// Closes the file, if it is open, and keeps or deletes it by PreserveRestartInfo; from now on Open begins a
/// fresh one. A file that an earlier close kept is looked at again: it is deleted when PreserveRestartInfo
/// has been cleared. A deletion that fails is a warning in the trace.
void ReleaseCkPtFile();

/// The open checkpoint file, or null before Open, after Close and after a rewrite that failed with the file
/// closed.
[[nodiscard]] std::FILE* CkPtFileStream();

/// Closes the stream, if there is one, and opens the checkpoint file in the mode given.
/// Returns pmrcOK; or pmrcFailure, with an error text naming the function, and no stream.
[[nodiscard]] ReturnCode ReopenCkPtFile(const char* mode, const char* function);

/// Closes the stream, if there is one; the file stays as it is.
void DropCkPtFileStream();
