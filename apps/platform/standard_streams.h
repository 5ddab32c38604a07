// SPDX-License-Identifier: Apache-2.0

// Prepares standard input, output and error.
#pragma once

#include <string>

namespace platform {

/// Opens each closed standard stream as an empty stream that cannot be written. Otherwise the next file that
/// is opened would get the stream's number and receive what is printed. Must be called before anything is
/// opened.
void ReopenClosedStdStreams();

/// From now on standard input and output carry bytes: line ends are not converted.
void SetBinaryStreams();

enum class ModuleOutput { kDropped, kToStandardError };

/// Redirects standard output, where the module prints its report, as `output` says. Returns a descriptor that
/// still leads to the original standard output and carries bytes as they are, or -1 with errno set. Must be
/// called once, before the module is loaded.
[[nodiscard]] int RedirectStdout(ModuleOutput output);

/// Redirects standard output to a file, which is emptied if it exists. Returns a descriptor for
/// RestoreStdout, or -1 with errno set.
[[nodiscard]] int RedirectStdoutToFile(const std::string& path);

/// Ends a redirection; `original` is what RedirectStdoutToFile returned.
void RestoreStdout(int original);

}  // namespace platform
