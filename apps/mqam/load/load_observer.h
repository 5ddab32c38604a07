// SPDX-License-Identifier: Apache-2.0

// Receives what a load reports while it runs.
#pragma once

#include <functional>
#include <string>

#include "mqam/module/startup_report.h"

namespace mqam {

/// The load calls these on its own thread. Every member may be empty.
struct LoadObserver {
    std::function<void(const StartupReport&)> report;     ///< the parameters in effect, after Init
    std::function<void(const std::string&)> notice;       ///< an error text that came with success
    std::function<void(const std::string&)> decision;     ///< how an attempt starts, and why
    std::function<void(const std::string&)> repaired;     ///< a repair made on disk, described
    std::function<void(const PositionData&)> checkpoint;  ///< a position, with the target saved for it
    /// Shows what is lost, in complete lines, and returns whether the user accepts it. Empty if no loss is accepted.
    std::function<bool(const std::string&)> acceptLoss;
    std::function<bool()> stopWanted;  ///< asked before every Read
};

}  // namespace mqam
