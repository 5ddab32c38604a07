// SPDX-License-Identifier: Apache-2.0

// The file of --config: options of a command, one "name = value" a line, in the form that CLI11 reads.
#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

#include "mqam/base/status.h"

namespace mqam {

/// Inserts the options of the file that the words name with --config after the command. An option that is among the
/// words, or that excludes one of them, is left out: the command line wins.
///   words  in/out  the words after the program's name; unchanged on failure and without --config
/// kRefused: the file cannot be read, or it has an option that the command does not have.
Status ExpandConfigFile(const CLI::App& program, std::vector<std::string>& words);

}  // namespace mqam
