#include "imagefiles/codec/helper_link.h"

#include <algorithm>
#include <cstdio>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <utility>

#include "imagefiles/codec/requests.h"
#include "pixels/failures.h"

namespace tessarine {

namespace {

using namespace std::chrono_literals;
using Seconds = std::chrono::duration<double>;

/// How long a helper may take to make itself ready, on however busy a machine.
constexpr Seconds startPatience = 20s;
/// How long a helper may leave so many packets unread that no more can be sent.
constexpr timeval sendPatience{5, 0};
constexpr auto tick = 50ms;
constexpr auto quietTime = 200ms;
/// A program that sleeps so much longer than a tick was stopped, and so was its helper.
constexpr auto standstill = 500ms;

std::string secondsText(Seconds seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3g", seconds.count());
    return std::string(text) + (std::string(text) == "1" ? " second" : " seconds");
}

/// Nobody wants the answer any more.
struct Off {};

}  // namespace

HelperLink::HelperLink(std::unique_ptr<Helper> helper) : helper_(std::move(helper)) {
    ::setsockopt(helper_->socket(), SOL_SOCKET, SO_SNDTIMEO, &sendPatience, sizeof sendPatience);
}

bool HelperLink::isQuiet() const {
    pollfd entry{helper_->socket(), POLLIN, 0};
    return ::poll(&entry, 1, 0) == 0;
}

bool HelperLink::talks() const {
    uint8_t byte = 0;
    return ::recv(helper_->socket(), &byte, 1, MSG_PEEK | MSG_DONTWAIT) > 0;
}

Received HelperLink::receive(Clock::time_point& start, Seconds patience,
                             const Waiting& waiting) const {
    for (;;) {
        const auto now = Clock::now();
        // Sums of whole ticks: a wish of many years would not fit the clock.
        const Seconds left = patience - Seconds(now - start);
        const auto pause = std::clamp<Clock::duration>(
            std::chrono::duration_cast<Clock::duration>(std::min<Seconds>(left, tick)), 0ms, tick);
        Received received = receivePacket(helper_->socket(), now + pause, false);
        if (received.end != Received::End::timeout || left <= Seconds(0)) return received;
        const auto woken = Clock::now();
        if (woken - now > pause + standstill) start += woken - now - pause;
        if (waiting.isOff && waiting.isOff()) throw Off();
        if (waiting.meanwhile && woken - start > quietTime) waiting.meanwhile();
    }
}

std::string HelperLink::awaitReady(const Waiting& waiting) {
    auto start = Clock::now();
    // Helpers are few: one that nobody waits for any more is waited for all the same.
    const Received received = receive(start, startPatience, {waiting.meanwhile, {}});
    if (received.end == Received::End::timeout) {
        helper_->kill();
        throw StatementFailed("the helper process did not make itself ready within " +
                              secondsText(startPatience));
    }
    if (received.end == Received::End::closed)
        throw StatementFailed("the helper process " + helper_->awaitEnd().inWords() +
                              " before it was ready");
    const std::optional<ToProgram> message = messageToProgram(received.packet);
    const auto* ready = message ? std::get_if<Ready>(&*message) : nullptr;
    if (ready == nullptr || ready->version != protocolVersion) {
        helper_->kill();
        throw StatementFailed("the helper program is not that of this version");
    }
    ready_ = true;
    return printable(ready->refused);
}

HelperLink::Outcome HelperLink::ask(HelperRequest& request, uint32_t number,
                                    const Waiting& waiting) {
    Outcome outcome;
    try {
        outcome = served(request, number, waiting);
    } catch (const Off&) {
        outcome = {End::off, "nobody wants it any more"};
    } catch (const HelperLied& lie) {
        outcome = {End::died, std::string("the helper process broke its rules: ") + lie.what()};
    }
    if (outcome.end != End::answered) helper_->kill();
    return outcome;
}

HelperLink::Outcome HelperLink::served(HelperRequest& request, uint32_t number,
                                       const Waiting& waiting) {
    const Packet packet = packetOf(request.begin(number));
    auto start = Clock::now();
    const auto begun = start;
    if (!sendPacket(helper_->socket(), packet, request.descriptors())) {
        return {End::notTaken, "the helper process " + helper_->awaitEnd().inWords() +
                                   " before it took the picture"};
    }
    for (bool first = true;; first = false) {
        const Received received = receive(start, request.patience(), waiting);
        if (received.end == Received::End::timeout)
            return {End::timedOut, "not done within " + secondsText(request.patience())};
        if (received.end == Received::End::broken) throw HelperLied("it sent what is no message");
        if (received.end == Received::End::closed) {
            const HelperEnd end = helper_->awaitEnd();
            if (first && received.unread)
                return {End::notTaken,
                        "the helper process " + end.inWords() + " before it took the picture"};
            if (end.isOutOfTime())
                return {End::timedOut, "not done within its time, stopped after " +
                                           secondsText(Clock::now() - begun)};
            return {End::died, "the helper process " + end.inWords()};
        }
        const std::optional<ToProgram> message = messageToProgram(received.packet);
        if (!message) throw HelperLied("it sent what is no message");
        const auto heard = Clock::now();
        try {
            if (!request.hear(*message, helper_->socket())) {
                start += Clock::now() - heard;
                continue;
            }
        } catch (const WrongNumber& lie) {
            // Numbers cannot be foreseen: this was said before the request was there, and its
            // picture has no part in it.
            if (first && answered_) return {End::notTaken, lie.what()};
            throw;
        }
        if (talks()) throw HelperLied("it said more than was asked");
        answered_ = true;
        return {};
    }
}

}  // namespace tessarine
