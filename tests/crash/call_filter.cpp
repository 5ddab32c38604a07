#include "tests/crash/call_filter.h"

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <unistd.h>

#include <climits>
#include <cstddef>
#include <cstring>
#include <vector>

namespace {

constexpr int kNone = -1;

struct CallRow {
    int number;
    const char* name;
    int descriptor;  // index of the argument: of the file itself, or of the folder that the path begins at
    int path;        // index of the argument, or kNone: the descriptor is the file
    int length;      // index of the argument, or kNone
    int flags;       // index of the argument that tells whether an open makes or empties a file, or kNone
};

constexpr CallRow kCalls[] = {
    {SYS_write, "write", 0, kNone, 2, kNone},
    {SYS_pwrite64, "pwrite64", 0, kNone, 2, kNone},
    {SYS_writev, "writev", 0, kNone, kNone, kNone},
    {SYS_pwritev, "pwritev", 0, kNone, kNone, kNone},
    {SYS_copy_file_range, "copy_file_range", 2, kNone, kNone, kNone},
    {SYS_sendfile, "sendfile", 0, kNone, kNone, kNone},
    {SYS_ftruncate, "ftruncate", 0, kNone, kNone, kNone},
    {SYS_fallocate, "fallocate", 0, kNone, kNone, kNone},
    {SYS_fsync, "fsync", 0, kNone, kNone, kNone},
    {SYS_fdatasync, "fdatasync", 0, kNone, kNone, kNone},
    {SYS_fchmod, "fchmod", 0, kNone, kNone, kNone},
    {SYS_truncate, "truncate", kNone, 0, kNone, kNone},
    {SYS_open, "open", kNone, 0, kNone, 1},
    {SYS_openat, "openat", 0, 1, kNone, 2},
    {SYS_creat, "creat", kNone, 0, kNone, kNone},
    {SYS_rename, "rename", kNone, 0, kNone, kNone},
    {SYS_renameat, "renameat", 0, 1, kNone, kNone},
    {SYS_renameat2, "renameat2", 0, 1, kNone, kNone},
    {SYS_unlink, "unlink", kNone, 0, kNone, kNone},
    {SYS_unlinkat, "unlinkat", 0, 1, kNone, kNone},
    {SYS_mkdir, "mkdir", kNone, 0, kNone, kNone},
    {SYS_mkdirat, "mkdirat", 0, 1, kNone, kNone},
    {SYS_rmdir, "rmdir", kNone, 0, kNone, kNone},
    {SYS_link, "link", kNone, 1, kNone, kNone},
    {SYS_linkat, "linkat", 2, 3, kNone, kNone},
    {SYS_symlink, "symlink", kNone, 1, kNone, kNone},
    {SYS_symlinkat, "symlinkat", 1, 2, kNone, kNone},
    {SYS_chmod, "chmod", kNone, 0, kNone, kNone},
    {SYS_fchmodat, "fchmodat", 0, 1, kNone, kNone},
    {SYS_utimensat, "utimensat", 0, 1, kNone, kNone},
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

// A link in /proc, or an empty string.
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
        // Up to the end of a page: the next may not be there.
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

bool StopAtStateCalls() {
    std::vector<sock_filter> program = {
        Statement(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, arch)),
        Jump(BPF_JMP | BPF_JEQ | BPF_K, AUDIT_ARCH_X86_64, 1, 0),
        Statement(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS),
        Statement(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
    };
    for (const CallRow& row : kCalls) {
        const auto number = static_cast<std::uint32_t>(row.number);
        if (row.flags == kNone) {
            program.push_back(Jump(BPF_JMP | BPF_JEQ | BPF_K, number, 0, 1));
            program.push_back(Statement(BPF_RET | BPF_K, SECCOMP_RET_TRACE));
            continue;
        }
        program.push_back(Jump(BPF_JMP | BPF_JEQ | BPF_K, number, 0, 4));
        program.push_back(Statement(BPF_LD | BPF_W | BPF_ABS, ArgumentOffset(row.flags)));
        program.push_back(Jump(BPF_JMP | BPF_JSET | BPF_K, O_CREAT | O_TRUNC, 0, 1));
        program.push_back(Statement(BPF_RET | BPF_K, SECCOMP_RET_TRACE));
        program.push_back(Statement(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    }
    program.push_back(Statement(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
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
    for (const CallRow& row : kCalls) {
        if (static_cast<std::uint64_t>(row.number) != seccomp.nr) continue;
        call.name = row.name;
        call.length = row.length == kNone ? 0 : seccomp.args[row.length];
        const int descriptor =
            row.descriptor == kNone ? AT_FDCWD : static_cast<int>(seccomp.args[row.descriptor]);
        if (row.path != kNone && !ReadText(thread, seccomp.args[row.path], call.path)) return false;
        if (!call.path.empty() && call.path.front() == '/') return true;
        const std::string begin =
            ReadLink(thread, descriptor == AT_FDCWD ? "cwd" : "fd/" + std::to_string(descriptor));
        call.path = call.path.empty() ? begin : begin + "/" + call.path;
        return true;
    }
    return false;
}

bool CutWrite(pid_t thread, std::uint64_t length) {
    user_regs_struct registers = {};
    if (ptrace(PTRACE_GETREGS, thread, nullptr, &registers) != 0) return false;
    registers.rdx = length;
    return ptrace(PTRACE_SETREGS, thread, nullptr, &registers) == 0;
}
