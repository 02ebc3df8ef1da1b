#pragma once

#include <memory>

#include <QDBusConnection>

#include "wizard/desktop.h"
#include "wizard/instance_lock.h"
#include "wizard/sleep_inhibitor.h"

namespace tessarine {

/// The desktop that the person sees.
class SystemDesktop : public Desktop {
  public:
    SystemDesktop();
    /// \param lockFile  by which the instances of a user know of each other
    SystemDesktop(const std::string& lockFile, QDBusConnection system, QDBusConnection session);

    void messageBox(QWidget* parent, const QString& text, Icon icon, const QString& title) override;
    std::optional<std::string> saveDialog(QWidget* parent, const std::string& filter,
                                          const std::string& folder) override;
    std::optional<std::string> openDialog(QWidget* parent, const std::string& filter,
                                          const std::string& folder) override;
    void openPath(const std::string& path) override;
    bool anotherInstanceRuns() override { return lock_.othersRun(); }
    void keepAwake(bool awake) override { inhibitor_.keepAwake(awake); }
    void notify(const QString& title, const QString& text) override;
    std::string programFolder() override;
    std::string applicationFolder() override;

  private:
    InstanceLock lock_;
    QDBusConnection session_;
    SleepInhibitor inhibitor_;
};

/// A filter "Description(*.ext)|*.ext" as file dialogs take it: "Description (*.ext)".
QString dialogFilter(const std::string& filter);

}  // namespace tessarine
