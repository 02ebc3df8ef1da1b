#pragma once

#include <QString>
#include <QTreeView>

class QFileSystemModel;

namespace tessarine {

/// The folders of the system as a tree, with a settable path.
class FolderTree : public QTreeView {
    Q_OBJECT

  public:
    explicit FolderTree(QWidget* parent = nullptr);

    /// The selected folder, without a separator at its end but for the root; empty where none is.
    QString path() const;
    /// Selects, opens and shows a folder. \return false, with nothing changed, where there is none
    bool setPath(const QString& path);

  signals:
    /// Another folder was selected, by a person or by setPath.
    void pathChanged(const QString& path);
    /// A folder was double-clicked, or Enter was pressed on it.
    void folderActivated(const QString& path);
};

}  // namespace tessarine
