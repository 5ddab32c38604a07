// SPDX-License-Identifier: Apache-2.0

// Writes the report of the parameters in effect.
#pragma once

namespace mqamod {

/// Writes the report to the trace (level 1) and to both forms of the start-up report. The heading and the
/// queue manager's name are not traced; the channel and the server are only traced. OTENACITY must still be
/// in seconds.
void ReportParametersInEffect();

}  // namespace mqamod
