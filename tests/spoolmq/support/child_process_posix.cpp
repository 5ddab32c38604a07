#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "tests/spoolmq/support/child_process.h"

ChildProcess StartChild(const std::vector<std::string>& programAndArguments) {
    std::vector<char*> arguments;
    for (const std::string& argument : programAndArguments)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    pid_t process = -1;
    if (posix_spawn(&process, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0) {
        std::fprintf(stderr, "cannot start %s\n", arguments[0]);
        std::abort();
    }
    return {process};
}

int WaitForChild(ChildProcess* child) {
    int status = 0;
    while (waitpid(static_cast<pid_t>(child->process), &status, 0) < 0 && errno == EINTR) {
    }
    child->process = -1;
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

void KillChild(const ChildProcess& child) {
    kill(static_cast<pid_t>(child.process), SIGKILL);
}

void SetEnvironment(const std::string& name, const std::string& value) {
    if (value.empty())
        unsetenv(name.c_str());
    else
        setenv(name.c_str(), value.c_str(), 1);
}

bool ProcessesStartReliably() {
    return true;
}
