// SPDX-License-Identifier: Apache-2.0

// Provides the directory in which an input does its file work. It is empty at the beginning of each input,
// and the current directory while the input runs. It is in memory (/dev/shm) if the system has that,
// otherwise in TMPDIR.
#pragma once

#include <cstddef>
#include <string>

/// Makes the directory. It is removed when the process ends normally.
void MakeWorkDirectory();

void EnterWorkDirectory();

/// Empties the directory and returns to the directory in which the process was started.
void LeaveWorkDirectory();

/// Replaces what would lead a path in the text out of the work directory: a slash at the beginning of a word,
/// and "..". Words end at white space and at NULs.
void ConfinePaths(std::string& text);

/// Replaces every slash.
void DropSlashes(std::string& text);

void WriteFile(const char* name, const std::string& bytes);

/// Returns the bytes of the file, or nothing if there is no file.
std::string ReadFile(const char* name);
