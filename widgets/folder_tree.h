#pragma once

#include <memory>

#include <QPersistentModelIndex>
#include <QString>
#include <QTreeView>

class QFileSystemModel;

namespace tessarine {

/// The folders of the system as a tree, with a settable path. It starts at the person's own
/// folder with nothing selected. Hidden folders are shown once a path in one of them was set.
class FolderTree : public QTreeView {
    Q_OBJECT

  public:
    explicit FolderTree(QWidget* parent = nullptr);
    ~FolderTree() override;

    /// The selected folder, without a separator at its end but for the root; empty where none is,
    /// also after the selected one has gone from the disk.
    QString path() const;
    /// Selects, opens and shows a folder. \return false, with nothing changed, where there is none
    bool setPath(const QString& path);

  signals:
    /// Another folder was selected, by a person or by setPath.
    void pathChanged(const QString& path);
    /// A folder was double-clicked, or Enter was pressed on it.
    void folderActivated(const QString& path);

  protected:
    void selectionChanged(const QItemSelection& selected,
                          const QItemSelection& deselected) override;
    void rowsAboutToBeRemoved(const QModelIndex& parent, int start, int end) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    QModelIndex selected() const;
    void keepInView(const QModelIndex& index);
    void follow();

    class OneIcon;
    std::unique_ptr<OneIcon> icons_;
    QFileSystemModel* folders_;
    QString announced_;
    /// What stays in view while its parents load, until a person takes over.
    QPersistentModelIndex followed_;
};

}  // namespace tessarine
