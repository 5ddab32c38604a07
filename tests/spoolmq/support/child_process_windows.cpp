#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <cstdio>
#include <cstdlib>

#include "tests/spoolmq/support/child_process.h"

ChildProcess StartChild(const std::vector<std::string>& programAndArguments) {
    std::string line;
    for (const std::string& argument : programAndArguments) {
        if (!line.empty()) line += ' ';
        line += '"';
        line += argument;
        line += '"';
    }
    STARTUPINFOA start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION process{};
    if (!CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                        &process)) {
        std::fprintf(stderr, "cannot start %s\n", line.c_str());
        std::abort();
    }
    CloseHandle(process.hThread);
    return {reinterpret_cast<std::intptr_t>(process.hProcess)};
}

int WaitForChild(ChildProcess* child) {
    const HANDLE process = reinterpret_cast<HANDLE>(child->process);
    DWORD code = 0;
    WaitForSingleObject(process, INFINITE);
    GetExitCodeProcess(process, &code);
    CloseHandle(process);
    child->process = -1;
    return static_cast<int>(code);
}

void KillChild(const ChildProcess& child) {
    TerminateProcess(reinterpret_cast<HANDLE>(child.process), kKilled);
}

void SetEnvironment(const std::string& name, const std::string& value) {
    SetEnvironmentVariableA(name.c_str(), value.empty() ? nullptr : value.c_str());
}

bool ProcessesStartReliably() {
    return false;
}
