// SPDX-License-Identifier: Apache-2.0

// Checks the requests that the attempts of a load make of the module, in order, as the module's trace shows
// them: the command must keep those rules of docs/hosts.md that are about calls.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "tests/e2e/load_site.h"
#include "tests/support/checkpoint_bytes.h"
#include "tests/support/test_directory.h"

namespace {

using Attempts = std::vector<std::string>;

// The attributes are the handle of the host's log and TIMEOUT_SECONDS.
constexpr char kBegin[] = "Init Preserve Attribute Attribute Open ";

// Returns the text between two others in a line, or "" if the line does not contain them.
std::string Between(const std::string& line, const std::string& before, const std::string& after) {
    const std::size_t at = line.find(before);
    if (at == std::string::npos) return "";
    const std::size_t from = at + before.size();
    const std::size_t end = line.find(after, from);
    return end == std::string::npos ? "" : line.substr(from, end - from);
}

// Returns the path of a trace next to the load's directory, which may contain only the load's files.
std::string TraceOf(const LoadSite& site) {
    return site.Folder() + ".trace";
}

// Describes an attempt by its requests: "Init Open Read Read:9 Close", each with its return code unless that
// is 0, and with "!" if the process died in it.
Attempts AttemptsOf(const LoadSite& site) {
    Attempts attempts;
    std::string request;
    std::istringstream lines(ReadFileIfAny(TraceOf(site)));
    const auto end = [&](const std::string& how) {
        if (!request.empty()) attempts.back() += request + how + " ";
        request.clear();
    };
    for (std::string line; std::getline(lines, line);) {
        if (line.find("Paramters in effect:") != std::string::npos) {
            end("!");
            attempts.emplace_back();
            request = "Init";
        }
        const std::string entered = Between(line, "entered for option '", "'");
        if (!entered.empty()) request = entered == "PutAttribute" ? "Attribute" : entered;
        if (line.find("Checkpoint resources will be preserved") != std::string::npos) request = "Preserve";
        const std::string code = Between(line + "\n", "Returning to Hostlink, rc=", "\n");
        if (!code.empty())
            end(std::atoi(code.c_str()) == 0 ? "" : ":" + std::to_string(std::atoi(code.c_str())));
    }
    end("!");
    for (std::string& attempt : attempts)
        if (attempt.ends_with(" ")) attempt.pop_back();
    return attempts;
}

class RestartCalls : public testing::Test {
  protected:
    LoadSite& Add(const std::string& name, int messages, const std::string& faults = "") {
        sites_.push_back(std::make_unique<LoadSite>(folder_.Root(), name));
        LoadSite& site = *sites_.back();
        site.Put(messages);
        site.PlanFaults(faults);
        return site;
    }
    static LoadSite::Arguments Traced(const LoadSite& site) { return {"--trace", "2", TraceOf(site)}; }
    // Starts all loads, then waits for all of them.
    void RunTraced() {
        for (const auto& site : sites_)
            site->Start(Traced(*site));
        for (const auto& site : sites_)
            site->Wait();
    }
    static Attempts Expected(const Attempts& afterBegin) {
        Attempts attempts;
        for (const std::string& attempt : afterBegin)
            attempts.push_back(kBegin + attempt);
        return attempts;
    }

