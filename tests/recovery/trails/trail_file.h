// SPDX-License-Identifier: Apache-2.0

// Reads the counter-examples of the model of a restarted load, model/trails/*.txt. Each is a list of what a
// host does in one process after another and of what happens inside each call. model/README.md explains how
// to read them.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

struct TrailLine {
    std::size_t indent =
        0;  ///< 0: a process, the end or the error; 2: a step of the host; more: what happens inside that step
    std::string text;
};

struct TrailFile {
    std::map<std::string, int> definitions;  ///< the model's switches: RULE_..., N, EMPTIES ...
    std::vector<TrailLine> lines;
};

/// Returns the names of the trails in model/trails, sorted.
std::vector<std::string> TrailNames();
/// Reads a trail. If the file cannot be read, the test fails and the trail is empty.
TrailFile ReadTrail(const std::string& name);
/// Parses lines that are written in a test.
std::vector<TrailLine> TrailLines(const std::string& text);

/// Returns whether the text matches the pattern, in which every # stands for a number; `numbers` receives
/// them.
bool MatchesPattern(const std::string& text, const std::string& pattern, std::vector<int>& numbers);
