// SPDX-License-Identifier: Apache-2.0
#include "tests/crash/point_pool.h"

#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>

namespace {

namespace fs = std::filesystem;

struct RunningPoint {
    PointJob job;
    std::string folder;
    int outcomePipe = -1;
};

// A point's process writes this to its pipe, followed by the texts of the outcome.
struct OutcomeHead {
    PointVerdict verdict;
    CallCounts counts;
    std::size_t whereBytes;
    std::size_t wrongBytes;
};

std::string NameOf(const PointJob& job) {
    return std::string(job.crashClass->name) + ":" + DescribePoint(job.deaths);
}

[[noreturn]] void RunPointProcess(const PoolSettings& settings, const PointJob& job,
                                  const std::string& folder, int outcomePipe) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    alarm(static_cast<unsigned>(settings.secondsMax));
    const PointOutcome outcome = RunPoint(*job.crashClass, job.deaths, folder, settings.programs);
    const OutcomeHead head = {outcome.verdict, outcome.counts, outcome.where.size(), outcome.wrong.size()};
    std::string bytes(reinterpret_cast<const char*>(&head), sizeof head);
    bytes += outcome.where + outcome.wrong;
    const bool told = write(outcomePipe, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    _exit(told ? 0 : 1);
}

PointOutcome ReadOutcome(int outcomePipe, int status) {
    PointOutcome outcome;
    std::string bytes;
    char part[4096];
    for (ssize_t got = 0; (got = read(outcomePipe, part, sizeof part)) > 0;)
        bytes.append(part, static_cast<std::size_t>(got));
    close(outcomePipe);
    OutcomeHead head = {};
    if (bytes.size() >= sizeof head) std::memcpy(&head, bytes.data(), sizeof head);
    if (bytes.size() < sizeof head || bytes.size() != sizeof head + head.whereBytes + head.wrongBytes) {
        const int signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
        outcome.wrong = signal == SIGALRM ? "it took too long"
                        : signal != 0
                            ? "somebody killed the point's process, signal " + std::to_string(signal)
                            : "the point's process failed";
        return outcome;
    }
    outcome.verdict = head.verdict;
    outcome.counts = head.counts;
    outcome.where = bytes.substr(sizeof head, head.whereBytes);
    outcome.wrong = bytes.substr(sizeof head + head.whereBytes);
    return outcome;
}

RunningPoint StartPoint(const PoolSettings& settings, const PointJob& job, pid_t& process) {
    static int count = 0;
    RunningPoint point = {job, settings.workFolder + "/" + std::to_string(++count), -1};
    int ends[2];
    if (pipe(ends) != 0 || (process = fork()) < 0) {
        std::perror("crash: a point cannot be started");
        std::exit(70);
    }
    if (process == 0) {
        close(ends[0]);
        RunPointProcess(settings, job, point.folder, ends[1]);
    }
    close(ends[1]);
    point.outcomePipe = ends[0];
    return point;
}

void PutAway(const PoolSettings& settings, const RunningPoint& point, const PointOutcome& outcome) {
    std::error_code error;
    if (outcome.verdict == PointVerdict::kFailed || settings.keepsAll) {
        const std::string kept = settings.keepFolder + "/" + NameOf(point.job);
        fs::create_directories(settings.keepFolder, error);
        fs::remove_all(kept, error);
        fs::copy(point.folder, kept, fs::copy_options::recursive, error);
    }
    fs::remove_all(point.folder, error);
}

}  // namespace

void RunPool(const PoolSettings& settings, const std::function<bool(PointJob&)>& next,
             const std::function<void(const PointJob&, const PointOutcome&)>& ended) {
    std::map<pid_t, RunningPoint> running;
    for (;;) {
        PointJob job;
        while (running.size() < settings.jobs && next(job)) {
            pid_t process = 0;
            const RunningPoint point = StartPoint(settings, job, process);
            running[process] = point;
        }
        if (running.empty()) return;
        int status = 0;
        const pid_t process = waitpid(-1, &status, 0);
        const auto found = running.find(process);
        if (found == running.end()) continue;
        const RunningPoint point = found->second;
        running.erase(found);
        const PointOutcome outcome = ReadOutcome(point.outcomePipe, status);
        PutAway(settings, point, outcome);
        ended(point.job, outcome);
    }
}