    TestDirectory folder_;
    std::vector<std::unique_ptr<LoadSite>> sites_;
};

TEST_F(RestartCalls, H1_H13_EveryAttemptOpensOnceKeepsTheFileAndTakesAPositionBeforeItReads) {
    LoadSite& some = Add("some", 8);
    LoadSite& even = Add("even", 6);
    LoadSite& none = Add("none", 0);
    RunTraced();
    for (const auto& site : sites_)
        EXPECT_EQ(site->Result().exitCode, 0) << site->Error();
    EXPECT_EQ(AttemptsOf(some),
              Expected({"GetPos Read Read Read GetPos Read Read Read GetPos Read Read Read:9 Close",
                        "SetPos Read Read Read GetPos Read:9 Close"}));
    EXPECT_EQ(AttemptsOf(even), Expected({"GetPos Read Read Read GetPos Read Read Read GetPos Read:9 Close",
                                          "SetPos Read GetPos Read:9 Close"}));
    EXPECT_EQ(AttemptsOf(none), Expected({"GetPos Read:9 Close", "GetPos Read:9 Close"}));
}

TEST_F(RestartCalls, H5_AfterADeathTheWholeFileIsReadAndThenOnePositionTakenBeforeTheQueueIsRead) {
    LoadSite& site = Add("site", 8, "MQCMIT 5 kill before");
    site.Run(Traced(site));
    site.PlanFaults("");
    site.Run(Traced(site));
    EXPECT_EQ(site.Result().exitCode, 0) << site.Error();
    // The redelivered message ends the second attempt. Close removes it from the queue.
    EXPECT_EQ(AttemptsOf(site), Expected({"GetPos Read Read Read GetPos Read Read!",
                                          "SetPos Read Read Read GetPos Read:9 Close",
                                          "SetPos Read GetPos Read Read Read GetPos Read:9 Close",
                                          "SetPos Read GetPos Read:9 Close"}));
}

TEST_F(RestartCalls, H9_H11_AFailedReadIsTheLastRequestOfItsAttempt) {
    LoadSite& commit = Add("commit", 8, "MQCMIT 5 fail 2 2009");
    LoadSite& warning = Add("warning", 8, "MQGET 2 warn 2119");
    RunTraced();
    EXPECT_EQ(AttemptsOf(commit), Expected({"GetPos Read Read Read GetPos Read Read:34"})) << commit.Error();
    EXPECT_EQ(AttemptsOf(warning), Expected({"GetPos Read Read:34"})) << warning.Error();
    for (LoadSite* site : {&commit, &warning}) {
        site->PlanFaults("");
        site->Start();
    }
    for (LoadSite* site : {&commit, &warning}) {
        site->Wait();
        EXPECT_TRUE(site->IsDone());
    }
}

TEST_F(RestartCalls, H12_AfterTheTimeOutNothingIsRead) {
    LoadSite& site = Add("site", 2);
    site.Set("--rwait", "-1");
    LoadSite::Arguments more = Traced(site);
    more.insert(more.end(), {"--attribute", "TIMEOUT_SECONDS=2"});
    site.Run(more);
    EXPECT_EQ(site.Result().exitCode, 6) << site.Error();
    const Attempts attempts = AttemptsOf(site);
    ASSERT_EQ(attempts.size(), 1U);
    EXPECT_TRUE(attempts[0].ends_with("Open GetPos Read Read Read:55 Close")) << attempts[0];
}

// The module is not asked to watch the time: the process ends in the Read.
TEST_F(RestartCalls, TheTimeOutOfTheCommandEndsTheProcess) {
    LoadSite& site = Add("site", 2);
    site.Set("--rwait", "600");
    LoadSite::Arguments more = Traced(site);
    more.insert(more.end(), {"--timeout", "1"});
    site.Run(more);
    EXPECT_EQ(site.Result().exitCode, 6) << site.Error();
    EXPECT_TRUE(Contains(site.Error(), "mqam load: the time-out (--timeout) expired\n")) << site.Error();
    EXPECT_EQ(AttemptsOf(site), Expected({"GetPos Read Read Read!"}));
}

TEST_F(RestartCalls, H15_ARecordOfNoBytesInTheCheckpointFileIsPassedOver) {
    LoadSite& site = Add("site", 8, "MQCMIT 5 kill after");
    site.LeaveOutJournal();
    ASSERT_EQ(site.Run().exitCode, 9) << site.Error();
    const std::vector<std::string>& messages = site.Messages();
    ASSERT_EQ(ReadFileIfAny(site.CheckpointFile()),
              CheckpointBytes(2, {messages[2], messages[3], messages[4]}));
    // Only a rewrite during a replay puts one, and only as the first record; anywhere else it is damage.
    WriteBytesTo(site.CheckpointFile(), CheckpointBytes(2, {messages[2], messages[3], "", messages[4]}));
    site.PlanFaults("");
    EXPECT_EQ(site.Run().exitCode, 1) << site.Error();
    WriteBytesTo(site.CheckpointFile(), CheckpointBytes(2, {"", messages[2], messages[3], messages[4]}));
    const ProgramResult verified = RunProgram(
        MQAM_PROGRAM, {"checkpoint", "verify", site.CheckpointFile(), "--restart-file", site.RestartFile()},
        site.Folder());
    EXPECT_EQ(verified.exitCode, 0) << verified.standardOutput << verified.standardError;
    site.Run();
    EXPECT_TRUE(site.IsDone());
}

TEST_F(RestartCalls, H21_EveryAttemptOpensExclusivelyAndEndsAtADuplicate) {
    LoadSite& site = Add("site", 2);
    site.Run(Traced(site));
    EXPECT_TRUE(site.IsDone());
    const std::string trace = ReadFileIfAny(TraceOf(site));
    EXPECT_EQ(CountOf(trace, "Queue open: EXCLUSIVE."), 2);
    EXPECT_EQ(CountOf(trace, "Terminate on duplicate message: yes"), 2);
}

TEST_F(RestartCalls, H23_ACloseThatFailsIsNotTheEndOfTheLoad) {
    LoadSite& disconnect = Add("disconnect", 4, "MQDISC 1 fail 2 2009");
    LoadSite& close = Add("close", 4, "MQCLOSE 1 fail 2 2009");
    RunTraced();
    for (const auto& site : sites_) {
        EXPECT_EQ(site->Result().exitCode, 9) << site->Error();
        EXPECT_EQ(site->Stored("phase"), "loading");
        EXPECT_TRUE(AttemptsOf(*site).back().ends_with("Read:9 Close:34")) << AttemptsOf(*site).back();
    }
    for (LoadSite* site : {&disconnect, &close}) {
        site->PlanFaults("");
        site->Run();
        EXPECT_TRUE(site->IsDone());
    }
}

}  // namespace
