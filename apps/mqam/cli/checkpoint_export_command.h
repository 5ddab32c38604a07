// SPDX-License-Identifier: Apache-2.0

// `mqam checkpoint export` writes the records of a checkpoint file, even of a damaged one, into a file of
// their own.
#pragma once

#include <CLI/App.hpp>

namespace mqam {

/// Adds the subcommand to `mqam checkpoint`. When the user gave it, parsing the command line runs it and sets
/// `exitCode`.
void AddCheckpointExportCommand(CLI::App& parent, int& exitCode);

}  // namespace mqam
