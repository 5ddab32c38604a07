// The report of the parameters in effect.
#pragma once

/// Writes the report to the trace (level 1) and to both report texts, and turns the open timing into a number
/// of attempts: OTENACITY becomes OTENACITY / OWAIT, at least 1.
void ReportParametersInEffect();
