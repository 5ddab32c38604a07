// SPDX-License-Identifier: Apache-2.0

// Runs many points at once, each in a process of its own, because they spend nearly all of their time waiting
// for the end of the queue.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/crash/point_run.h"

struct PointJob {
    const CrashClass* crashClass = nullptr;
    std::vector<Death> deaths;
    std::size_t series = 0;  ///< not used here; the caller's own
};

struct PoolSettings {
    Programs programs;
    std::string workFolder;  ///< contains one directory for each running point
    std::string keepFolder;  ///< receives the directories of failed points
    std::size_t jobs = 1;
    int secondsMax = 150;  ///< the most that one point may take
    bool keepsAll = false;
};

/// Runs jobs until `next` has no more and none is running. `next` returns false if it has no job at the
/// moment; it is asked again whenever a job ends.
void RunPool(const PoolSettings& settings, const std::function<bool(PointJob&)>& next,
             const std::function<void(const PointJob&, const PointOutcome&)>& ended);
