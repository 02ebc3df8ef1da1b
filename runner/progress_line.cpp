#include "runner/progress_line.h"

#include <algorithm>
#include <cmath>
#include <unistd.h>

#include <fmt/format.h>

#include "runner/messages.h"

namespace tessarine {

namespace {

std::string clockText(double seconds) {
    const auto whole = std::llround(seconds);
    if (whole >= 3600)
        return fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
    return fmt::format("{}:{:02}", whole / 60, whole % 60);
}

}  // namespace

ProgressLine::ProgressLine(bool shown, int64_t pictures)
    : shown_(shown), onTerminal_(::isatty(STDERR_FILENO) != 0), pictures_(pictures) {}

void ProgressLine::update(int64_t done) {
    if (!shown_) return;
    const Clock::time_point now = Clock::now();
    const std::chrono::duration<double> pause = now - last_;
    if (done < pictures_ && pause.count() < (onTerminal_ ? 0.1 : 1.0)) return;
    last_ = now;
    const std::chrono::duration<double> passed = now - start_;
    const double rate = static_cast<double>(done) / std::max(passed.count(), 1e-6);
    const double left = static_cast<double>(pictures_ - done) / std::max(rate, 1e-6);
    writeToTerminal(fmt::format("{}{} of {} pictures, {:.1f} a second, {} left{}",
                                onTerminal_ ? "\r" : "", done, pictures_, rate, clockText(left),
                                onTerminal_ ? "\x1b[K" : "\n"));
}

void ProgressLine::clear() {
    if (shown_ && onTerminal_) writeToTerminal("\r\x1b[K");
}

}  // namespace tessarine
