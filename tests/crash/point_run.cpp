// SPDX-License-Identifier: Apache-2.0
#include "tests/crash/point_run.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

#include "tests/crash/complaint.h"

namespace {

constexpr int kExitNothingToDo = 11;  // exit code of mqam: the load was complete before the command
constexpr int kExitFailed = 9;        // exit code of mqam: an attempt has failed and can be repeated

PointOutcome Fail(PointOutcome outcome, const std::string& wrong) {
    outcome.verdict = PointVerdict::kFailed;
    outcome.wrong = wrong;
    return outcome;
}

std::string ReadConsole(const ProgramOrder& order) {
    std::ifstream file(order.console, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Returns what is wrong with the command's reaction to the failed call, or an empty string.
std::string JudgeFailedCall(const CrashClass& crashClass, const std::string& folder, const std::string& told,
                            int exitCode) {
    if (exitCode != 0) return JudgeComplaint(told, folder + "/load", exitCode);
    const std::string wrong = CheckTarget(crashClass, folder);
    return wrong.empty() ? "" : "it says that it is done, but " + wrong;
}

}  // namespace

PointOutcome RunPoint(const CrashClass& crashClass, const std::vector<Death>& deaths,
                      const std::string& folder, const Programs& programs) {
    PointOutcome outcome;
    if (!MakeTrial(crashClass, folder))
        return Fail(outcome, std::string("no trial: ") + std::strerror(errno));

    std::vector<Death> prelude;
    if (*crashClass.prelude != '\0') {
        if (!ParsePoint(crashClass.prelude, prelude)) return Fail(outcome, "the class has no such prelude");
        const ProgramOrder first =
            ComposeLoad(crashClass, folder, programs, crashClass.preludeCheckpointEvery, false);
        for (const Death& death : prelude) {
            if (!RunProgramToDeath(first, death, Victim::kCommand).died) {
                return Fail(outcome, "the prelude did not die");
            }
        }
    }

    const bool goesOn = crashClass.victim == Victim::kWorker;
    const ProgramOrder load = ComposeLoad(crashClass, folder, programs, crashClass.checkpointEvery, goesOn);
    ProgramOrder mortal = load;
    mortal.fileKibibytesMax = crashClass.fileKibibytesMax;
    TracedEnd end;
    std::size_t toldBefore = 0;
    for (const Death& death : deaths) {
        toldBefore = ReadConsole(load).size();
        std::optional<SyncedTree> synced;
        if (crashClass.cut != PowerCut::kNone) synced.emplace(load.ownFolder, load.storeFolder);
        mortal.synced = synced ? &*synced : nullptr;
        end = RunProgramToDeath(mortal, death, crashClass.victim);
        if (synced && end.died) synced->Cut(crashClass.cut, death.number);
        outcome.counts = end.counts;
        if (!outcome.where.empty()) outcome.where += ", then ";
        outcome.where += end.where;
        if (!end.unplanned.empty()) return Fail(outcome, end.unplanned);
        if (!end.came) break;
    }
    const bool fails = crashClass.fileKibibytesMax > 0;
    // A death at the end of a load that was complete leaves nothing to do, so a second death does not come.
    const bool wasComplete = deaths.size() > 1 && end.exitCode == kExitNothingToDo;
    if (!end.came && !wasComplete && end.exitCode != (fails ? kExitFailed : 0))
        return Fail(outcome, "without a death it ended with " + std::to_string(end.exitCode));
    if (end.died && !end.commandDied && end.exitCode != (goesOn ? 0 : kExitFailed))
        return Fail(outcome, "the command ended with " + std::to_string(end.exitCode));
    const bool callFailed = end.came && !end.died;
    if (callFailed) {
        const std::string told = ReadConsole(load).substr(toldBefore);
        const std::string wrong = JudgeFailedCall(crashClass, folder, told, end.exitCode);
        if (!wrong.empty()) return Fail(outcome, wrong);
    }
    // After a failed call the command runs again even if the load was done, because it may have left a file.
    if ((end.exitCode != 0 && !wasComplete) || callFailed) {
        const int code = RunProgramToEnd(load);
        if (code != 0 && code != kExitNothingToDo)
            return Fail(outcome, "the same command ended with " + std::to_string(code));
    }
    const std::string wrong = CheckLoaded(crashClass, folder);
    if (!wrong.empty()) return Fail(outcome, wrong);
    outcome.verdict = end.came ? PointVerdict::kPassed : PointVerdict::kBeyond;
    return outcome;
}
