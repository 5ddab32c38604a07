// The parameter file: text with one keyword and its value a line, read behind the initialization string so
// that its values win.
#pragma once

#include "mqamod.h"

/// Remembers the file that ReadParmFile reads. Requires a path of at most 32766 characters.
void SetParmFilePath(const char* path);

/// Hands every line of the parameter file to CheckParm. Lines whose first character is '#' and lines without
/// a token are skipped; tokens behind those that the keyword consumed are ignored; a line longer than 511
/// characters is read as several. Returns pmrcOK; or pmrcFailure, with an error text, when the file cannot be
/// opened or read, or at the first line that CheckParm refuses. The file is closed again in every case.
[[nodiscard]] ReturnCode ReadParmFile();
