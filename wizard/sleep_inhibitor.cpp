#include "wizard/sleep_inhibitor.h"

#include <iterator>

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace tessarine {

namespace {

constexpr const char* reason = "Images are being processed";

}  // namespace

const SleepInhibitor::SessionService SleepInhibitor::sessionServices[2] = {
    {"org.freedesktop.PowerManagement", "/org/freedesktop/PowerManagement/Inhibit",
     "org.freedesktop.PowerManagement.Inhibit"},
    {"org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver", "org.freedesktop.ScreenSaver"},
};

SleepInhibitor::SleepInhibitor(QDBusConnection system, QDBusConnection session, QObject* parent)
    : QObject(parent), system_(std::move(system)), session_(std::move(session)) {}

SleepInhibitor::~SleepInhibitor() { keepAwake(false); }

void SleepInhibitor::keepAwake(bool awake) {
    if (awake == awake_) return;
    awake_ = awake;
    ++asked_;
    if (awake) {
        // A bus that is not there gives no answer either.
        if (system_.isConnected()) {
            askLoginManager();
        } else {
            askSession();
        }
        return;
    }
    loginLock_ = {};
    for (size_t i = 0; i < std::size(sessionServices); ++i) {
        if (cookies_[i]) release(i, *cookies_[i]);
        cookies_[i].reset();
    }
}

void SleepInhibitor::askLoginManager() {
    QDBusMessage call =
        QDBusMessage::createMethodCall("org.freedesktop.login1", "/org/freedesktop/login1",
                                       "org.freedesktop.login1.Manager", "Inhibit");
    call << "sleep:idle"
         << "Tessarine" << reason << "block";
    auto* answer = new QDBusPendingCallWatcher(system_.asyncCall(call), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, asked = asked_] {
        answer->deleteLater();
        if (asked != asked_) return;
        const QDBusPendingReply<QDBusUnixFileDescriptor> reply = *answer;
        if (reply.isValid()) {
            loginLock_ = reply.value();
            return;
        }
        askSession();
    });
}

void SleepInhibitor::askSession() {
    if (!session_.isConnected()) return;
    for (size_t i = 0; i < std::size(sessionServices); ++i)
        askSession(i);
}

void SleepInhibitor::askSession(size_t service) {
    const SessionService& asked = sessionServices[service];
    QDBusMessage call =
        QDBusMessage::createMethodCall(asked.name, asked.path, asked.interface, "Inhibit");
    call << "Tessarine" << reason;
    auto* answer = new QDBusPendingCallWatcher(session_.asyncCall(call), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this,
            [this, answer, service, number = asked_] {
                answer->deleteLater();
                const QDBusPendingReply<uint32_t> reply = *answer;
                if (!reply.isValid()) return;
                if (number == asked_) {
                    cookies_[service] = reply.value();
                } else {
                    release(service, reply.value());
                }
            });
}

void SleepInhibitor::release(size_t service, uint32_t cookie) {
    const SessionService& holder = sessionServices[service];
    QDBusMessage call =
        QDBusMessage::createMethodCall(holder.name, holder.path, holder.interface, "UnInhibit");
    call << cookie;
    session_.send(call);
}

}  // namespace tessarine
