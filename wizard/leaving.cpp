#include "wizard/leaving.h"

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

#include <QSocketNotifier>

namespace tessarine {

namespace {

constexpr int leavingSignals[] = {SIGINT, SIGTERM, SIGHUP};

/// A handler may do next to nothing; it leaves a byte for the event loop.
int bytes[2] = {-1, -1};

void leaveByte(int) {
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = write(bytes[1], &byte, 1);
}

}  // namespace

LeavingRequests::LeavingRequests(std::function<void()> leave, QObject* parent)
    : QObject(parent), leave_(std::move(leave)) {
    if (pipe2(bytes, O_CLOEXEC | O_NONBLOCK) != 0) return;
    notifier_ = new QSocketNotifier(bytes[0], QSocketNotifier::Read, this);
    connect(notifier_, &QSocketNotifier::activated, this, [this] {
        char byte = 0;
        if (read(bytes[0], &byte, 1) == 1) leave_();
    });
    struct sigaction action {};
    action.sa_handler = leaveByte;
    action.sa_flags = SA_RESTART;
    for (const int number : leavingSignals)
        sigaction(number, &action, nullptr);
}

LeavingRequests::~LeavingRequests() {
    if (notifier_ == nullptr) return;
    for (const int number : leavingSignals)
        std::signal(number, SIG_DFL);
    delete notifier_;
    close(bytes[0]);
    close(bytes[1]);
}

}  // namespace tessarine
