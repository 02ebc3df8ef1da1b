#include "runner/signals.h"

#include <csignal>
#include <fcntl.h>
#include <initializer_list>
#include <unistd.h>

namespace tessarine {

namespace {

volatile std::sig_atomic_t signalSeen = 0;

}  // namespace

void listenToSignals() {
    struct sigaction stop {};
    stop.sa_handler = [](int number) { signalSeen = number; };
    stop.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
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

void openStandardFiles() {
    for (int file = STDIN_FILENO; file <= STDERR_FILENO; ++file)
        if (::fcntl(file, F_GETFD) < 0) static_cast<void>(::open("/dev/null", O_RDWR));
}

}  // namespace tessarine
