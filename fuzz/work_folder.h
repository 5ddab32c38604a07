// The folder in which an input does its file work: empty at the beginning of each input, and the current
// folder while it runs. It is made in memory (/dev/shm) where the system has that, else where TMPDIR says.
#pragma once

#include <cstddef>
#include <string>

/// Makes the folder; it is removed when the process ends regularly.
void MakeWorkFolder();

void EnterWorkFolder();

/// Empties the folder and goes back to the folder that the process was started in.
void LeaveWorkFolder();

/// Replaces what would lead a path of the text out of the work folder: a slash at the beginning of a word,
/// and "..". Words end at white space and at NULs.
void ConfinePaths(std::string& text);

/// Replaces every slash.
void DropSlashes(std::string& text);

void WriteFile(const char* name, const std::string& bytes);

/// The bytes of the file; empty when there is none.
std::string ReadFile(const char* name);
