#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <QTreeView>

namespace tessarine {

/// A list of files: whole rows, any number of them selected, quick with many thousands.
class FileView : public QTreeView {
    Q_OBJECT

  public:
    FileView(const QString& name, const QString& accessibleName, QWidget* parent);

    /// The selected rows, from 0, in the order in which they stand.
    std::vector<int32_t> selectedRows() const;

  signals:
    /// A row was clicked, or reached with the keys that move from row to row.
    void rowClicked();
    /// Files and folders of another program were dropped.
    void pathsDropped(const std::vector<std::string>& paths);

  protected:
    void keyReleaseEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    /// Whether a drop of this drag does something here.
    virtual bool takes(const QDropEvent& event) const;
};

/// lvFolder.
class FolderView : public FileView {
    Q_OBJECT

  public:
    explicit FolderView(QWidget* parent);

  signals:
    void enterPressed();

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void startDrag(Qt::DropActions supportedActions) override;
};

/// lvSelected.
class BasketView : public FileView {
    Q_OBJECT

  public:
    explicit BasketView(QWidget* parent);

  signals:
    void deletePressed();
    /// The rows selected in lvFolder were dropped.
    void rowsDropped(const std::vector<int32_t>& rows);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    bool takes(const QDropEvent& event) const override;
    void dropEvent(QDropEvent* event) override;
};

}  // namespace tessarine
