#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>

#include "tests/support/program_runner.h"

RunningProgram::RunningProgram(const std::string& program, const std::vector<std::string>& arguments,
                               const std::map<std::string, std::string>& environment,
                               const std::string& folder)
    : outPath_(folder + "/stdout"), errPath_(folder + "/stderr") {
    std::vector<char*> words = {const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    processId_ = fork();
    if (processId_ != 0) return;
    for (const auto& [name, value] : environment)
        setenv(name.c_str(), value.c_str(), 1);
    const int in = open("/dev/null", O_RDONLY);
    const int out = open(outPath_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    const int err = open(errPath_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    if (in < 0 || out < 0 || err < 0) _exit(126);
    dup2(in, 0);
    dup2(out, 1);
    dup2(err, 2);
    execv(program.c_str(), words.data());
    _exit(127);
}

RunningProgram::~RunningProgram() {
    if (processId_ > 0) Wait(0);
}

bool RunningProgram::PrepareInterrupts() {
    return true;
}

bool RunningProgram::Interrupt() const {
    return kill(static_cast<pid_t>(processId_), SIGINT) == 0;
}

bool RunningProgram::Signal(int number) const {
    return kill(static_cast<pid_t>(processId_), number) == 0;
}

ProgramResult RunningProgram::Wait(int seconds) {
    ProgramResult result;
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    int status = 0;
    const auto pid = static_cast<pid_t>(processId_);
    while (waitpid(pid, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > limit) {
            kill(pid, SIGKILL);
            waitpid(pid, &status, 0);
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    processId_ = 0;
    if (WIFEXITED(status)) result.exitCode = WEXITSTATUS(status);
    result.standardOutput = ReadFileIfAny(outPath_);
    result.standardError = WithUnixLineEnds(ReadFileIfAny(errPath_));
    return result;
}
