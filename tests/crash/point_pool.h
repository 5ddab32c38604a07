// Runs many points at once, each in a process of its own: they spend nearly all of their time waiting for the
// end of the queue.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/crash/point_run.h"

struct PointJob {
    const CrashClass* crashClass = nullptr;
    std::vector<Death> deaths;
    std::size_t series = 0;  ///< the caller's own
};

struct PoolSettings {
    Programs programs;
    std::string workFolder;  ///< holds one folder for each running point
    std::string keepFolder;  ///< gets the folders of failed points
    std::size_t jobs = 1;
    int secondsMax = 150;  ///< for one point
    bool keepsAll = false;
};

/// Runs jobs until `next` has none and none is running. `next` returns false when there is none at the
/// moment; it is asked again after each end.
void RunPool(const PoolSettings& settings, const std::function<bool(PointJob&)>& next,
             const std::function<void(const PointJob&, const PointOutcome&)>& ended);
