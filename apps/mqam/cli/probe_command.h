// SPDX-License-Identifier: Apache-2.0

// The probe of a load that failed, see mqam/load/probe_process.h: it finds the reason and prints it.
#pragma once

#include <string>

#include "mqam/cli/load_options.h"
#include "mqam/load/probe_process.h"
#include "mqam/mq/queue_probe.h"

namespace mqam {

/// Returns the lines that continue the error message of the load, each with its line end.
[[nodiscard]] std::string DescribeProbe(ProbeKind kind, const ProbeRequest& request,
                                        const ProbeResult& result);

/// Returns what to probe for an initialization string and the parameter file that it names.
[[nodiscard]] ProbeRequest MakeProbeRequest(ProbeKind kind, const std::string& initString);

/// Probes the queue of the load and prints what it finds on standard error. Returns an exit code.
[[nodiscard]] int RunProbe(const LoadOptions& options);

}  // namespace mqam
