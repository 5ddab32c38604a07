// SPDX-License-Identifier: Apache-2.0

// Writes the report of the parameters in effect.
#pragma once

namespace mqamod {

/// Writes the report to the trace (level 1) and to both forms of the start-up report. OTENACITY must still
/// be in seconds.
void ReportParametersInEffect();

}  // namespace mqamod
