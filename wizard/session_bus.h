#pragma once

#include <QDBusConnection>

namespace tessarine {

/// The bus of the person's session; one that is not connected where the session has none. Looking
/// for a bus where none can be may start one, which takes its time and outlives the program.
QDBusConnection sessionBus();

}  // namespace tessarine
