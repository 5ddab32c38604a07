// SPDX-License-Identifier: Apache-2.0

// Decides which points there are. A series consists of the points that differ only in the number of their
// last kill. A run that counts finds out how many there are. Because the calls of a load vary slightly from
// run to run, the series continues until a load is done before its point is reached.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tests/crash/point_pool.h"

struct ClassTally {
    std::uint64_t points = 0;
    std::uint64_t failures = 0;
    std::uint64_t counting = 0;  ///< runs that only counted, or in which the load was done before the point
    std::map<std::string, std::uint64_t> pointsOfSeries;
    bool touched = false;  ///< a point was at a call on the file that the class names in `touches`
};

/// Plans every point of the classes, or a sample.
void PlanSeries(const std::vector<const CrashClass*>& classes, bool sampleOnly);
/// Takes the next job that can be started now. Returns false if there is none at the moment.
[[nodiscard]] bool NextJob(PointJob& job);
/// Records a job's outcome, and counts a point in the tally of its class.
void NoteOutcome(const PointJob& job, const PointOutcome& outcome);

[[nodiscard]] const std::map<std::string, ClassTally>& Tallies();
/// Returns a text for each series in which no load died and, after a run of all points, for each file in
/// `touches` at which no load died. Such a series proves nothing.
[[nodiscard]] std::vector<std::string> DescribeGaps();
