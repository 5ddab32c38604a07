#include "tests/crash/point_run.h"

#include <cerrno>
#include <cstring>

namespace {

constexpr int kExitFailed = 9;  // of mqam: a life has failed, run the same command again

PointOutcome Fail(PointOutcome outcome, const std::string& wrong) {
    outcome.verdict = PointVerdict::kFailed;
    outcome.wrong = wrong;
    return outcome;
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
    for (const Death& death : deaths) {
        end = RunProgramToDeath(mortal, death, crashClass.victim);
        outcome.counts = end.counts;
        if (!outcome.where.empty()) outcome.where += ", then ";
        outcome.where += end.where;
        if (!end.unplanned.empty()) return Fail(outcome, end.unplanned);
        if (!end.died) break;
    }
    const bool fails = crashClass.fileKibibytesMax > 0;
    if (!end.died && end.exitCode != (fails ? kExitFailed : 0))
        return Fail(outcome, "without a death it ended with " + std::to_string(end.exitCode));
    if (end.died && !end.commandDied && end.exitCode != (goesOn ? 0 : kExitFailed))
        return Fail(outcome, "the command ended with " + std::to_string(end.exitCode));
    if (end.exitCode != 0) {
        const int code = RunProgramToEnd(load);
        if (code != 0) return Fail(outcome, "the same command ended with " + std::to_string(code));
    }
    const std::string wrong = CheckLoaded(crashClass, folder);
    if (!wrong.empty()) return Fail(outcome, wrong);
    outcome.verdict = end.died ? PointVerdict::kPassed : PointVerdict::kBeyond;
    return outcome;
}
