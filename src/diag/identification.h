// SPDX-License-Identifier: Apache-2.0

// Identifies the module at start-up.
#pragma once

namespace mqamod {

/// Reads the report time and writes the six lines that identify the module: to the trace file if one is open,
/// otherwise to both texts of the start-up report, whatever the trace level. It is called when the module
/// receives its very first request, and again when Init has opened the trace file.
void ShowModuleID();

}  // namespace mqamod
