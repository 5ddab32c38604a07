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

// The system's words, or those that SQLite has for the same: of a file that cannot be opened it says so, or
// opens it for reading alone, and a lock that one process of the load could not give back keeps out the
// other. The module has no reason for a place in its file that it could not ask for, and none for a file of
// which no byte came: the advice says what it may be.
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
    // The module tells the kind of its file and not its name.
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
