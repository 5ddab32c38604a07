// The stand-in's folder as an input describes it: what it holds at first, and the changes that others make.
#pragma once

#include "fuzz/byte_reader.h"

/// Makes a queue manager QM with a queue Q, both without attributes. Once an input.
void MakeSpool();

/// A new file of a name and content that the input gives, in place of what is called so.
void MakeSpoolFile(ByteReader& input);
void MakeSpoolFolder(ByteReader& input);
/// A named pipe, in place of what is called so.
void MakeSpoolPipe(ByteReader& input);
/// Makes a file shorter, or longer, while programs may have it mapped.
void CutSpoolFile(ByteReader& input);
/// A file, or a folder with all that is in it.
void RemoveSpoolEntry(ByteReader& input);
void MoveSpoolEntry(ByteReader& input);
