// SPDX-License-Identifier: Apache-2.0

// The help that the keyword HELP asks for.
#pragma once

namespace mqamod {

/// Appends the keyword help to the console form of the start-up report, once at most until the module is
/// unloaded. Open prints it to standard output, unless the host has supplied its log handle.
void ShowKeywordHelp();

}  // namespace mqamod
