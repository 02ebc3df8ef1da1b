#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <fcntl.h>
#include <functional>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/paths.h"

// Disks other than the one that the tests run on: small ones, and ones that know less. Each is
// made for a process of its own.

namespace tessarine::tests {

/// What a child returns that could not make the disk it wants: its test skips.
constexpr int noDisk = 77;

/// Runs something in a process of its own. \return what it returned, 128 where it crashed
inline int inChild(const std::function<int()>& work) {
    // A process that ends like this one leaves its temp folder behind.
    const ScratchFolder temporary;
    const pid_t child = fork();
    if (child == 0) {
        setenv("TMPDIR", temporary.path().c_str(), 1);
        _exit(work());
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128;
}

/// Lets this process mount things that no other process sees. \return whether it may
inline bool ownMounts() {
    if (unshare(CLONE_NEWNS) != 0 && unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
    return mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

/// Puts a small disk of memory in place of a folder, for this process and its children.
inline bool mountSmallDisk(const std::string& folder, const char* options) {
    return ownMounts() && mount("tmpfs", folder.c_str(), "tmpfs", 0, options) == 0;
}

/// From now on no disk knows files without a name, for this process and its children.
/// \return whether that can be had
inline bool refuseUnnamedFiles() {
    constexpr uint32_t unnamed = O_TMPFILE & ~O_DIRECTORY;
    // openat(folder, path, flags, mode); the flags stand in the third argument's low half.
    sock_filter steps[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_openat, 0, 3),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args[2])),
        BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, unnamed, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EOPNOTSUPP),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog program{sizeof steps / sizeof *steps, steps};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

}  // namespace tessarine::tests
