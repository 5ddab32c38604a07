// SPDX-License-Identifier: Apache-2.0

// Kills the worker process of a load before and after each MQI call that it makes, by the stand-in's fault
// plan; the same command must then finish the load. The test is for systems without a tracer, on which no
// other point can be reached. Many loads run at the same time, each in a directory of its own. CRASH_MESSAGES
// sets the number of messages for longer loads.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <thread>

#include "tests/support/program_runner.h"
#include "tests/support/test_directory.h"

namespace {

namespace fs = std::filesystem;

constexpr int kLoadsAtOnce = 12;
constexpr int kRunSecondsMax = 100;
constexpr int kExitRestart = 9;
constexpr int kExitNothingToDo = 11;
// Under load, Wine sometimes does not start a program, or a program hangs at its exit. Such a point is run
// again.
constexpr int kTriesMax = 3;

enum class Verdict { kPassed, kBeyond, kFailed, kNotRun };

int MessageCount() {
    const char* const asked = std::getenv("CRASH_MESSAGES");
    return asked != nullptr ? std::max(1, std::atoi(asked)) : 6;
}

std::string ComposeMessage(int index) {
    std::string bytes = std::to_string(index) + ":";
    for (int i = 0; i < index * 37 % 300; ++i)
        bytes += static_cast<char>(index * 31 + i * 7);
    return bytes;
}

std::string ComposeExpected() {
    std::string bytes;
    for (int index = 1; index <= MessageCount(); ++index) {
        const std::string message = ComposeMessage(index);
        for (int shift = 0; shift < 32; shift += 8)
            bytes += static_cast<char>(message.size() >> shift & 0xFF);
        bytes += message;
    }
    return bytes;
}

// Returns the numbers with which the records begin, in order.
std::string NameRecords(const std::string& bytes) {
    std::string names;
    for (std::size_t begin = 0; begin + 4 <= bytes.size();) {
        std::size_t length = 0;
        for (std::size_t i = 4; i > 0; --i)
            length = length << 8 | static_cast<unsigned char>(bytes[begin + i - 1]);
        const std::string record = bytes.substr(begin + 4, length);
        names += record.substr(0, record.find(':')) + " (" + std::to_string(record.size()) + " bytes) ";
        begin += 4 + length;
    }
    return names;
}

// This mutex is held while a program starts and while a file of a load is open here. A program inherits the
// environment of this process and every open file, and the stand-in does not accept an open file as a message
// or as a plan.
std::mutex& StartOrOpen() {
    static std::mutex mutex;
    return mutex;
}

struct Point {
    std::string plan;
    bool inSecondLife = false;
    Verdict verdict = Verdict::kNotRun;
    std::string wrong;
};

class PointLoad {
  public:
    PointLoad() {
        fs::create_directories(Queue());
        const std::lock_guard<std::mutex> guard(StartOrOpen());
        for (int index = 1; index <= MessageCount(); ++index) {
            char name[64];
            std::snprintf(name, sizeof name, "20260101-000000-%09d.msg", index);
            std::ofstream(Queue() / name, std::ios::binary) << ComposeMessage(index);
        }
    }

    // Runs the load until it is killed, then to its end.
    void Run(Point& point) {
        WritePlan(point.inSecondLife ? "" : point.plan);
        const ProgramResult first = RunLoad(point.inSecondLife ? point.plan : "");
        if (first.exitCode == -1) return;
        if (first.exitCode != 0 && first.exitCode != kExitRestart) {
            point.verdict = Verdict::kFailed;
            point.wrong = told_;
            return;
        }
        WritePlan("");
        if (first.exitCode == kExitRestart) {
            const ProgramResult second = RunLoad("");
            if (second.exitCode == -1) return;
            if (second.exitCode != 0 && second.exitCode != kExitNothingToDo) {
                point.verdict = Verdict::kFailed;
                point.wrong = told_;
                return;
            }
        }
        point.wrong = FindWrong();
        if (!point.wrong.empty()) point.wrong += told_;
        const Verdict good = first.exitCode == 0 ? Verdict::kBeyond : Verdict::kPassed;
        point.verdict = point.wrong.empty() ? good : Verdict::kFailed;
    }

  private:
    [[nodiscard]] fs::path Queue() const { return fs::path(folder_.Path("spool")) / "QM1" / "Q1"; }

    void WritePlan(const std::string& plan) const {
        const std::lock_guard<std::mutex> guard(StartOrOpen());
        std::ofstream(folder_.Path("faults")) << plan;
    }

    // Returns whether no message is on the queue. Opens no file of it, because the load may need it.
    [[nodiscard]] bool IsQueueEmpty() const {
        std::error_code error;
        const fs::directory_iterator names(Queue(), error);
        return !error && std::none_of(fs::begin(names), fs::end(names), [](const fs::directory_entry& entry) {
            return entry.path().extension() == ".msg";
        });
    }

    // Returns whether a message is left anywhere in the queue manager's directory. If that cannot be read,
    // because a load is just deleting part of it, a message counts as left.
    [[nodiscard]] bool IsMessageLeft() const {
        std::error_code error;
        fs::recursive_directory_iterator name(folder_.Path("spool"), error);
        for (; !error && name != fs::recursive_directory_iterator(); name.increment(error)) {
            if (name->path().extension() == ".msg") return true;
        }
        return static_cast<bool>(error);
    }

