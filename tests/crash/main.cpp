// SPDX-License-Identifier: Apache-2.0

// crash_points: kills loads at every point where a crash could matter, runs the same command again, and
// checks that every message is in the target exactly once. scripts/crash runs it.
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "tests/crash/series.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kJobsByDefault = 64;
constexpr std::uint64_t kProgressEvery = 1000;

struct Options {
    bool sampleOnly = false;
    bool lists = false;
    std::vector<const CrashClass*> classes;
    std::vector<PointJob> only;
    PoolSettings pool;
};

[[noreturn]] void Refuse(const std::string& words) {
    std::fprintf(stderr,
                 "crash: %s\n"
                 "usage: [--smoke] [--class NAME]... [--only CLASS:POINT]... [--jobs N] [--bin FOLDER] "
                 "[--keep-all] [--list]\n",
                 words.c_str());
    std::exit(2);
}

PointJob ParseOnly(const std::string& text) {
    PointJob job;
    const std::size_t colon = text.find(':');
    job.crashClass = FindCrashClass(text.substr(0, colon));
    if (job.crashClass == nullptr || colon == std::string::npos) Refuse("no class of that name: " + text);
    if (!ParsePoint(text.substr(colon + 1), job.deaths)) Refuse("no point of that name: " + text);
    return job;
}

Options ReadOptions(int count, char** arguments) {
    Options options;
    options.pool.programs = {CRASH_MQAM, CRASH_MQ_LIBRARY};
    options.pool.jobs = kJobsByDefault;
    options.pool.keepFolder = std::filesystem::absolute("out/crash");
    for (int i = 1; i < count; ++i) {
        const std::string option = arguments[i];
        const auto value = [&]() -> std::string {
            if (i + 1 == count) Refuse(option + " needs a value");
            return arguments[++i];
        };
        if (option == "--smoke") {
            options.sampleOnly = true;
        } else if (option == "--list") {
            options.lists = true;
        } else if (option == "--keep-all") {
            options.pool.keepsAll = true;
        } else if (option == "--bin") {
            const std::string folder = std::filesystem::absolute(value());
            options.pool.programs = {folder + "/mqam", folder + "/spoolmq/libmqm_r.so"};
        } else if (option == "--jobs") {
            options.pool.jobs = static_cast<std::size_t>(std::max(1, std::atoi(value().c_str())));
        } else if (option == "--class") {
            const std::string name = value();
            options.classes.push_back(FindCrashClass(name));
            if (options.classes.back() == nullptr) Refuse("no class of that name: " + name);
        } else if (option == "--only") {
            options.only.push_back(ParseOnly(value()));
        } else {
            Refuse("no such option: " + option);
        }
    }
    if (options.classes.empty()) {
        for (const CrashClass& one : CrashClasses())
            options.classes.push_back(&one);
    }
    return options;
}

std::string MakeWorkDirectory() {
    // In shared memory, syncing takes no time. No test here simulates a power failure, so none needs a disk.
    std::string folder =
        access("/dev/shm", W_OK) == 0 ? "/dev/shm" : std::filesystem::temp_directory_path().string();
    folder += "/mqamod-crash.XXXXXX";
    if (mkdtemp(folder.data()) == nullptr) {
        std::perror("crash: no directory to work in");
        std::exit(70);
    }
    return folder;
}

void TellOutcome(const PointJob& job, const PointOutcome& outcome, bool all) {
    const bool failed = outcome.verdict == PointVerdict::kFailed;
    if (!failed && !all) return;
    const char* verdict = failed                                     ? "FAILED"
                          : outcome.verdict == PointVerdict::kPassed ? "passed"
                                                                     : "no such point";
    std::printf("%s %s:%s%s%s%s\n", verdict, job.crashClass->name, DescribePoint(job.deaths).c_str(),
                outcome.where.empty() ? "" : (" at " + outcome.where).c_str(), failed ? ": " : "",
                outcome.wrong.c_str());
    std::fflush(stdout);
}

double SecondsSince(Clock::time_point begin) {
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

// Returns the number of points that failed or do not exist.
std::uint64_t RunOnly(const Options& options) {
    std::size_t index = 0;
    std::uint64_t failures = 0;
    RunPool(
        options.pool,
        [&](PointJob& job) {
            if (index == options.only.size()) return false;
            job = options.only[index++];
            return true;
        },
        [&](const PointJob& job, const PointOutcome& outcome) {
            TellOutcome(job, outcome, true);
            if (outcome.verdict != PointVerdict::kPassed) ++failures;
        });
    return failures;
}

std::uint64_t RunAll(const Options& options) {
    const Clock::time_point begin = Clock::now();
    std::uint64_t runs = 0;
    PlanSeries(options.classes, options.sampleOnly);
    RunPool(options.pool, NextJob, [&](const PointJob& job, const PointOutcome& outcome) {
        TellOutcome(job, outcome, false);
        NoteOutcome(job, outcome);
        if (++runs % kProgressEvery == 0) {
            std::fprintf(stderr, "crash: %llu runs in %.0f s, now %s\n",
                         static_cast<unsigned long long>(runs), SecondsSince(begin), job.crashClass->name);
        }
    });
    ClassTally sum;
    std::printf("%-24s %8s %8s\n", "class", "points", "failures");
    for (const CrashClass* one : options.classes) {
        const ClassTally& tally = Tallies().at(one->name);
        std::printf("%-24s %8llu %8llu   %s\n", one->name, static_cast<unsigned long long>(tally.points),
                    static_cast<unsigned long long>(tally.failures), one->what);
        sum.points += tally.points;
        sum.failures += tally.failures;
    }
    std::printf("crash: %llu points, %llu failures, %.0f s\n", static_cast<unsigned long long>(sum.points),
                static_cast<unsigned long long>(sum.failures), SecondsSince(begin));
    const std::vector<std::string> gaps = DescribeGaps();
    for (const std::string& gap : gaps)
        std::printf("crash: %s\n", gap.c_str());
    return sum.failures + gaps.size();
}

}  // namespace

int main(int count, char** arguments) {
    Options options = ReadOptions(count, arguments);
    if (options.lists) {
        for (const CrashClass& one : CrashClasses())
            std::printf("%-24s %s\n", one.name, one.what);
        return 0;
    }
    options.pool.workFolder = MakeWorkDirectory();
    const std::uint64_t failures = options.only.empty() ? RunAll(options) : RunOnly(options);
    std::error_code error;
    std::filesystem::remove_all(options.pool.workFolder, error);
    if (failures > 0) {
        std::printf("crash: what failed is kept in %s, the console of each in console\n",
                    options.pool.keepFolder.c_str());
    }
    return failures > 0 ? 1 : 0;
}
