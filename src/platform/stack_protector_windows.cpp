// SPDX-License-Identifier: Apache-2.0

// Provides the run-time support of the compiler's stack protector (-fstack-protector-strong) on Windows.
// GCC's own library for it would make the module import ADVAPI32.dll, and the C library of mingw-w64 has no
// such support.
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <cstdint>
#include <initializer_list>

extern "C" {
/// Protected functions keep this value below their return address and compare it before they return. Until it
/// is random, it contains the bytes that string functions stop at.
std::uintptr_t __stack_chk_guard = 0xFF0A0D00;

/// A protected function whose guard was overwritten calls this. It ends the process without any exit routine:
/// the stack is damaged, and an exit routine of an MQ library may disconnect, which commits.
[[noreturn]] void __stack_chk_fail();
}

namespace {

/// Mixes values that differ from process to process into the guard. It runs before all other constructors and
/// is compiled without the stack protector, because the guard changes while it runs.
__attribute__((constructor(101), no_stack_protector)) void ChooseGuard() {
    FILETIME time;
    GetSystemTimeAsFileTime(&time);
    LARGE_INTEGER counter;
    (void)QueryPerformanceCounter(&counter);
    std::uint64_t mixed = static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
    for (const std::uint64_t part :
         {static_cast<std::uint64_t>(counter.QuadPart), static_cast<std::uint64_t>(GetCurrentProcessId()),
          static_cast<std::uint64_t>(GetCurrentThreadId()), static_cast<std::uint64_t>(GetTickCount64()),
          static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(&time)),
          static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(&__stack_chk_guard))}) {
        mixed = (mixed ^ part) * 0x9E3779B97F4A7C15U;
        mixed ^= mixed >> 29;
    }
    // The lowest byte stays 0: a string copied past its buffer ends at a NUL, so it cannot reproduce the
    // guard.
    __stack_chk_guard = mixed << 8;
}

}  // namespace

extern "C" void __stack_chk_fail() {
    static constexpr char kText[] = "*** stack smashing detected ***: terminated\r\n";
    constexpr UINT kStackBufferOverrun = 0xC0000409;
    DWORD written = 0;
    (void)WriteFile(GetStdHandle(STD_ERROR_HANDLE), kText, sizeof kText - 1, &written, nullptr);
    (void)TerminateProcess(GetCurrentProcess(), kStackBufferOverrun);
    __builtin_unreachable();
}