    // Runs the load to its end and writes the plan for its second attempt in time. An attempt reads the plan
    // when it connects, and the first attempt waits for at least a second after the queue has become empty.
    [[nodiscard]] ProgramResult RunLoad(const std::string& planOfSecondLife) {
        RunningProgram load = Start();
        if (!planOfSecondLife.empty()) {
            const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(kRunSecondsMax);
            while (!IsQueueEmpty() && std::chrono::steady_clock::now() < limit)
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
            WritePlan(planOfSecondLife);
        }
        ProgramResult result = load.Wait(kRunSecondsMax);
        // Under Wine, a program that did not start may seem to have ended successfully, or its worker may not
        // have been started.
        const auto tells = [&result](const char* text) {
            return result.standardError.find(text) != std::string::npos;
        };
        if ((result.exitCode == 0 && !tells("the load is done")) || tells("cannot be started")) {
            result.exitCode = -1;
        }
        told_ += "ended with " + std::to_string(result.exitCode) + ": " + result.standardError;
        return result;
    }

    [[nodiscard]] RunningProgram Start() const {
        const std::lock_guard<std::mutex> guard(StartOrOpen());
        return {MQAM_PROGRAM,
                {"load", "--qmgr", "QM1", "--queue", "Q1", "--rwait", "1", "--ckfile", folder_.Path("ck"),
                 "--checkpoint-every", "2", "--format", "length", "--restart-file", folder_.Path("restart"),
                 "--to", folder_.Path("out")},
                {{"SPOOLMQ_DIR", folder_.Path("spool")},
                 {"SPOOLMQ_FAULT_FILE", folder_.Path("faults")},
                 {"MQAMOD_MQ_LIBRARY", SPOOLMQ_LIBRARY}},
                folder_.Root()};
    }

    [[nodiscard]] std::string FindWrong() const {
        std::string wrong;
        const std::string loaded = ReadFileIfAny(folder_.Path("out"));
        if (loaded != ComposeExpected()) {
            wrong += "the target has the records " + NameRecords(loaded) + "; ";
        }
        if (IsMessageLeft()) wrong += "messages are left; ";
        for (const fs::directory_entry& entry : fs::directory_iterator(folder_.Root())) {
            const std::string name = entry.path().filename().string();
            if (name.starts_with("ck") || name.starts_with("MQAMtmp") || name == "restart.new") {
                wrong += name + " is left; ";
            }
        }
        return wrong;
    }

    TestDirectory folder_;
    std::string told_;  // what each run printed, and how it ended
};

void RunPoint(Point& point) {
    for (int attempt = 0; attempt < kTriesMax && point.verdict == Verdict::kNotRun; ++attempt) {
        PointLoad load;
        load.Run(point);
    }
}

void RunPoints(std::vector<Point>& points) {
    std::atomic<std::size_t> next = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < kLoadsAtOnce; ++i) {
        threads.emplace_back([&] {
            for (std::size_t index = 0; (index = next++) < points.size();)
                RunPoint(points[index]);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

struct VerbCalls {
    const char* verb;
    int calls;  // the least number of such calls that the attempt makes
};

// Kills the load before and after each call of the verbs. For a verb with several calls the test tries a few
// more than expected, because a wait that is split takes another MQGET.
void KillAroundEach(const std::vector<VerbCalls>& verbs, bool inSecondLife) {
    constexpr int kMoreCalls = 2;
    std::vector<Point> points;
    std::vector<bool> isCertain;
    for (const VerbCalls& row : verbs) {
        const int most = row.calls > 1 ? row.calls + kMoreCalls : row.calls;
        for (int call = 1; call <= most; ++call) {
            for (const char* moment : {"before", "after"}) {
                Point point;
                point.plan = row.verb + (" " + std::to_string(call)) + " kill " + moment;
                point.inSecondLife = inSecondLife;
                points.push_back(point);
                isCertain.push_back(call <= row.calls);
            }
        }
    }
    RunPoints(points);
    int passed = 0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Point& point = points[i];
        const bool asExpected =
            point.verdict == Verdict::kPassed || (point.verdict == Verdict::kBeyond && !isCertain[i]);
        EXPECT_TRUE(asExpected) << point.plan << (inSecondLife ? " in the second life: " : ": ")
                                << (point.verdict == Verdict::kBeyond   ? "it did not die"
                                    : point.verdict == Verdict::kNotRun ? "it could not be run"
                                                                        : point.wrong);
        if (point.verdict == Verdict::kPassed) ++passed;
    }
    std::printf("%d points passed\n", passed);
}

TEST(MqiCrashTest, AroundTheGetsOfALoad) {
    KillAroundEach({{"MQGET", MessageCount() + 1}}, false);
}

// Records that are read before the first checkpoint is carried out are got under syncpoint, too.
TEST(MqiCrashTest, AroundTheCommitsOfALoad) {
    KillAroundEach({{"MQCMIT", MessageCount()}}, false);
}

TEST(MqiCrashTest, AroundConnectOpenCloseAndDisconnect) {
    KillAroundEach({{"MQCONNX", 1}, {"MQOPEN", 1}, {"MQCLOSE", 1}, {"MQDISC", 1}}, false);
}

TEST(MqiCrashTest, InTheLifeThatFindsTheQueueEmpty) {
    KillAroundEach({{"MQCONNX", 1}, {"MQOPEN", 1}, {"MQGET", 1}, {"MQCLOSE", 1}, {"MQDISC", 1}}, true);
}

}  // namespace
