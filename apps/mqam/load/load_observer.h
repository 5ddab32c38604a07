// What a load reports while it runs.
#pragma once

#include <functional>
#include <string>

#include "mqam/module/startup_report.h"

namespace mqam {

/// What a life tells while it runs. Every member may be empty.
struct LoadObserver {
    std::function<void(const StartupReport&)> report;  ///< the parameters in effect, after Init
    std::function<void(const std::string&)> notice;    ///< an error text that came with success
    std::function<void(const std::string&)> decision;  ///< how a restartable load's life begins, and why
    std::function<void(const std::string&)> repaired;  ///< what a restart changed on the disk, in words
    std::function<void(const PositionData&)>
        checkpoint;                    ///< a position handed out and the target saved for it
    std::function<bool()> stopWanted;  ///< asked before every Read
};

}  // namespace mqam
