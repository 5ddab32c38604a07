// SPDX-License-Identifier: Apache-2.0
#include "tests/support/program_runner.h"

#include <chrono>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <thread>

#include "platform/interrupts.h"

RunningProgram::RunningProgram(const std::string& program, const std::vector<std::string>& arguments,
                               const std::map<std::string, std::string>& environment,
                               const std::string& folder)
    : outPath_(folder + "/stdout"), errPath_(folder + "/stderr") {
    platform::ProcessOptions options;
    options.environment = environment;
    options.outputPath = outPath_;
    options.errorPath = errPath_;
    options.hasEmptyInput = true;
    std::vector<std::string> programAndArguments = {program};
    programAndArguments.insert(programAndArguments.end(), arguments.begin(), arguments.end());
    std::string error;
    process_ = platform::StartProcess(program, programAndArguments, options, error);
    if (process_ == platform::kNoProcess) {
        std::fprintf(stderr, "cannot start %s: %s\n", program.c_str(), error.c_str());
    }
}

RunningProgram::~RunningProgram() {
    if (process_ != platform::kNoProcess) {
        Wait(0);
    }
}

bool RunningProgram::PrepareInterrupts() {
    return platform::PrepareToSendInterrupts();
}

bool RunningProgram::Interrupt() const {
    return platform::SendInterrupt(process_);
}

bool RunningProgram::Signal(int number) const {
    return platform::SignalProcess(process_, number);
}

ProgramResult RunningProgram::Wait(int seconds) {
    ProgramResult result;
    if (process_ == platform::kNoProcess) {
        return result;
    }
    const std::optional<platform::ProcessEnd> end = platform::WaitForProcess(process_, seconds * 1000);
    if (end && !end->killed) {
        result.exitCode = end->code;
    }
    if (!end) {
        platform::KillProcess(process_);
        platform::WaitForProcess(process_);
    }
    process_ = platform::kNoProcess;
    result.standardOutput = ReadFileIfAny(outPath_);
    result.standardError = WithUnixLineEnds(ReadFileIfAny(errPath_));
    return result;
}

bool WaitForText(const std::string& path, const std::string& text, int seconds) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    while (ReadFileIfAny(path).find(text) == std::string::npos) {
        if (std::chrono::steady_clock::now() > limit) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

bool RunningProgram::WaitForError(const std::string& text, int seconds) const {
    return WaitForText(errPath_, text, seconds);
}

ProgramResult RunProgram(const std::string& program, const std::vector<std::string>& arguments,
                         const std::string& folder, const std::map<std::string, std::string>& environment) {
    return RunningProgram(program, arguments, environment, folder).Wait();
}

std::string ReadFileIfAny(const std::string& path) {
    std::ostringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
}

std::string WithUnixLineEnds(const std::string& text) {
    std::string lines;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
        lines += text[i];
    }
    return lines;
}
