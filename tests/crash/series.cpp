// SPDX-License-Identifier: Apache-2.0
#include "tests/crash/series.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <set>

namespace {

// A series continues this far beyond the counted end, because the thread that writes the target's buffer when
// no record arrives does not make the same number of calls in each run.
constexpr std::uint64_t kBeyondCount = 2;

enum class Stage { kToCount, kCounting, kRunning, kOver };

struct Series {
    const CrashClass* crashClass = nullptr;
    std::string name;           // the name that the class gives the series
    std::vector<Death> deaths;  // the number of the last one varies
    bool firstVaries = false;   // of a pair: the first number varies, too, and each value makes a series
    Stage stage = Stage::kToCount;
    std::uint64_t limit = 0;  // numbers up to this one are tried
    std::uint64_t next = 1;
    std::vector<std::uint64_t> sample;  // if not empty, only these numbers, from the last to the first
};

struct SeriesPlan {
    std::vector<Series> series;
    bool sampleOnly = false;
    std::map<std::string, ClassTally> tallies;
};

SeriesPlan& Plan() {
    static SeriesPlan plan;
    return plan;
}

std::uint64_t CountFor(const Death& death, const CallCounts& counts) {
    const auto scope = static_cast<std::size_t>(death.scope);
    return IsCut(death.moment) ? counts.writes[scope] : counts.calls[scope];
}

// MQI calls are not counted in advance. Every message is got and committed; every other call happens once or
// twice.
std::uint64_t GuessMqiCalls(const CrashClass& crashClass, const Death& death) {
    const bool isOfMessages = death.life == 1 && (death.verb == "MQGET" || death.verb == "MQCMIT");
    return isOfMessages ? static_cast<std::uint64_t>(crashClass.messages) : 1;
}

void StartSeries(Series& series, std::uint64_t count) {
    series.stage = Stage::kRunning;
    series.limit = count + kBeyondCount;
    if (!Plan().sampleOnly || series.firstVaries) return;
    const auto wanted = static_cast<std::uint64_t>(series.crashClass->smokePoints);
    std::set<std::uint64_t> numbers;
    for (std::uint64_t i = 0; i < wanted; ++i)
        numbers.insert(1 + i * count / wanted);
    series.sample.assign(numbers.rbegin(), numbers.rend());
}

// Makes a series of each number that the first kill of a pair can have, or of a sample of them.
void SpreadPairs(const Series& pairs, std::uint64_t firstCount) {
    SeriesPlan& plan = Plan();
    const Series from = pairs;  // a copy, because the list may move
    const auto wanted = static_cast<std::uint64_t>(from.crashClass->smokePoints);
    std::minstd_rand random(1);
    const std::uint64_t steps = plan.sampleOnly ? std::min(wanted, firstCount) : firstCount;
    for (std::uint64_t i = 0; i < steps; ++i) {
        Series one = from;
        one.firstVaries = false;
        one.deaths.front().number = plan.sampleOnly ? 1 + i * firstCount / steps : i + 1;
        one.stage = Stage::kToCount;
        if (plan.sampleOnly) {
            const std::uint64_t left = std::max<std::uint64_t>(8, firstCount - one.deaths.front().number);
            const bool secondIsMqi = one.deaths.back().scope == DeathScope::kMqi;
            one.sample = {secondIsMqi ? 1 : 1 + random() % left};
            one.stage = Stage::kRunning;
        }
        plan.series.push_back(one);
    }
}

bool TakeNumber(Series& series, std::uint64_t& number) {
    if (Plan().sampleOnly) {
        if (series.sample.empty()) return false;
        number = series.sample.back();
        series.sample.pop_back();
        return true;
    }
    if (series.next > series.limit) return false;
    number = series.next++;
    return true;
}

bool NextOfSeries(std::size_t index, PointJob& job) {
    Series& series = Plan().series[index];
    job = {series.crashClass, series.deaths, index};
    switch (series.stage) {
        case Stage::kToCount:
            if (series.firstVaries && job.deaths.front().scope == DeathScope::kMqi) {
                series.stage = Stage::kOver;
                SpreadPairs(series, GuessMqiCalls(*series.crashClass, job.deaths.front()));
                return false;
            }
            if (job.deaths.back().scope == DeathScope::kMqi && !series.firstVaries) {
                StartSeries(series, GuessMqiCalls(*series.crashClass, job.deaths.back()));
                return NextOfSeries(index, job);
            }
            series.stage = Stage::kCounting;
            if (series.firstVaries) job.deaths.pop_back();
            job.deaths.back().number = 0;
            return true;
        case Stage::kRunning:
            if (TakeNumber(series, job.deaths.back().number)) return true;
            break;
        case Stage::kCounting:
        case Stage::kOver: break;
    }
    return false;
}

}  // namespace

void PlanSeries(const std::vector<const CrashClass*>& classes, bool sampleOnly) {
    Plan().sampleOnly = sampleOnly;
    for (const CrashClass* one : classes) {
        for (const std::string text : one->series) {
            Series series;
            series.crashClass = one;
            series.name = text;
            Plan().tallies[one->name].pointsOfSeries[text] = 0;
            const std::size_t plus = text.find('+');
            series.firstVaries = plus != std::string::npos;
            const std::string numbered =
                series.firstVaries ? text.substr(0, plus) + "-1" + text.substr(plus) : text;
            if (!ParsePoint(numbered + "-1", series.deaths)) {
                std::fprintf(stderr, "crash: class %s has no such series: %s\n", one->name, text.c_str());
                std::exit(70);
            }
            Plan().series.push_back(series);
        }
    }
}

bool NextJob(PointJob& job) {
    for (std::size_t index = 0; index < Plan().series.size(); ++index) {
        if (NextOfSeries(index, job)) return true;
    }
    return false;
}

void NoteOutcome(const PointJob& job, const PointOutcome& outcome) {
    Series& series = Plan().series[job.series];
    ClassTally& tally = Plan().tallies[job.crashClass->name];
    const std::uint64_t number = job.deaths.back().number;
    const bool counted = number == 0;
    if (outcome.verdict == PointVerdict::kFailed) {
        ++tally.failures;
    } else if (outcome.verdict == PointVerdict::kBeyond) {
        ++tally.counting;
    }
    if (counted) {
        const std::uint64_t count = CountFor(job.deaths.back(), outcome.counts);
        if (series.firstVaries) {
            series.stage = Stage::kOver;
            SpreadPairs(series, count);
        } else {
            StartSeries(series, count);
        }
        return;
    }
    if (outcome.verdict != PointVerdict::kBeyond) {
        ++tally.points;
        ++tally.pointsOfSeries[series.name];
        const std::string file = job.crashClass->touches;
        tally.touched = tally.touched || (!file.empty() && outcome.where.find(file) != std::string::npos);
    }
    if (outcome.verdict == PointVerdict::kPassed && number == series.limit) ++series.limit;
}

const std::map<std::string, ClassTally>& Tallies() {
    return Plan().tallies;
}

std::vector<std::string> DescribeGaps() {
    std::vector<std::string> gaps;
    for (const auto& [name, tally] : Plan().tallies) {
        for (const auto& [series, points] : tally.pointsOfSeries) {
            if (points == 0) gaps.push_back(name + ": no load died at " + series);
        }
        const std::string file = FindCrashClass(name)->touches;
        if (!Plan().sampleOnly && !file.empty() && !tally.touched)
            gaps.push_back(name + ": no load died at a call on " + file);
    }
    return gaps;
}
