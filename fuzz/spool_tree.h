// SPDX-License-Identifier: Apache-2.0

// Makes the stand-in's directory as an input describes it: its first content, and the changes that others
// make.
#pragma once

#include "fuzz/byte_reader.h"

/// Makes a queue manager QM with a queue Q, both without attributes. It must be called once per input.
void MakeSpool();

/// Makes a file with a name and content from the input, in place of whatever has that name.
void MakeSpoolFile(ByteReader& input);
void MakeSpoolDirectory(ByteReader& input);
/// Makes a named pipe, in place of whatever has that name.
void MakeSpoolPipe(ByteReader& input);
/// Makes a file shorter or longer while programs may have it mapped.
void CutSpoolFile(ByteReader& input);
/// Deletes a file, or a directory with everything in it.
void RemoveSpoolEntry(ByteReader& input);
void MoveSpoolEntry(ByteReader& input);
