#define WIN32_LEAN_AND_MEAN
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include "platform/platform.h"

namespace platform {

const char* const kModuleFileName = "mqamod.dll";

namespace {

constexpr int kStandardOutput = 1;
constexpr int kStandardError = 2;
std::atomic<int> interrupts{0};
std::atomic<int> atOnceCode{1};

// Runs on a thread that the system creates.
BOOL WINAPI CountInterrupt(DWORD event) {
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT && event != CTRL_CLOSE_EVENT) return FALSE;
    const bool first = interrupts.fetch_add(1) == 0;
    std::fputs(first ? kFirstInterruptText : kSecondInterruptText, stderr);
    std::fflush(stderr);
    if (!first) ExitImmediately(atOnceCode.load());
    return TRUE;
}

std::string DescribeSystemError(DWORD code) {
    char text[512];
    const DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                        code, 0, text, sizeof text, nullptr);
    std::string words(text, length);
    while (!words.empty() && (words.back() == '\n' || words.back() == '\r'))
        words.pop_back();
    return words.empty() ? "error " + std::to_string(code) : words;
}

}  // namespace

std::string ProgramDirectory() {
    char path[32768];
    const DWORD length = GetModuleFileNameA(nullptr, path, sizeof path);
    if (length == 0 || length == sizeof path) return "";
    const std::string whole(path, length);
    return whole.substr(0, whole.find_last_of("\\/") + 1);
}

std::string NativePath(std::string path) {
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

void* OpenLibrary(const std::string& path, std::string& reason) {
    HMODULE library = LoadLibraryA(path.c_str());
    if (library == nullptr) reason = DescribeSystemError(GetLastError());
    return reinterpret_cast<void*>(library);
}

void* FindFunction(void* library, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(reinterpret_cast<HMODULE>(library), name));
}

PathKind ProbePath(const std::string& path) {
    std::uint64_t bytes = 0;
    return ProbePath(path, bytes);
}

PathKind ProbePath(const std::string& path, std::uint64_t& bytes) {
    struct _stat64 status = {};
    bytes = 0;
    if (_stat64(path.c_str(), &status) != 0) {
        return errno == ENOENT ? PathKind::kMissing : PathKind::kUnknown;
    }
    if ((status.st_mode & _S_IFMT) != _S_IFREG) return PathKind::kOther;
    bytes = static_cast<std::uint64_t>(status.st_size);
    return PathKind::kFile;
}

int OpenForWriting(const std::string& path, OpenMode mode) {
    int flags = _O_WRONLY | _O_BINARY | _O_NOINHERIT;
    switch (mode) {
        case OpenMode::kCreate: flags |= _O_CREAT | _O_EXCL; break;
        case OpenMode::kReplace: flags |= _O_CREAT | _O_TRUNC; break;
        case OpenMode::kAppend: flags |= _O_CREAT | _O_APPEND; break;
        case OpenMode::kExisting: break;
    }
    return _open(path.c_str(), flags, _S_IREAD | _S_IWRITE);
}

long WriteBytes(int descriptor, const char* bytes, std::size_t length) {
    const auto most = static_cast<unsigned>(length < INT_MAX ? length : INT_MAX);
    return _write(descriptor, bytes, most);
}

int SyncFile(int descriptor) {
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
    if (GetFileType(handle) != FILE_TYPE_DISK) return 0;
    return _commit(descriptor);
}

// While the file is open, no one can rename or delete it.
bool IsFileAt(int descriptor, const std::string& /*path*/, std::uint64_t bytes) {
    errno = 0;
    return _filelengthi64(descriptor) == static_cast<long long>(bytes);
}

int CloseDescriptor(int descriptor) {
    return _close(descriptor);
}

// The C library does not reuse their descriptors.
void ReopenClosedStdStreams() {}

int RedirectStdout(ModuleOutput output) {
    std::fflush(stdout);
    const int claimed = _dup(kStandardOutput);
    if (claimed < 0) return -1;
    _setmode(claimed, _O_BINARY);
    if (output == ModuleOutput::kToStandardError) {
        return _dup2(kStandardError, kStandardOutput) < 0 ? -1 : claimed;
    }
    const int nowhere = _open("NUL", _O_WRONLY);
    if (nowhere < 0 || _dup2(nowhere, kStandardOutput) < 0) return -1;
    _close(nowhere);
    return claimed;
}

bool IsStandardErrorTerminal() {
    return IsTerminal(kStandardError);
}
bool IsTerminal(int descriptor) {
    return _isatty(descriptor) != 0;
}

void WatchInterrupts(int exitCodeAtOnce) {
    atOnceCode = exitCodeAtOnce;
    // A parent that started this process in a process group of its own has disabled Ctrl-C for it.
    SetConsoleCtrlHandler(nullptr, FALSE);
    SetConsoleCtrlHandler(CountInterrupt, TRUE);
}

bool InterruptRequested() {
    return interrupts.load(std::memory_order_relaxed) > 0;
}

void ExitImmediately(int exitCode) {
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(exitCode));
    std::abort();  // not reached
}

}  // namespace platform
