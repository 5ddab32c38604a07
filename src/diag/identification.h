// SPDX-License-Identifier: Apache-2.0

// The identification of the module at start-up.
#pragma once

namespace mqamod {

/// Reads the report time and writes the six lines that identify the module: to the trace file when one is
/// open, otherwise to both texts of the start-up report. The trace level does not matter. Called when the
/// module receives its very first request, and again when Init has opened the trace file.
void ShowModuleID();

}  // namespace mqamod
