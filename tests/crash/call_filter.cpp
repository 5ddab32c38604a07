// SPDX-License-Identifier: Apache-2.0
#include "tests/crash/call_filter.h"

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstring>
#include <vector>

namespace {

constexpr int kNoArgument = -1;

// How the bits of an argument are compared to decide whether a call belongs to a row of the table.
enum class Match { kAnyBit, kNoBit, kEqual };

struct CallRow {
    int number;
    const char* name;
    int descriptor;  // index of the argument that is the file, or the directory at which the path begins
    int path;        // index of the argument, or kNoArgument if the descriptor is the file
    int length;      // index of the argument, or kNoArgument
    int flags;       // index of the argument that must match, or kNoArgument if every call belongs to the row
    std::uint32_t bits = 0;
    Match match = Match::kAnyBit;
};

constexpr std::uint32_t kMakesOrEmpties = O_CREAT | O_TRUNC;

constexpr CallRow kCallRows[] = {
    {SYS_write, "write", 0, kNoArgument, 2, kNoArgument},
    {SYS_pwrite64, "pwrite64", 0, kNoArgument, 2, kNoArgument},
    {SYS_writev, "writev", 0, kNoArgument, kNoArgument, kNoArgument},
    {SYS_pwritev, "pwritev", 0, kNoArgument, kNoArgument, kNoArgument},
    {SYS_copy_file_range, "copy_file_range", 2, kNoArgument, kNoArgument, kNoArgument},
    {SYS_sendfile, "sendfile", 0, kNoArgument, kNoArgument, kNoArgument},
    {SYS_ftruncate, "ftruncate", 0, kNoArgument, kNoArgument, kNoArgument},
    {SYS_fallocate, "fallocate", 0, kNoArgument, kNoArgument, kNoArgument},
    {SYS_fsync, "fsync", 0, kNoArgument, kNoArgument, kNoArgument},
    {SYS_fdatasync, "fdatasync", 0, kNoArgument, kNoArgument, kNoArgument},
    {SYS_fchmod, "fchmod", 0, kNoArgument, kNoArgument, kNoArgument},
    {SYS_fchown, "fchown", 0, kNoArgument, kNoArgument, kNoArgument},
    {SYS_truncate, "truncate", kNoArgument, 0, kNoArgument, kNoArgument},
    {SYS_open, "open", kNoArgument, 0, kNoArgument, 1, kMakesOrEmpties},
    {SYS_openat, "openat", 0, 1, kNoArgument, 2, kMakesOrEmpties},
    {SYS_creat, "creat", kNoArgument, 0, kNoArgument, kNoArgument},
    {SYS_rename, "rename", kNoArgument, 0, kNoArgument, kNoArgument},
    {SYS_renameat, "renameat", 0, 1, kNoArgument, kNoArgument},
    {SYS_renameat2, "renameat2", 0, 1, kNoArgument, kNoArgument},
    {SYS_unlink, "unlink", kNoArgument, 0, kNoArgument, kNoArgument},
    {SYS_unlinkat, "unlinkat", 0, 1, kNoArgument, kNoArgument},
    {SYS_mkdir, "mkdir", kNoArgument, 0, kNoArgument, kNoArgument},
    {SYS_mkdirat, "mkdirat", 0, 1, kNoArgument, kNoArgument},
    {SYS_rmdir, "rmdir", kNoArgument, 0, kNoArgument, kNoArgument},
    {SYS_link, "link", kNoArgument, 1, kNoArgument, kNoArgument},
    {SYS_linkat, "linkat", 2, 3, kNoArgument, kNoArgument},
    {SYS_symlink, "symlink", kNoArgument, 1, kNoArgument, kNoArgument},
    {SYS_symlinkat, "symlinkat", 1, 2, kNoArgument, kNoArgument},
    {SYS_chmod, "chmod", kNoArgument, 0, kNoArgument, kNoArgument},
    {SYS_fchmodat, "fchmodat", 0, 1, kNoArgument, kNoArgument},
    {SYS_utimensat, "utimensat", 0, 1, kNoArgument, kNoArgument},
    {SYS_mmap, "mmap", 4, kNoArgument, kNoArgument, 3, MAP_SHARED},
};

// These calls change no file, but a load can notice their failure.
constexpr CallRow kLooks[] = {
    {SYS_read, "read", 0, kNoArgument, kNoArgument, kNoArgument},
    {SYS_pread64, "pread64", 0, kNoArgument, kNoArgument, kNoArgument},
    {SYS_readv, "readv", 0, kNoArgument, kNoArgument, kNoArgument},
    {SYS_preadv, "preadv", 0, kNoArgument, kNoArgument, kNoArgument},
    {SYS_open, "open", kNoArgument, 0, kNoArgument, 1, kMakesOrEmpties, Match::kNoBit},
    {SYS_openat, "openat", 0, 1, kNoArgument, 2, kMakesOrEmpties, Match::kNoBit},
    {SYS_close, "close", 0, kNoArgument, kNoArgument, kNoArgument},
    {SYS_lseek, "lseek", 0, kNoArgument, kNoArgument, kNoArgument},
    {SYS_access, "access", kNoArgument, 0, kNoArgument, kNoArgument},
    {SYS_faccessat, "faccessat", 0, 1, kNoArgument, kNoArgument},
    {SYS_faccessat2, "faccessat2", 0, 1, kNoArgument, kNoArgument},
    {SYS_stat, "stat", kNoArgument, 0, kNoArgument, kNoArgument},
    {SYS_fstat, "fstat", 0, kNoArgument, kNoArgument, kNoArgument},
    {SYS_lstat, "lstat", kNoArgument, 0, kNoArgument, kNoArgument},
    {SYS_newfstatat, "newfstatat", 0, 1, kNoArgument, kNoArgument},
    {SYS_statx, "statx", 0, 1, kNoArgument, kNoArgument},
    {SYS_readlink, "readlink", kNoArgument, 0, kNoArgument, kNoArgument},
    {SYS_readlinkat, "readlinkat", 0, 1, kNoArgument, kNoArgument},
    {SYS_getdents64, "getdents64", 0, kNoArgument, kNoArgument, kNoArgument},
    {SYS_flock, "flock", 0, kNoArgument, kNoArgument, kNoArgument},
    {SYS_fcntl, "fcntl F_SETLK", 0, kNoArgument, kNoArgument, 1, F_SETLK, Match::kEqual},
    {SYS_fcntl, "fcntl F_SETLKW", 0, kNoArgument, kNoArgument, 1, F_SETLKW, Match::kEqual},
    {SYS_fcntl, "fcntl F_GETLK", 0, kNoArgument, kNoArgument, 1, F_GETLK, Match::kEqual},
    {SYS_fcntl, "fcntl F_OFD_SETLK", 0, kNoArgument, kNoArgument, 1, F_OFD_SETLK, Match::kEqual},
};

// These calls change no file either, and what they change ends with the process.
constexpr int kHarmlessCalls[] = {
    SYS_statfs,
    SYS_fstatfs,
    SYS_getcwd,
    SYS_chdir,
    SYS_fadvise64,
    SYS_ioctl,
    SYS_dup,
    SYS_dup2,
    SYS_dup3,
    SYS_pipe,
    SYS_pipe2,
    SYS_poll,
    SYS_ppoll,
    SYS_select,
    SYS_pselect6,
    SYS_munmap,
    SYS_mprotect,
    SYS_mremap,
    SYS_madvise,
    SYS_brk,
    SYS_futex,
    SYS_clock_gettime,
    SYS_gettimeofday,
    SYS_time,
    SYS_clock_nanosleep,
    SYS_nanosleep,
    SYS_clock_getres,
    SYS_sched_yield,
    SYS_getcpu,
    SYS_getpid,
    SYS_getppid,
    SYS_gettid,
    SYS_getuid,
    SYS_geteuid,
    SYS_getgid,
    SYS_getegid,
    SYS_getpgrp,
    SYS_getrandom,
    SYS_getrusage,
    SYS_getrlimit,
    SYS_prlimit64,
    SYS_sysinfo,
    SYS_uname,
    SYS_umask,
    SYS_prctl,
    SYS_arch_prctl,
    SYS_clone,
    SYS_clone3,
    SYS_fork,
    SYS_vfork,
    SYS_execve,
    SYS_wait4,
    SYS_waitid,
    SYS_exit,
    SYS_exit_group,
    SYS_kill,
    SYS_tgkill,
    SYS_rt_sigaction,
    SYS_rt_sigprocmask,
    SYS_rt_sigreturn,
    SYS_rt_sigtimedwait,
    SYS_rt_sigsuspend,
    SYS_sigaltstack,
    SYS_restart_syscall,
    SYS_rseq,
    SYS_set_robust_list,
    SYS_set_tid_address,
    SYS_sched_getaffinity,
    SYS_membarrier,
};

sock_filter Statement(int code, std::uint32_t value) {
    return {static_cast<std::uint16_t>(code), 0, 0, value};
}

sock_filter Jump(int code, std::uint32_t value, std::uint8_t ifTrue, std::uint8_t ifFalse) {
    return {static_cast<std::uint16_t>(code), ifTrue, ifFalse, value};
}

std::uint32_t ArgumentOffset(int index) {
    return static_cast<std::uint32_t>(offsetof(seccomp_data, args) +
                                      static_cast<std::size_t>(index) * sizeof(std::uint64_t));
}

// Makes the filter stop at the calls of the row.
void AppendRow(std::vector<sock_filter>& program, const CallRow& row) {
    const auto number = static_cast<std::uint32_t>(row.number);
    if (row.flags == kNoArgument) {
        program.push_back(Jump(BPF_JMP | BPF_JEQ | BPF_K, number, 0, 1));
        program.push_back(Statement(BPF_RET | BPF_K, SECCOMP_RET_TRACE));
        return;
    }
    const int test = row.match == Match::kEqual ? BPF_JEQ : BPF_JSET;
    const bool wanted = row.match != Match::kNoBit;
    program.push_back(Jump(BPF_JMP | BPF_JEQ | BPF_K, number, 0, 4));
    program.push_back(Statement(BPF_LD | BPF_W | BPF_ABS, ArgumentOffset(row.flags)));
    program.push_back(Jump(BPF_JMP | test | BPF_K, row.bits, wanted ? 0 : 1, wanted ? 1 : 0));
    program.push_back(Statement(BPF_RET | BPF_K, SECCOMP_RET_TRACE));
    program.push_back(Statement(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)));
}

