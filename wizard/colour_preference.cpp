#include "wizard/colour_preference.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QEventLoop>
#include <QTimer>

namespace tessarine {

namespace {

constexpr char service[] = "org.freedesktop.portal.Desktop";
constexpr char path[] = "/org/freedesktop/portal/desktop";
constexpr char interface[] = "org.freedesktop.portal.Settings";
constexpr char nameSpace[] = "org.freedesktop.appearance";
constexpr char colourScheme[] = "color-scheme";
constexpr uint prefersDark = 1;

}  // namespace

ColourPreference::ColourPreference(const QDBusConnection& bus,
                                   std::function<void(ColourScheme)> changed, QObject* parent)
    : QObject(parent), changed_(std::move(changed)) {
    if (bus.isConnected()) ask(bus);
}

void ColourPreference::ask(QDBusConnection bus) {
    bus.connect(service, path, interface, "SettingChanged", this,
                SLOT(settingChanged(QDBusMessage)));
    QDBusMessage question = QDBusMessage::createMethodCall(service, path, interface, "Read");
    question << QString(nameSpace) << QString(colourScheme);
    waiting_ = true;
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        const QDBusPendingReply<QVariant> reply = *watcher;
        waiting_ = false;
        if (reply.isValid()) take(reply.value());
        watcher->deleteLater();
        emit answered();
    });
}

void ColourPreference::wait(int milliseconds) {
    if (!waiting_) return;
    QEventLoop loop;
    connect(this, &ColourPreference::answered, &loop, &QEventLoop::quit);
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
}

// The whole message is asked for: with types of its own in the slot's name the bus may refuse the
// connection until something else has made those types known to it.
void ColourPreference::settingChanged(const QDBusMessage& change) {
    const QVariantList told = change.arguments();
    if (told.size() == 3 && told[0] == nameSpace && told[1] == colourScheme) take(told[2]);
}

void ColourPreference::take(const QVariant& value) {
    // The answer to a question comes wrapped once more than a change does.
    QVariant told = value;
    while (told.metaType() == QMetaType::fromType<QDBusVariant>())
        told = told.value<QDBusVariant>().variant();
    bool isNumber = false;
    const uint number = told.toUInt(&isNumber);
    if (!isNumber) return;
    const ColourScheme now = number == prefersDark ? ColourScheme::dark : ColourScheme::light;
    if (now == scheme_) return;
    scheme_ = now;
    changed_(now);
}

}  // namespace tessarine
