#include "runner/signals.h"

#include <csignal>
#include <cstdint>
#include <ctime>
#include <fcntl.h>
#include <initializer_list>
#include <unistd.h>

namespace tessarine {

namespace {

volatile std::sig_atomic_t signalSeen = 0;

int64_t firstSeen = 0;

int64_t millisecondsNow() {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1000000;
}

void askToStop(int number) {
    if (signalSeen == 0) {
        firstSeen = millisecondsNow();
        signalSeen = number;
        return;
    }
    // timeout(1) signals its child and then its child's whole group, and a terminal that goes may
    // be told of twice as well: that is one wish.
    constexpr int64_t oneWish = 100;
    if (number == signalSeen && millisecondsNow() - firstSeen < oneWish) return;
    // The signal comes again, and is not caught, as soon as this function has returned.
    std::signal(number, SIG_DFL);
    std::raise(number);
}

}  // namespace

void listenToSignals() {
    struct sigaction stop {};
    stop.sa_handler = askToStop;
    stop.sa_flags = SA_RESTART;
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        ::sigaddset(&stop.sa_mask, number);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction inherited {};
        if (::sigaction(number, nullptr, &inherited) == 0 && inherited.sa_handler != SIG_IGN)
            ::sigaction(number, &stop, nullptr);
    }
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    for (const int number : {SIGPIPE, SIGXFSZ})
        ::sigaction(number, &ignore, nullptr);
}

bool interrupted() { return signalSeen != 0; }

bool terminated() { return signalSeen == SIGTERM; }

void openStandardFiles() {
    for (int file = STDIN_FILENO; file <= STDERR_FILENO; ++file)
        if (::fcntl(file, F_GETFD) < 0) static_cast<void>(::open("/dev/null", O_RDWR));
}

}  // namespace tessarine
