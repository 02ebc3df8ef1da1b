#include "imagefiles/worker/request_limits.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>

#include "imagefiles/worker/build.h"

namespace tessarine {

namespace {

constexpr double wallPerProcessor = 3;

timeval timeOf(double seconds) {
    constexpr double most = 1e9;
    seconds = std::min(seconds, most);
    timeval time{};
    time.tv_sec = static_cast<time_t>(seconds);
    time.tv_usec = static_cast<suseconds_t>((seconds - std::floor(seconds)) * 1e6);
    return time;
}

double secondsOf(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

/// Time on the wall until SIGALRM; 0 for never. \return what was left
double setAlarm(double seconds) {
    itimerval before{};
    itimerval timer{};
    timer.it_value = timeOf(seconds);
    setitimer(ITIMER_REAL, &timer, &before);
    return secondsOf(before.it_value);
}

double processorSeconds() {
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    return secondsOf(used.ru_utime) + secondsOf(used.ru_stime);
}

void setSoftLimit(__rlimit_resource_t resource, rlim_t value) {
    rlimit limit{};
    if (getrlimit(resource, &limit) != 0) return;
    limit.rlim_cur = std::min(value, limit.rlim_max);
    setrlimit(resource, &limit);
}

}  // namespace

RequestLimits RequestLimits::ofThisProcess() {
    RequestLimits limits;
    limits.enabled_ = true;
    limits.figures_ = Descriptor(open("/proc/self/statm", O_RDONLY | O_CLOEXEC));
    limits.base_ = limits.addressSpace();
    return limits;
}

uint64_t RequestLimits::addressSpace() const {
    std::array<char, 128> text{};
    if (!figures_ || pread(figures_.get(), text.data(), text.size() - 1, 0) <= 0) return 0;
    static const auto pageBytes = static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
    return std::strtoull(text.data(), nullptr, 10) * pageBytes;
}

bool RequestLimits::isTight(uint64_t ceiling) const {
    return enabled_ && limitsMemory && addressSpace() > base_ + ceiling / 2;
}

void RequestLimits::begin(uint64_t ceiling) {
    if (!enabled_) return;
    // What the program allows does not change while it lives. The hard limit cannot be raised
    // again, whoever is in command of this process by then.
    rlimit limit{};
    const uint64_t most = base_ + std::min(ceiling, RLIM_INFINITY / 4);
    if (!limitsMemory || base_ == 0 || getrlimit(RLIMIT_AS, &limit) != 0) return;
    limit.rlim_max = std::min<rlim_t>(limit.rlim_max, most);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_AS, &limit);
}

void RequestLimits::set(uint64_t pixels, double wishedSeconds, uint64_t ceiling) {
    if (!enabled_) return;
    LimitWishes wishes;
    wishes.memoryBytes = ceiling;
    if (wishedSeconds > 0) wishes.seconds = wishedSeconds;
    const Limits limits = limitsFor(pixels, wishes);
    const uint64_t now = addressSpace();
    if (limitsMemory && now != 0)
        setSoftLimit(RLIMIT_AS, now + std::min(limits.memoryBytes, RLIM_INFINITY / 4));
    // The kernel counts whole seconds.
    const double used = processorSeconds();
    setSoftLimit(RLIMIT_CPU, static_cast<rlim_t>(std::ceil(std::min(used + limits.seconds, 1e15))));
    setAlarm(wishedSeconds > 0 ? wishedSeconds : limits.seconds * wallPerProcessor);
}

void RequestLimits::end() {
    if (!enabled_) return;
    setAlarm(0);
    setSoftLimit(RLIMIT_CPU, RLIM_INFINITY);
    setSoftLimit(RLIMIT_AS, RLIM_INFINITY);
}

void RequestLimits::pauseClock() {
    if (enabled_) secondsLeft_ = setAlarm(0);
}

void RequestLimits::resumeClock() {
    // A clock that had run out while it was stopped would never strike again.
    if (enabled_) setAlarm(std::max(secondsLeft_, 0.001));
}

}  // namespace tessarine
