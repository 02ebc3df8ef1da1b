#pragma once

#include <optional>
#include <string>

#include <QString>

#include "batch/platform.h"

class QWidget;

namespace tessarine {

/// The desktop around the window: the one seam through which message boxes, file dialogs and
/// other programs are reached. The tests put a recorder here that plays back answers.
///
/// Paths are bytes.
class Desktop {
  public:
    virtual ~Desktop() = default;

    /// A message box with one OK button; returns when it is closed.
    virtual void messageBox(QWidget* parent, const QString& text, Icon icon,
                            const QString& title) = 0;
    /// The file dialog; nothing on a cancel.
    /// \param filter  "Description(*.ext)|*.ext"
    /// \param folder  where the dialog starts
    virtual std::optional<std::string> saveDialog(QWidget* parent, const std::string& filter,
                                                  const std::string& folder) = 0;
    virtual std::optional<std::string> openDialog(QWidget* parent, const std::string& filter,
                                                  const std::string& folder) = 0;
    /// Opens a path or a web address with the system's default action.
    virtual void openPath(const std::string& path) = 0;
    virtual bool anotherInstanceRuns() = 0;
    /// Keeps the system from sleeping, or lets it again.
    virtual void keepAwake(bool awake) = 0;
    /// A notification of the desktop's, for a window that is not in front.
    virtual void notify(const QString& title, const QString& text) = 0;
    /// Where the settings lie, without a separator at its end.
    virtual std::string programFolder() = 0;
    /// Where Help/default.htm lies, without a separator at its end.
    virtual std::string applicationFolder() = 0;
};

}  // namespace tessarine
