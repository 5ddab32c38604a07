#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <optional>
#include <string>

#include "tests/support/program_runner.h"

namespace {

// Under load, Wine sometimes does not start a program at all.
constexpr int kStarts = 4;
constexpr DWORD kStartPauseMilliseconds = 200;

HANDLE OpenInheritable(const std::string& path, DWORD access, DWORD disposition) {
    SECURITY_ATTRIBUTES inheritable = {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return CreateFileA(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inheritable, disposition,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

// The arguments of these tests hold no quotes and no final backslashes, so quoting blanks is enough.
void AddArgument(std::string& line, const std::string& argument) {
    const bool plain = !argument.empty() && argument.find_first_of(" \t") == std::string::npos;
    if (!line.empty()) line += ' ';
    if (!plain) line += '"';
    line += argument;
    if (!plain) line += '"';
}

/// Sets the variables that a program to be started inherits, and restores those of this process, which runs more
/// than one test.
class ChildVariables {
  public:
    explicit ChildVariables(const std::map<std::string, std::string>& variables) {
        for (const auto& [name, value] : variables) {
            const char* before = std::getenv(name.c_str());
            before_[name] = before != nullptr ? std::optional<std::string>(before) : std::nullopt;
            SetEnvironmentVariableA(name.c_str(), value.c_str());
        }
    }
    ~ChildVariables() {
        for (const auto& [name, value] : before_)
            SetEnvironmentVariableA(name.c_str(), value ? value->c_str() : nullptr);
    }
    ChildVariables(const ChildVariables&) = delete;
    ChildVariables& operator=(const ChildVariables&) = delete;

  private:
    std::map<std::string, std::optional<std::string>> before_;
};

}  // namespace

RunningProgram::RunningProgram(const std::string& program, const std::vector<std::string>& arguments,
                               const std::map<std::string, std::string>& environment,
                               const std::string& folder)
    : outPath_(folder + "/stdout"), errPath_(folder + "/stderr") {
    std::string line;
    AddArgument(line, program);
    for (const std::string& argument : arguments)
        AddArgument(line, argument);
    const ChildVariables variables(environment);

    STARTUPINFOA start = {};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = OpenInheritable("NUL", GENERIC_READ, OPEN_EXISTING);
    start.hStdOutput = OpenInheritable(outPath_, GENERIC_WRITE, CREATE_ALWAYS);
    start.hStdError = OpenInheritable(errPath_, GENERIC_WRITE, CREATE_ALWAYS);
    PROCESS_INFORMATION process = {};
    for (int attempt = 1; process_ == nullptr && attempt <= kStarts; ++attempt) {
        if (CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start,
                           &process) != 0) {
            process_ = process.hProcess;
            processId_ = static_cast<long>(process.dwProcessId);
            CloseHandle(process.hThread);
        } else {
            std::fprintf(stderr, "start %d of %s failed: error %lu\n", attempt, program.c_str(),
                         GetLastError());
            Sleep(kStartPauseMilliseconds);
        }
    }
    CloseHandle(start.hStdInput);
    CloseHandle(start.hStdOutput);
    CloseHandle(start.hStdError);
}

RunningProgram::~RunningProgram() {
    if (process_ != nullptr) Wait(0);
}

// An interrupt goes to every process of a console: this one takes a console of its own, hands it on to the
// program and ignores what it sends.
bool RunningProgram::PrepareInterrupts() {
    FreeConsole();
    return AllocConsole() != 0 && SetConsoleCtrlHandler([](DWORD) { return TRUE; }, TRUE) != 0;
}

bool RunningProgram::Interrupt() const {
    return GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0) != 0;
}

bool RunningProgram::Signal(int /*number*/) const {
    return false;
}

ProgramResult RunningProgram::Wait(int seconds) {
    ProgramResult result;
    if (process_ == nullptr) return result;
    if (WaitForSingleObject(process_, static_cast<DWORD>(seconds) * 1000) == WAIT_OBJECT_0) {
        DWORD code = 0;
        GetExitCodeProcess(process_, &code);
        result.exitCode = static_cast<int>(code);
    } else {
        TerminateProcess(process_, 1);
        WaitForSingleObject(process_, INFINITE);
    }
    CloseHandle(process_);
    process_ = nullptr;
    result.standardOutput = ReadFileIfAny(outPath_);
    result.standardError = WithUnixLineEnds(ReadFileIfAny(errPath_));
    return result;
}
