#include "imagefiles/worker/system_calls.h"

#include <cerrno>
#include <fcntl.h>
#include <initializer_list>
#include <memory>
#include <sched.h>
#include <seccomp.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace tessarine {

namespace {

struct Release {
    void operator()(void* filter) const { seccomp_release(filter); }
};

/// The list of what is allowed. Calls that this machine's kernel never had are left out of it.
class Filter {
  public:
    Filter() : filter_(seccomp_init(SCMP_ACT_ERRNO(EPERM))) {}

    void allow(std::initializer_list<int> calls) {
        for (const int call : calls)
            add(SCMP_ACT_ALLOW, call, {});
    }
    void allowIf(int call, std::initializer_list<scmp_arg_cmp> conditions) {
        add(SCMP_ACT_ALLOW, call, conditions);
    }
    void answer(int call, int error) {
        add(SCMP_ACT_ERRNO(static_cast<uint32_t>(error)), call, {});
    }
    bool load() {
        // A handful of calls makes up nearly all; a search by halves finds them soonest.
        seccomp_attr_set(filter_.get(), SCMP_FLTATR_CTL_OPTIMIZE, 2);
        return good_ && seccomp_load(filter_.get()) == 0;
    }
    bool isMade() const { return filter_ != nullptr; }

  private:
    void add(uint32_t action, int call, std::initializer_list<scmp_arg_cmp> conditions) {
        const int status =
            seccomp_rule_add_array(filter_.get(), action, call,
                                   static_cast<unsigned>(conditions.size()), conditions.begin());
        if (status != 0 && status != -EDOM) good_ = false;
    }

    std::unique_ptr<void, Release> filter_;
    bool good_ = true;
};

uint64_t bits(int flags) { return static_cast<uint64_t>(static_cast<unsigned>(flags)); }

/// Whether argument `number` has these bits of a mask.
scmp_arg_cmp masked(unsigned number, uint64_t mask, uint64_t value) {
    return SCMP_CMP64(number, SCMP_CMP_MASKED_EQ, mask, value);
}
scmp_arg_cmp equal(unsigned number, uint64_t value) {
    return SCMP_CMP64(number, SCMP_CMP_EQ, value, 0);
}

void allowWork(Filter& filter) {
    // The descriptors that it holds.
    filter.allow({SCMP_SYS(read), SCMP_SYS(readv), SCMP_SYS(pread64), SCMP_SYS(preadv),
                  SCMP_SYS(write), SCMP_SYS(writev), SCMP_SYS(pwrite64), SCMP_SYS(pwritev),
                  SCMP_SYS(lseek), SCMP_SYS(_llseek), SCMP_SYS(close), SCMP_SYS(fstat),
                  SCMP_SYS(fstat64), SCMP_SYS(ftruncate), SCMP_SYS(ftruncate64), SCMP_SYS(sendmsg),
                  SCMP_SYS(recvmsg), SCMP_SYS(poll), SCMP_SYS(ppoll)});
    for (const int command : {F_GETFL, F_GETFD, F_SETFD, F_GET_SEALS, F_DUPFD_CLOEXEC})
        filter.allowIf(SCMP_SYS(fcntl), {equal(1, bits(command))});
    // Memory.
    filter.allow({SCMP_SYS(brk), SCMP_SYS(munmap), SCMP_SYS(mremap), SCMP_SYS(madvise)});
    // Threads, the clock, and the process itself.
    filter.allow({SCMP_SYS(futex),
                  SCMP_SYS(futex_time64),
                  SCMP_SYS(set_robust_list),
                  SCMP_SYS(rseq),
                  SCMP_SYS(sched_yield),
                  SCMP_SYS(sched_getaffinity),
                  SCMP_SYS(getcpu),
                  SCMP_SYS(membarrier),
                  SCMP_SYS(sysinfo),
                  SCMP_SYS(uname),
                  SCMP_SYS(getrandom),
                  SCMP_SYS(clock_gettime),
                  SCMP_SYS(clock_getres),
                  SCMP_SYS(clock_nanosleep),
                  SCMP_SYS(nanosleep),
                  SCMP_SYS(gettimeofday),
                  SCMP_SYS(time),
                  SCMP_SYS(getpid),
                  SCMP_SYS(gettid),
                  SCMP_SYS(getppid),
                  SCMP_SYS(getuid),
                  SCMP_SYS(geteuid),
                  SCMP_SYS(getgid),
                  SCMP_SYS(getegid),
                  SCMP_SYS(getrusage),
                  SCMP_SYS(setitimer),
                  SCMP_SYS(getitimer),
                  SCMP_SYS(rt_sigaction),
                  SCMP_SYS(rt_sigprocmask),
                  SCMP_SYS(rt_sigreturn),
                  SCMP_SYS(sigaltstack),
                  SCMP_SYS(restart_syscall),
                  SCMP_SYS(exit),
                  SCMP_SYS(exit_group)});
    filter.allowIf(SCMP_SYS(prctl), {equal(0, bits(PR_SET_NAME))});
    // Its limits, not another process's.
    filter.allow({SCMP_SYS(getrlimit)});
    filter.allowIf(SCMP_SYS(prlimit64), {equal(0, 0)});
    // A signal to itself: a library that aborts.
    filter.allowIf(SCMP_SYS(tgkill), {equal(0, bits(getpid()))});
    // Threads, but no processes. What the newer call would do stands in memory, where a filter
    // cannot look; without it the older one is made.
    filter.allowIf(SCMP_SYS(clone), {masked(0, bits(CLONE_THREAD), bits(CLONE_THREAD))});
    filter.answer(SCMP_SYS(clone3), ENOSYS);
}

void allowFiles(Filter& filter) {
    // Size and kind of what is open: a path would need the flag to be missing.
    filter.allowIf(SCMP_SYS(newfstatat), {masked(3, AT_EMPTY_PATH, AT_EMPTY_PATH)});
    // No memory that holds new code.
    for (const int call : {SCMP_SYS(mmap), SCMP_SYS(mmap2), SCMP_SYS(mprotect)})
        filter.allowIf(call, {masked(2, PROT_EXEC, 0)});
}

/// Drawing looks for fonts, and loads the libraries of rarer encodings.
void allowDrawing(Filter& filter) {
    const uint64_t writing = bits(O_ACCMODE | O_CREAT | O_TRUNC | O_APPEND);
    filter.allowIf(SCMP_SYS(open), {masked(1, writing, O_RDONLY)});
    filter.allowIf(SCMP_SYS(openat), {masked(2, writing, O_RDONLY)});
    filter.allow({SCMP_SYS(stat), SCMP_SYS(lstat), SCMP_SYS(newfstatat), SCMP_SYS(statx),
                  SCMP_SYS(access), SCMP_SYS(faccessat), SCMP_SYS(faccessat2), SCMP_SYS(getdents),
                  SCMP_SYS(getdents64), SCMP_SYS(readlink), SCMP_SYS(readlinkat), SCMP_SYS(statfs),
                  SCMP_SYS(fstatfs), SCMP_SYS(getcwd), SCMP_SYS(fadvise64), SCMP_SYS(eventfd2),
                  SCMP_SYS(mmap), SCMP_SYS(mmap2), SCMP_SYS(mprotect)});
}

}  // namespace

bool filterSystemCalls(HelperKind kind) {
    Filter filter;
    if (!filter.isMade()) return false;
    allowWork(filter);
    if (kind == HelperKind::drawing)
        allowDrawing(filter);
    else
        allowFiles(filter);
    return filter.load();
}

}  // namespace tessarine
