#include "wizard/session_bus.h"

#include <QFileInfo>

namespace tessarine {

QDBusConnection sessionBus() {
    const bool isThere = qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS") ||
                         QFileInfo::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + "/bus");
    return isThere ? QDBusConnection::sessionBus() : QDBusConnection("none");
}

}  // namespace tessarine
