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
    void keyboardSearch(const QString& search) override;

  signals:
    /// A row was clicked, or reached with keys, those of its name included.
    void rowClicked();
    /// Files and folders of another program were dropped.
    void pathsDropped(const std::vector<std::string>& paths);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    /// The widths of the columns for a width of all of them together.
    virtual std::vector<int> columnWidths(int width) const = 0;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    /// Whether a drop of this drag does something here.
    virtual bool takes(const QDropEvent& event) const;

  private:
    void spreadColumns();

    bool selectedByKeys_ = false;  ///< other rows, since a key was let go
    bool spreading_ = false;
    bool columnsAreThePersons_ = false;  ///< one of them was dragged
};

/// lvFolder.
class FolderView : public FileView {
    Q_OBJECT

  public:
    explicit FolderView(QWidget* parent);

  signals:
    void enterPressed();
    /// The space bar, which ticks and unticks.
    void spacePressed();

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    std::vector<int> columnWidths(int width) const override;
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
    std::vector<int> columnWidths(int width) const override;
    bool takes(const QDropEvent& event) const override;
    void dropEvent(QDropEvent* event) override;
};

}  // namespace tessarine
