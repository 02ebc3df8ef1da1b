#pragma once

#include <functional>

#include <QDialog>
#include <QString>

namespace tessarine {

/// "Select Folder": the folder chooser for the destination.
class fBrowse : public QDialog {
    Q_OBJECT

  public:
    /// \param destination     the tree opens here, if that folder exists
    /// \param selectedFolder  the program's selected-folder text: the chosen folder, or empty
    ///                        after "Cancel"; it stays when the window is closed otherwise
    /// \param invalidPath     shows "Invalid Path" with the information icon
    fBrowse(const QString& destination, QString& selectedFolder,
            std::function<void(const QString& text)> invalidPath, QWidget* parent = nullptr);
};

}  // namespace tessarine
