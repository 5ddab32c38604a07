// SPDX-License-Identifier: Apache-2.0

// Reads the parameter file: a text file with one keyword and its value on each line. It is read after the
// initialization string, so that its values override those of the string.
#pragma once

#include "mqamod.h"

namespace mqamod {

/// Stores the path of the file that ReadParmFile reads. It has at most 32766 characters.
void SetParmFilePath(const char* path);

/// Passes every line of the parameter file to CheckParm. Lines that begin with '#' and lines without a token
/// are skipped; tokens after those of the line's keyword are ignored; a line of more than 511 characters is
/// read as several lines. Closes the file in every case.
/// Returns pmrcOK; or pmrcFailure, with an error text, if the file cannot be opened or read, or at the first
/// line that CheckParm refuses.
[[nodiscard]] ReturnCode ReadParmFile();

}  // namespace mqamod
