// SPDX-License-Identifier: Apache-2.0
#include "tests/e2e/load_site.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>

namespace fs = std::filesystem;

LoadSite::LoadSite(const std::string& root, const std::string& name)
    : name_(name), folder_((fs::path(root) / name).string()) {
    fs::create_directories(fs::path(folder_) / "spool" / "QM1" / "Q1");
    options_ = {{"--qmgr", "QM1"},
                {"--queue", "Q1"},
                {"--rwait", "1"},
                {"--ckfile", CheckpointFile()},
                {"--checkpoint-every", "3"},
                {"--restart-file", RestartFile()},
                {"--to", Target()}};
}

void LoadSite::Put(int count) {
    for (int i = 0; i < count; ++i)
        Put("message " + std::to_string(puts_ + 1) + " of " + name_);
}

void LoadSite::Put(const std::string& message) {
    char file[64];
    std::snprintf(file, sizeof file, "20260101-000000-%09d.msg", ++puts_);
    // The file is renamed into place, so that a load that is waiting for it finds it complete.
    std::ofstream(Path("next-message"), std::ios::binary) << message;
    fs::rename(Path("next-message"), fs::path(folder_) / "spool" / "QM1" / "Q1" / file);
    if (!message.empty()) messages_.push_back(message);
}

void LoadSite::PlanFaults(const std::string& plan) const {
    std::ofstream(Path("faults")) << plan << "\n";
}

void LoadSite::LeaveOut(const std::string& option) {
    std::erase_if(options_, [&option](const auto& pair) { return pair.first == option; });
}

void LoadSite::Set(const std::string& option, const std::string& value) {
    LeaveOut(option);
    options_.emplace_back(option, value);
}

LoadSite::Arguments LoadSite::Command(const Arguments& more) const {
    Arguments arguments = {"load"};
    for (const auto& [option, value] : options_) {
        arguments.push_back(option);
        arguments.push_back(value);
    }
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

std::map<std::string, std::string> LoadSite::Environment() const {
    return {{"SPOOLMQ_DIR", Path("spool")},
            {"MQAMOD_MQ_LIBRARY", SPOOLMQ_LIBRARY},
            {"SPOOLMQ_FAULT_FILE", Path("faults")}};
}

RunningProgram& LoadSite::Start(const Arguments& more) {
    if (!fs::exists(Path("faults"))) PlanFaults("");
    program_ = std::make_unique<RunningProgram>(MQAM_PROGRAM, Command(more), Environment(), folder_);
    return *program_;
}

#if !defined(_WIN32)
RunningProgram& LoadSite::StartWithFileLimit(int kibibytes) {
    // By default, the signal that accompanies the failed write would end the program.
    Arguments arguments = {
        "-c", "trap '' XFSZ; ulimit -f " + std::to_string(kibibytes) + "; exec \"$0\" \"$@\"", MQAM_PROGRAM};
    for (const std::string& argument : Command())
        arguments.push_back(argument);
    PlanFaults("");
    program_ = std::make_unique<RunningProgram>("/bin/bash", arguments, Environment(), folder_);
    return *program_;
}
#endif

const ProgramResult& LoadSite::Wait(int seconds) {
    result_ = program_->Wait(seconds);
    return result_;
}

const ProgramResult& LoadSite::Run(const Arguments& more) {
    Start(more);
    return Wait();
}

std::string LoadSite::Path(const std::string& name) const {
    return (fs::path(folder_) / name).string();
}

std::string LoadSite::Lines(std::size_t count) const {
    std::string lines;
    for (std::size_t i = 0; i < std::min(count, messages_.size()); ++i)
        lines += messages_[i] + "\n";
    return lines;
}

int LoadSite::Depth() const {
    const fs::path queue = fs::path(folder_) / "spool" / "QM1" / "Q1";
    return static_cast<int>(std::count_if(
        fs::directory_iterator(queue), fs::directory_iterator(), [](const fs::directory_entry& entry) {
            return entry.is_regular_file() && entry.path().extension() == ".msg";
        }));
}

std::string LoadSite::Stored(const std::string& key) const {
    const std::string text = "\n" + ReadFileIfAny(RestartFile());
    const std::string beginning = "\n" + key + "=";
    const std::size_t at = text.find(beginning);
    if (at == std::string::npos) return "(no " + key + ")";
    const std::size_t from = at + beginning.size();
    return text.substr(from, text.find('\n', from) - from);
}

std::string LoadSite::Files() const {
    const std::set<std::string> apart = {"spool", "faults", "stdout", "stderr"};
    std::set<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder_)) {
        const std::string file = entry.path().filename().string();
        if (!apart.contains(file)) names.insert(file);
    }
    std::string all;
    for (const std::string& file : names)
        all += (all.empty() ? "" : " ") + file;
    return all;
}

testing::AssertionResult LoadSite::IsDone(int exitCode) const {
    const auto fail = [this](const std::string& what) {
        return testing::AssertionFailure() << name_ << ": " << what << "\n"
                                           << result_.standardOutput << Error();
    };
    if (result_.exitCode != exitCode) return fail("exit code " + std::to_string(result_.exitCode));
    const std::string target = ReadFileIfAny(Target());
    if (target != Lines()) return fail("the target differs:\n" + target + "expected:\n" + Lines());
    if (Depth() != 0) return fail(std::to_string(Depth()) + " messages are left");
    if (Files() != "out restart") return fail("files: " + Files());
    if (Stored("phase") != "complete") return fail("phase " + Stored("phase"));
    if (Stored("records") != std::to_string(messages_.size())) return fail("records " + Stored("records"));
    return testing::AssertionSuccess();
}

void RunAll(std::vector<std::unique_ptr<LoadSite>>& sites, const LoadSite::Arguments& more) {
    for (const auto& site : sites)
        site->Start(more);
    for (const auto& site : sites)
        site->Wait();
}

LoadSite& LoadSites::Add(const std::string& name, int messages, const std::string& faults) {
    sites_.push_back(std::make_unique<LoadSite>(folder_.Root(), name));
    sites_.back()->Put(messages);
    sites_.back()->PlanFaults(faults);
    return *sites_.back();
}

LoadSite& LoadSites::AddUnfinished(const std::string& name, const std::string& durability) {
    LoadSite& site = Add(name, 10, "MQCMIT 5 kill after");
    site.Set("--durability", durability);
    EXPECT_EQ(site.Run().exitCode, 9) << site.Error();
    EXPECT_EQ(site.Stored("records"), "3");
    site.PlanFaults("");
    return site;
}

void LoadSites::RunAllAgain() {
    for (const auto& site : sites_)
        site->PlanFaults("");
    RunAll(sites_);
}

testing::AssertionResult ReportsHolder(const std::string& text, const std::string& lock) {
    static const std::regex kHolder(
        "mqam load: another load is running: process [0-9]+ on [^ ]+, started [-0-9]+ [:0-9]+ UTC, holds (.*); wait "
        "until it ends, or end it, then run the same command again\r?\n");
    std::smatch match;
    if (std::regex_search(text, match, kHolder) && match[1] == lock) return testing::AssertionSuccess();
    return testing::AssertionFailure() << lock << "\n" << text;
}
