// SPDX-License-Identifier: Apache-2.0

// Shows the help that the keyword HELP asks for.
#pragma once

namespace mqamod {

/// Appends the keyword help to the console form of the start-up report, at most once until the module is
/// unloaded. Open prints it to standard output, unless the host has supplied its log handle.
void ShowKeywordHelp();

}  // namespace mqamod
