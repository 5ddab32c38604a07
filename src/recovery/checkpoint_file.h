// SPDX-License-Identifier: Apache-2.0

// Keeps the checkpoint file: the records that the host has received since its last checkpoint.
//
// Its layout is little-endian, without padding or trailer: the 4-byte sequence number of the checkpoint that
// the file belongs to, then records, each an 8-byte length and that many bytes. The first record is the last
// one that the host received before the checkpoint; the others came after it. A new file stays empty until
// the first checkpoint.
//
// This component owns the stream. checkpoint_rewrite rewrites the file, and replay reads it back.
#pragma once

#include <cstdint>
#include <cstdio>

#include "mqamod.h"

namespace mqamod {

/// Opens the file of the CKFILE setting. A file that exists is opened for recovery and keeps its contents,
/// unless ReleaseCkPtFile has run in this process. Then, and if no file exists, an empty file is created.
/// Clears the last-record buffer. Does nothing without checkpointing. Returns pmrcOK; or pmrcFailure, with an
/// error text, if the file cannot be looked for or opened, if there is no last-record buffer because Init
/// failed, or, with checkpoints by MQ, if a new file has no room for one record. In the last case the
/// last-record buffer is freed.
[[nodiscard]] ReturnCode OpenCkPtFile();

/// Makes a message safe before it is committed: it becomes the last record, is appended to the file at the
/// position that CkPtOffset then has, and is flushed.
///   length  in  bytes, at most BKSZ
/// Returns pmrcOK; or pmrcFailure, if no file is open, if the stream has lost bytes before, or if getting or
/// setting the position, writing or flushing failed. In each case the unit of work has been backed out. The
/// error text is that of the failure or, if backing out failed as well, of the back-out. The record stays the
/// last one, and CkPtOffset has changed, unless the position could not be read.
[[nodiscard]] ReturnCode SaveRecord(const void* record, std::uint32_t length);

/// Records whether the stream has lost bytes. A failed flush of all streams goes unreported, and some C
/// libraries then discard the unwritten bytes and let later writes succeed. A record written after such a gap
/// would be read back as the missing one, so SaveRecord refuses until the file is reopened. Call it right
/// after the call that flushed, while errno is still that call's.
void NoteLostBytes();

/// Closes the file, if it is open, and keeps or deletes it depending on PreserveRestartInfo. Sets
/// FreshCkPtFile, which means: this process has released its checkpoint file, so from now on every Open
/// creates a fresh one. A file that an earlier close kept is deleted if PreserveRestartInfo has been cleared
/// since. A deletion that fails is a warning in the trace.
void ReleaseCkPtFile();

/// Returns the open checkpoint file. It is null before Open, after Close, and after a rewrite that failed
/// while the file was closed.
[[nodiscard]] std::FILE* CkPtFileStream();

/// Closes the stream, if there is one, and opens the checkpoint file in the mode given.
/// Returns pmrcOK; or pmrcFailure, with an error text naming the function, and no stream.
[[nodiscard]] ReturnCode ReopenCkPtFile(const char* mode, const char* function);

/// Records that the stream is being read, so that the next SaveRecord positions it before writing. Everything
/// that reads the stream and leaves it open calls this.
void NoteCkPtFileRead();

/// Closes the stream, if there is one, without deleting the file.
void DropCkPtFileStream();

}  // namespace mqamod
