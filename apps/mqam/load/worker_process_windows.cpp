#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <atomic>

#include "mqam/load/worker_process.h"

namespace mqam {

namespace {

// No exception's number, no code of TerminateProcess as the system's own programs call it.
constexpr DWORD kExitMark = 0x4D510000U;
constexpr DWORD kExitCodeBits = 0xFFFFU;

// A system with too much to do now and then refuses a process, and grants it a moment later.
constexpr int kStarts = 3;
constexpr DWORD kStartPauseMilliseconds = 200;

std::vector<std::string> keptArguments;
std::atomic<bool> interruptCame{false};

// The command line as it was typed is of no use: one that ends inside quotes, as after "C:\data\", would take
// what is added to it for the rest of its last argument.
std::string Quote(const std::string& argument) {
    std::string quoted = "\"";
    std::size_t backslashes = 0;
    for (const char c : argument) {
        // Backslashes count only in front of a quote: there each needs another one.
        if (c == '"') quoted.append(backslashes + 1, '\\');
        backslashes = c == '\\' ? backslashes + 1 : 0;
        quoted += c;
    }
    quoted.append(backslashes, '\\');
    return quoted + "\"";
}

// The worker has the same console and sees the interrupt by itself.
BOOL WINAPI NoteInterrupt(DWORD event) {
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT && event != CTRL_CLOSE_EVENT) return FALSE;
    interruptCame = true;
    return TRUE;
}

WorkerEnd FailToStart() {
    WorkerEnd end;
    end.reason = "error " + std::to_string(GetLastError());
    return end;
}

// A job that ends its processes when the last handle to it is closed: when this process ends.
HANDLE MakeJob() {
    const HANDLE job = CreateJobObjectA(nullptr, nullptr);
    if (job == nullptr) return nullptr;
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
    return job;
}

WorkerEnd DescribeEnd(HANDLE process) {
    DWORD code = 0;
    GetExitCodeProcess(process, &code);
    WorkerEnd end;
    end.started = true;
    end.killed = (code & ~kExitCodeBits) != kExitMark;
    end.code = static_cast<int>(end.killed ? code : code & kExitCodeBits);
    return end;
}

}  // namespace

void KeepArguments(int count, char** arguments) {
    keptArguments.assign(arguments, arguments + count);
}

WorkerEnd RunWorker(const std::vector<std::string>& moreArguments) {
    std::string commandLine;
    for (const std::string& argument : ComposeWorkerArguments(keptArguments, moreArguments))
        commandLine += (commandLine.empty() ? "" : " ") + Quote(argument);
    char program[32768];
    if (GetModuleFileNameA(nullptr, program, sizeof program) == 0) return FailToStart();

    static const HANDLE job = MakeJob();
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    for (int starts = 1; CreateProcessA(program, commandLine.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED,
                                        nullptr, nullptr, &startup, &process) == 0;
         ++starts) {
        if (starts == kStarts) return FailToStart();
        Sleep(kStartPauseMilliseconds);
    }
    if (job == nullptr || AssignProcessToJobObject(job, process.hProcess) == 0) {
        const WorkerEnd end = FailToStart();
        TerminateProcess(process.hProcess, 1);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
        return end;
    }
    ResumeThread(process.hThread);
    CloseHandle(process.hThread);
    WaitForSingleObject(process.hProcess, INFINITE);
    const WorkerEnd end = DescribeEnd(process.hProcess);
    CloseHandle(process.hProcess);
    return end;
}

int MarkWorkerExit(int exitCode) {
    return static_cast<int>(kExitMark | (static_cast<DWORD>(exitCode) & kExitCodeBits));
}

void LeaveInterruptsToWorker() {
    SetConsoleCtrlHandler(nullptr, FALSE);
    SetConsoleCtrlHandler(NoteInterrupt, TRUE);
}

bool InterruptCame() {
    return interruptCame;
}

}  // namespace mqam
