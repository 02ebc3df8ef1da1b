#pragma once

#include <functional>

#include <QDialog>
#include <QString>

class QLabel;
class QPushButton;

namespace tessarine {

class FolderTree;

/// "Select Folder": the folder chooser for the destination.
class fBrowse : public QDialog {
    Q_OBJECT

  public:
    /// \param destination     the tree opens here, if that folder exists
    /// \param selectedFolder  the program's selected-folder text: the chosen folder, or empty
    ///                        after "Cancel" or Escape; it stays when the window is closed
    ///                        otherwise
    /// \param invalidPath     shows "Invalid Path" with the information icon
    fBrowse(const QString& destination, QString& selectedFolder,
            std::function<void(const QString& text)> invalidPath, QWidget* parent = nullptr);

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void showFolder(const QString& folder);
    void select();
    void cancel();

    QString& selectedFolder_;
    std::function<void(const QString& text)> invalidPath_;
    FolderTree* FT_;
    QLabel* FileName_;
    QPushButton* cmdOK_;
    QPushButton* cmdCancel_;
};

}  // namespace tessarine
