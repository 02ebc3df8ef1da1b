#include "imagefiles/worker/sandbox.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "imagefiles/worker/build.h"
#include "imagefiles/worker/folder_rules.h"
#include "imagefiles/worker/system_calls.h"

namespace tessarine {

namespace {

void lower(__rlimit_resource_t resource, rlim_t most) {
    rlimit limit{};
    if (getrlimit(resource, &limit) != 0) return;
    limit.rlim_max = std::min(limit.rlim_max, most);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(resource, &limit);
}

void add(std::string& list, const std::string& word) {
    if (word.empty()) return;
    if (!list.empty()) list += ", ";
    list += word;
}

/// When memory runs out, a helper goes first: it holds one picture, the program holds the run.
void volunteerWhenMemoryRunsOut() {
    const int file = open("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC);
    if (file < 0) return;
    static_cast<void>(!::write(file, "1000", 4));
    close(file);
}

/// Root too serves without root's rights: they would lift the limits again.
bool dropRootsRights() {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    const __user_cap_data_struct none[_LINUX_CAPABILITY_U32S_3] = {};
    return syscall(SYS_capset, &header, none) == 0;
}

}  // namespace

std::optional<HelperKind> helperKindOf(std::string_view word) {
    if (word == "files") return HelperKind::files;
    if (word == "drawing") return HelperKind::drawing;
    return std::nullopt;
}

bool dieWithParent(pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    // The parent may have ended before the call; then this process has another one.
    return getppid() == parent;
}

void renounceHabits() {
    // Stopped with the program, it would find its picture's time gone when both go on.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP, SIGPIPE, SIGXFSZ})
        std::signal(signal, SIG_IGN);
    // These end it, whatever its parent did with them.
    for (const int signal : {SIGXCPU, SIGALRM, SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL})
        std::signal(signal, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);

    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (int number = 0; nowhere >= 0 && number <= (isSanitized ? 1 : 2); ++number)
        dup2(nowhere, number);
    if (nowhere > 2) close(nowhere);

    volunteerWhenMemoryRunsOut();
    if (isSanitized) return;
    lower(RLIMIT_CORE, 0);
    lower(RLIMIT_NOFILE, 64);
    // No format's largest picture comes to this; SIGXFSZ being ignored, it is an error of writing.
    lower(RLIMIT_FSIZE, rlim_t{8} << 30);
    // A core handler of the system would be handed the picture in spite of the limit, and each bad
    // file would wait for it. It also keeps this user's other programs out of this process.
    prctl(PR_SET_DUMPABLE, 0);
}

std::string lockIn(HelperKind kind) {
    std::string refused;
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) add(refused, "new rights are possible");
    if (isSanitized) return refused;
    if (!dropRootsRights()) add(refused, "root's rights remain");
    if (!confineToFolders(kind)) add(refused, "no folder restriction");
    if (!filterSystemCalls(kind)) add(refused, "no system call filter");
    return refused;
}

}  // namespace tessarine
