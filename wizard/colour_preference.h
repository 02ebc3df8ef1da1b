#pragma once

#include <functional>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

#include "wizard/appearance.h"

namespace tessarine {

/// Whether the desktop prefers light or dark, as its settings portal tells it. Silent where there
/// is no portal: the preference is light then.
class ColourPreference : public QObject {
    Q_OBJECT

  public:
    /// \param bus      where the portal is to be found; a bus that is not connected is no error
    /// \param changed  is called whenever the preference has become another
    ColourPreference(const QDBusConnection& bus, std::function<void(ColourScheme)> changed,
                     QObject* parent = nullptr);

    /// Gives the portal a moment to answer, at most `milliseconds`. An answer that comes later
    /// counts as a change.
    void wait(int milliseconds);

    ColourScheme scheme() const { return scheme_; }

  signals:
    /// The portal has told the preference, or that it has none to tell.
    void answered();

  private slots:
    void settingChanged(const QDBusMessage& change);

  private:
    void ask(QDBusConnection bus);
    void take(const QVariant& value);

    std::function<void(ColourScheme)> changed_;
    ColourScheme scheme_ = ColourScheme::light;
    bool waiting_ = false;
};

}  // namespace tessarine
