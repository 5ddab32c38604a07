// SPDX-License-Identifier: Apache-2.0
#include "platform/process.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/environment.h"
#include "platform/windows_text.h"

namespace platform {

namespace {

// This is neither an exception's number nor a code with which the system's own programs terminate a process.
constexpr DWORD kExitMark = 0x4D510000U;
constexpr DWORD kExitCodeBits = 0xFFFFU;

// A system under load sometimes refuses to start a process, and starts it a moment later.
constexpr int kStarts = 4;
constexpr DWORD kStartPauseMilliseconds = 200;

HANDLE HandleOf(ProcessHandle process) {
    return reinterpret_cast<HANDLE>(process);
}

std::string Quote(const std::string& argument) {
    std::string quoted = "\"";
    std::size_t backslashes = 0;
    for (const char c : argument) {
        // Backslashes need to be doubled only before a quote.
        if (c == '"') quoted.append(backslashes + 1, '\\');
        backslashes = c == '\\' ? backslashes + 1 : 0;
        quoted += c;
    }
    quoted.append(backslashes, '\\');
    return quoted + "\"";
}

std::string ComposeCommandLine(const std::vector<std::string>& arguments) {
    std::string line;
    for (const std::string& argument : arguments)
        line += (line.empty() ? "" : " ") + Quote(argument);
    return line;
}

// Returns whether `added` has a value for the variable. Names of variables are compared without regard to
// case.
bool Replaces(const std::map<std::string, std::string>& added, const std::string& variable) {
    // A name may begin with '=': such variables keep the current directories of drives.
    const std::string name = variable.substr(0, variable.find('=', 1));
    for (const auto& [addedName, value] : added) {
        if (_stricmp(addedName.c_str(), name.c_str()) == 0) return true;
    }
    return false;
}

// Returns this process's variables with those of `added`, each followed by a NUL, and a NUL at the end.
std::string MergeEnvironment(const std::map<std::string, std::string>& added) {
    std::string merged;
    char* const variables = GetEnvironmentStringsA();
    for (const char* next = variables; next != nullptr && *next != '\0'; next += std::strlen(next) + 1) {
        if (!Replaces(added, next)) merged.append(next).push_back('\0');
    }
    if (variables != nullptr) FreeEnvironmentStringsA(variables);
    for (const auto& [name, value] : added)
        merged.append(name + "=" + value).push_back('\0');
    merged.push_back('\0');
    return merged;
}

// Opens the standard streams of a child. Where none is given, the child has the stream of this process.
class ChildStreams {
  public:
    explicit ChildStreams(const ProcessOptions& options)
        : input_(options.hasEmptyInput ? Open("NUL", GENERIC_READ, OPEN_EXISTING) : nullptr),
          output_(OpenIfGiven(options.outputPath)),
          error_(OpenIfGiven(options.errorPath)) {}
    ChildStreams(const ChildStreams&) = delete;
    ChildStreams& operator=(const ChildStreams&) = delete;
    ~ChildStreams() {
        for (const HANDLE opened : {input_, output_, error_})
            if (opened != nullptr) CloseHandle(opened);
    }

    void AddTo(STARTUPINFOA& startup) const {
        if (input_ == nullptr && output_ == nullptr && error_ == nullptr) return;
        startup.dwFlags |= STARTF_USESTDHANDLES;
        startup.hStdInput = input_ != nullptr ? input_ : GetStdHandle(STD_INPUT_HANDLE);
        startup.hStdOutput = output_ != nullptr ? output_ : GetStdHandle(STD_OUTPUT_HANDLE);
        startup.hStdError = error_ != nullptr ? error_ : GetStdHandle(STD_ERROR_HANDLE);
    }

