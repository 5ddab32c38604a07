// Which points there are. A series is the points that differ in the number of their last death alone; how
// many it has is found out by a run that counts, and, since a load's calls are not the same to the last one
// in every run, by going on until a load is done before the point comes.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tests/crash/point_pool.h"

struct ClassTally {
    std::uint64_t points = 0;
    std::uint64_t failures = 0;
    std::uint64_t counting = 0;  ///< runs that counted, or went beyond the last point
    std::map<std::string, std::uint64_t> pointsOfSeries;
    bool touched = false;  ///< a point came at a call on the file that the class names
};

/// Plans every point of the classes, or a sample.
void PlanSeries(const std::vector<const CrashClass*>& classes, bool sampleOnly);
/// The next job that can be started now. Returns false when there is none at the moment.
[[nodiscard]] bool NextJob(PointJob& job);
/// Takes a job's outcome into account; a point is counted in its class's tally.
void NoteOutcome(const PointJob& job, const PointOutcome& outcome);

[[nodiscard]] const std::map<std::string, ClassTally>& Tallies();
/// What of the plan came to no point at all, in words; empty when every series has some: a death that never
/// comes proves nothing.
[[nodiscard]] std::vector<std::string> DescribeGaps();
