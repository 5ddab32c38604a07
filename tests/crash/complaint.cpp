#include "tests/crash/complaint.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace {

constexpr int kTargetFailed = 3;
constexpr int kRunAgain = 9;

bool Tells(const std::string& told, const std::string& words) {
    return told.find(words) != std::string::npos;
}

// The system's reason, or what SQLite reports instead: that a file cannot be opened, or that it is read-only
// because SQLite could open it only for reading, or that it is locked because one process of the load could
// not release a lock. The module has no reason if it could not determine its position in a file, or if a read
// returned nothing; then the advice names possible causes.
bool TellsReason(const std::string& told) {
    const std::array<std::string, 9> reasons = {
        std::strerror(EIO),
        std::strerror(ENOSPC),
        "disk I/O error",
        "database or disk is full",
        "unable to open database file",
        "attempt to write a readonly database",
        "database is locked; another program uses the database",
        "The place in the checkpoint file could not be asked for: check its disk.",
        "it holds no checkpoint, or its disk cannot read it."};
    return std::any_of(reasons.begin(), reasons.end(),
                       [&told](const std::string& reason) { return Tells(told, reason); });
}

}  // namespace

std::string JudgeComplaint(const std::string& told, const std::string& folder, int exitCode) {
    if (exitCode != kTargetFailed && exitCode != kRunAgain) {
        return "it ended with " + std::to_string(exitCode);
    }
    // The module reports the kind of its file and not its name.
    const std::string failure = told.substr(0, told.find("\n  safe      "));
    if (!Tells(failure, folder + "/") && !Tells(failure, "\n  file      ") &&
        !Tells(failure, "\n  message   empty checkpoint file\n")) {
        return "no file is named";
    }
    if (!TellsReason(failure)) return "no reason is told";
    if (failure.size() == told.size()) return "it is not told what is safe";
    if (!Tells(told, "run the same command again")) return "it is not told what to do next";
    return "";
}