  private:
    static HANDLE Open(const std::string& path, DWORD access, DWORD disposition) {
        SECURITY_ATTRIBUTES inheritable = {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
        return CreateFileA(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inheritable,
                           disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    }
    static HANDLE OpenIfGiven(const std::string& path) {
        return path.empty() ? nullptr : Open(path, GENERIC_WRITE, CREATE_ALWAYS);
    }

    HANDLE input_;
    HANDLE output_;
    HANDLE error_;
};

// Returns a job that ends its processes when the last handle to it is closed, which is when this process
// ends.
HANDLE JobOfChildren() {
    static const HANDLE job = [] {
        const HANDLE made = CreateJobObjectA(nullptr, nullptr);
        JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
        limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
        if (made != nullptr)
            SetInformationJobObject(made, JobObjectExtendedLimitInformation, &limits, sizeof limits);
        return made;
    }();
    return job;
}

bool CreateSuspended(const std::string& program, const std::vector<std::string>& arguments,
                     const ProcessOptions& options, PROCESS_INFORMATION& process) {
    std::string line = ComposeCommandLine(arguments);
    std::string environment = MergeEnvironment(options.environment);
    const ChildStreams streams(options);
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    streams.AddTo(startup);
    for (int starts = 1;
         CreateProcessA(program.c_str(), line.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED,
                        environment.data(), nullptr, &startup, &process) == 0;
         ++starts) {
        if (starts == kStarts) return false;
        Sleep(kStartPauseMilliseconds);
    }
    return true;
}

ProcessEnd CloseEnded(HANDLE process) {
    DWORD code = 0;
    GetExitCodeProcess(process, &code);
    CloseHandle(process);
    return {false, static_cast<int>(code)};
}

}  // namespace

std::int64_t CurrentProcessId() {
    return GetCurrentProcessId();
}

void ExitImmediately(int exitCode) {
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(exitCode));
    std::abort();  // not reached
}

void KillCurrentProcess() {
    TerminateProcess(GetCurrentProcess(), kKilledExitCode);
    for (;;) {
        Sleep(INFINITE);
    }
}

std::uint64_t CurrentThreadId() {
    return GetCurrentThreadId();
}

std::string HostName() {
    wchar_t name[256] = {};
    DWORD length = 255;
    return GetComputerNameExW(ComputerNameDnsHostname, name, &length) != 0 && length > 0
               ? Narrow(name, length)
               : "unknown";
}

std::string UserName() {
    return ReadEnvironment("USERNAME");
}

std::string ProgramName() {
    std::array<wchar_t, 4096> path{};
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    const std::string text = Narrow(path.data(), length);
    return text.substr(text.find_last_of("/\\") + 1);
}

// Mixes the performance counter with the numbers of the process and the thread.
std::uint64_t RandomNumber() {
    LARGE_INTEGER counter{};
    QueryPerformanceCounter(&counter);
    std::uint64_t number = static_cast<std::uint64_t>(counter.QuadPart) ^
                           static_cast<std::uint64_t>(GetCurrentProcessId()) << 40 ^
                           static_cast<std::uint64_t>(GetCurrentThreadId()) << 24;
    number ^= number >> 31;
    number *= 0x9E3779B97F4A7C15U;
    return number ^ number >> 29;
}

void SuppressCrashDialogs() {
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
}

void RaiseOpenFileLimit() {
    constexpr int kMost = 2048;
    _setmaxstdio(kMost);
}

std::string RunningProgramPath() {
    char path[32768];
    const DWORD length = GetModuleFileNameA(nullptr, path, sizeof path);
    return length == sizeof path ? "" : std::string(path, length);
}

ProcessHandle StartProcess(const std::string& program, const std::vector<std::string>& arguments,
                           const ProcessOptions& options, std::string& error) {
    PROCESS_INFORMATION process = {};
    if (!CreateSuspended(program, arguments, options, process)) {
        error = DescribeSystemError(GetLastError());
        return kNoProcess;
    }
    if (options.endsWithParent && AssignProcessToJobObject(JobOfChildren(), process.hProcess) == 0) {
        error = DescribeSystemError(GetLastError());
        TerminateProcess(process.hProcess, 1);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
        return kNoProcess;
    }
    ResumeThread(process.hThread);
    CloseHandle(process.hThread);
    return reinterpret_cast<ProcessHandle>(process.hProcess);
}

ProcessEnd WaitForProcess(ProcessHandle process) {
    WaitForSingleObject(HandleOf(process), INFINITE);
    return CloseEnded(HandleOf(process));
}

std::optional<ProcessEnd> WaitForProcess(ProcessHandle process, std::int64_t timeoutMs) {
    if (WaitForSingleObject(HandleOf(process), static_cast<DWORD>(timeoutMs)) != WAIT_OBJECT_0)
        return std::nullopt;
    return CloseEnded(HandleOf(process));
}

void KillProcess(ProcessHandle process) {
    TerminateProcess(HandleOf(process), kKilledExitCode);
}

bool SignalProcess(ProcessHandle /*process*/, int /*signalNumber*/) {
    return false;
}

int MarkExitCode(int exitCode) {
    return static_cast<int>(kExitMark | (static_cast<DWORD>(exitCode) & kExitCodeBits));
}

ProcessEnd ReadMarkedExit(const ProcessEnd& end) {
    const auto code = static_cast<DWORD>(end.code);
    if ((code & ~kExitCodeBits) != kExitMark) return {true, end.code};
    return {false, static_cast<int>(code & kExitCodeBits)};
}

}  // namespace platform