// Makes the filter ignore the call.
void AppendHarmless(std::vector<sock_filter>& program, int call) {
    program.push_back(Jump(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(call), 0, 1));
    program.push_back(Statement(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
}

// Repeats the filter's decision for a call at which the filter stopped.
bool IsOfRow(const CallRow& row, std::uint64_t number, const std::uint64_t* arguments) {
    if (static_cast<std::uint64_t>(row.number) != number) return false;
    if (row.flags == kNoArgument) return true;
    const auto argument = static_cast<std::uint32_t>(arguments[row.flags]);
    switch (row.match) {
        case Match::kAnyBit: return (argument & row.bits) != 0;
        case Match::kNoBit: return (argument & row.bits) == 0;
        case Match::kEqual: return argument == row.bits;
    }
    return false;
}

template <std::size_t Count>
const CallRow* FindRow(const CallRow (&rows)[Count], std::uint64_t number, const std::uint64_t* arguments) {
    const CallRow* const row =
        std::find_if(rows, rows + Count, [&](const CallRow& one) { return IsOfRow(one, number, arguments); });
    return row == rows + Count ? nullptr : row;
}

// Returns the target of a link in /proc, or an empty string if it cannot be read.
std::string ReadLink(pid_t thread, const std::string& name) {
    char target[PATH_MAX];
    const std::string link = "/proc/" + std::to_string(thread) + "/" + name;
    const ssize_t length = readlink(link.c_str(), target, sizeof target);
    return length > 0 ? std::string(target, static_cast<std::size_t>(length)) : "";
}

bool ReadText(pid_t thread, std::uint64_t address, std::string& text) {
    constexpr std::size_t kPage = 4096;
    text.clear();
    while (text.size() < PATH_MAX) {
        // Reads only to the end of a page, because the next page may not exist.
        char bytes[kPage];
        const std::size_t wanted = kPage - (address + text.size()) % kPage;
        iovec here = {bytes, wanted};
        // NOLINTNEXTLINE(performance-no-int-to-ptr): an address in another process
        iovec there = {reinterpret_cast<void*>(address + text.size()), wanted};
        const ssize_t got = process_vm_readv(thread, &here, 1, &there, 1, 0);
        if (got <= 0) return false;
        const std::size_t length = strnlen(bytes, static_cast<std::size_t>(got));
        text.append(bytes, length);
        if (length < static_cast<std::size_t>(got)) return true;
    }
    return false;
}

}  // namespace

bool StopAtStateCalls(bool alsoLooks) {
    std::vector<sock_filter> program = {
        Statement(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, arch)),
        Jump(BPF_JMP | BPF_JEQ | BPF_K, AUDIT_ARCH_X86_64, 1, 0),
        Statement(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS),
        Statement(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
    };
    for (const CallRow& row : kCallRows)
        AppendRow(program, row);
    if (alsoLooks) {
        for (const CallRow& row : kLooks)
            AppendRow(program, row);
    }
    // A call that a row lists with an argument changes nothing if the argument does not match.
    for (const CallRow& row : kCallRows) {
        if (row.flags != kNoArgument) AppendHarmless(program, row.number);
    }
    for (const CallRow& row : kLooks)
        AppendHarmless(program, row.number);
    for (const int harmless : kHarmlessCalls)
        AppendHarmless(program, harmless);
    program.push_back(Statement(BPF_RET | BPF_K, SECCOMP_RET_TRACE));
    const sock_fprog filter = {static_cast<unsigned short>(program.size()), program.data()};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

bool ReadStateCall(pid_t thread, StateCall& call) {
    __ptrace_syscall_info information = {};
    if (ptrace(PTRACE_GET_SYSCALL_INFO, thread, sizeof information, &information) <= 0 ||
        information.op != PTRACE_SYSCALL_INFO_SECCOMP) {
        return false;
    }
    const auto& seccomp = information.seccomp;
    const CallRow* row = FindRow(kCallRows, seccomp.nr, seccomp.args);
    if (row == nullptr) {
        row = FindRow(kLooks, seccomp.nr, seccomp.args);
        call.looks = row != nullptr;
    }
    if (row == nullptr) {
        call.name = "number " + std::to_string(seccomp.nr);
        call.isKnown = false;
        return true;
    }
    call.name = row->name;
    call.length = row->length == kNoArgument ? 0 : seccomp.args[row->length];
    // A descriptor is closed even if close fails.
    call.failsWhenDone = row->number == SYS_close;
    const int descriptor =
        row->descriptor == kNoArgument ? AT_FDCWD : static_cast<int>(seccomp.args[row->descriptor]);
    if (row->path != kNoArgument && !ReadText(thread, seccomp.args[row->path], call.path)) return false;
    if (!call.path.empty() && call.path.front() == '/') return true;
    const std::string begin =
        ReadLink(thread, descriptor == AT_FDCWD ? "cwd" : "fd/" + std::to_string(descriptor));
    call.path = call.path.empty() ? begin : begin + "/" + call.path;
    call.isKnown = row->number != SYS_mmap || begin.empty();
    return true;
}

bool CutWrite(pid_t thread, std::uint64_t length) {
    user_regs_struct registers = {};
    if (ptrace(PTRACE_GETREGS, thread, nullptr, &registers) != 0) return false;
    registers.rdx = length;
    return ptrace(PTRACE_SETREGS, thread, nullptr, &registers) == 0;
}

bool FailDoneCall(pid_t thread, int error) {
    user_regs_struct registers = {};
    if (ptrace(PTRACE_GETREGS, thread, nullptr, &registers) != 0) return false;
    registers.rax = static_cast<unsigned long long>(-static_cast<long long>(error));
    return ptrace(PTRACE_SETREGS, thread, nullptr, &registers) == 0;
}

bool FailCall(pid_t thread, int error) {
    user_regs_struct registers = {};
    if (ptrace(PTRACE_GETREGS, thread, nullptr, &registers) != 0) return false;
    // No call has this number, so the kernel makes no call and leaves the result as it is.
    registers.orig_rax = static_cast<unsigned long long>(-1);
    registers.rax = static_cast<unsigned long long>(-static_cast<long long>(error));
    return ptrace(PTRACE_SETREGS, thread, nullptr, &registers) == 0;
}
