// SPDX-License-Identifier: Apache-2.0
#include "tests/crash/complaint.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace {

constexpr int kTargetFailed = 3;
constexpr int kRunAgain = 9;

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// Returns whether the text names a reason: the system's, or one of those that SQLite reports instead. SQLite
// may report that a file cannot be opened, that it is read-only because it could be opened only for reading,
// or that it is locked because one process of the load could not release a lock. The module has no reason if
// it could not determine its position in a file, or if a read returned nothing; then the advice names
// possible causes.
bool NamesReason(const std::string& printed) {
    const std::array<std::string, 9> reasons = {std::strerror(EIO),
                                                std::strerror(ENOSPC),
                                                "disk I/O error",
                                                "database or disk is full",
                                                "unable to open database file",
                                                "attempt to write a readonly database",
                                                "database is locked; another program is using the database",
                                                "the file is not open, or its disk or network share failed",
                                                "it is empty or not open, or its disk cannot read it"};
    return std::any_of(reasons.begin(), reasons.end(),
                       [&printed](const std::string& reason) { return Contains(printed, reason); });
}

}  // namespace

std::string JudgeComplaint(const std::string& printed, const std::string& directory, int exitCode) {
    if (exitCode != kTargetFailed && exitCode != kRunAgain) {
        return "it ended with " + std::to_string(exitCode);
    }
    // The module reports what its file is for, not its name.
    const std::string failure = printed.substr(0, printed.find("\n  safe      "));
    if (!Contains(failure, directory + "/") && !Contains(failure, "\n  file      ") &&
        !Contains(failure, "\n  message   empty checkpoint file\n")) {
        return "no file is named";
    }
    if (!NamesReason(failure)) return "it names no reason";
    if (failure.size() == printed.size()) return "it does not say what is safe";
    if (!Contains(printed, "run the same command again")) return "it does not say what to do next";
    return "";
}
