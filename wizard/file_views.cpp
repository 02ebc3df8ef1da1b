#include "wizard/file_views.h"

#include <algorithm>
#include <utility>

#include <QApplication>
#include <QDrag>
#include <QDropEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMimeData>
#include <QStyledItemDelegate>
#include <QTimer>

#include "wizard/file_models.h"
#include "wizard/file_names.h"
#include "wizard/icons.h"

namespace tessarine {

namespace {

/// Pixels of the picture that goes with the pointer.
constexpr int dragPictureSize = 32;

/// Pixels left and right of a cell's text.
constexpr int cellMargins = 12;

}  // namespace

FileView::FileView(const QString& name, const QString& accessibleName, QWidget* parent)
    : QTreeView(parent) {
    setObjectName(name);
    setAccessibleName(accessibleName);
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setAlternatingRowColors(true);
    setSelectionMode(ExtendedSelection);
    setEditTriggers(NoEditTriggers);
    setTextElideMode(Qt::ElideMiddle);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollMode(ScrollPerPixel);
    viewport()->setAcceptDrops(true);
    connect(this, &QTreeView::clicked, this, &FileView::rowClicked);
    connect(header(), &QHeaderView::sectionResized, this, [this] {
        if (!spreading_ && QApplication::mouseButtons() != Qt::NoButton)
            columnsAreThePersons_ = true;
    });
}

std::vector<int32_t> FileView::selectedRows() const {
    std::vector<int32_t> rows;
    if (selectionModel() == nullptr) return rows;
    for (const QItemSelectionRange& range : selectionModel()->selection())
        for (int row = range.top(); row <= range.bottom(); ++row)
            rows.push_back(row);
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    return rows;
}

void FileView::keyPressEvent(QKeyEvent* event) {
    const std::vector<int32_t> before = selectedRows();
    QTreeView::keyPressEvent(event);
    selectedByKeys_ = selectedByKeys_ || selectedRows() != before;
}

void FileView::keyboardSearch(const QString& search) {
    // Names are what is typed, whichever column was clicked.
    if (const QModelIndex current = currentIndex(); current.column() > 0)
        selectionModel()->setCurrentIndex(current.siblingAtColumn(0),
                                          QItemSelectionModel::NoUpdate);
    QTreeView::keyboardSearch(search);
}

void FileView::keyReleaseEvent(QKeyEvent* event) {
    QTreeView::keyReleaseEvent(event);
    // A key held down passes many rows; only the one where it is let go is looked at.
    if (!event->isAutoRepeat() && std::exchange(selectedByKeys_, false)) emit rowClicked();
}

void FileView::resizeEvent(QResizeEvent* event) {
    QTreeView::resizeEvent(event);
    spreadColumns();
}

void FileView::changeEvent(QEvent* event) {
    QTreeView::changeEvent(event);
    if (event->type() == QEvent::FontChange) spreadColumns();
}

void FileView::spreadColumns() {
    if (columnsAreThePersons_ || model() == nullptr) return;
    spreading_ = true;
    const std::vector<int> widths = columnWidths(viewport()->width());
    for (size_t column = 0; column < widths.size(); ++column)
        header()->resizeSection(int(column), widths[column]);
    spreading_ = false;
}

bool FileView::takes(const QDropEvent& event) const {
    return event.mimeData()->hasUrls() && draggedRows(*event.mimeData()).empty();
}

void FileView::dragEnterEvent(QDragEnterEvent* event) { dragMoveEvent(event); }

void FileView::dragMoveEvent(QDragMoveEvent* event) {
    if (!takes(*event)) return event->ignore();
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void FileView::dropEvent(QDropEvent* event) {
    if (!takes(*event)) return event->ignore();
    event->setDropAction(Qt::CopyAction);
    event->accept();
    // What is done may open a message box, and the other program waits for the end of the drop.
    QTimer::singleShot(
        0, this, [this, paths = localPaths(*event->mimeData())] { emit pathsDropped(paths); });
}

// ---- lvFolder ----

namespace {

/// A name or a path says much at both its ends, a type at its beginning.
class CutAtTheEnd : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

  protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
        QStyledItemDelegate::initStyleOption(option, index);
        option->textElideMode = Qt::ElideRight;
    }
};

constexpr int typeColumn = 2;

}  // namespace

FolderView::FolderView(QWidget* parent) : FileView("lvFolder", "Images in Folder", parent) {
    setItemDelegateForColumn(typeColumn, new CutAtTheEnd(this));
    setDragDropMode(DragDrop);
    setDropIndicatorShown(false);
}

void FolderView::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            // Held down, the key would answer the message of duplicates and bring the next one.
            if (!event->isAutoRepeat()) emit enterPressed();
            break;
        case Qt::Key_Space:
            if (!event->isAutoRepeat()) emit spacePressed();
            break;
        default:
            return FileView::keyPressEvent(event);
    }
    event->accept();
}

std::vector<int> FolderView::columnWidths(int width) const {
    // A size is told in full. The name has most of the rest, and where that is little the type
    // gives way to it.
    const int size = fontMetrics().horizontalAdvance("9999.9 KB") + cellMargins;
    const int rest = std::max(width - size, 0);
    const int name = std::min(std::max(width / 2, rest * 5 / 8), rest);
    return {name, size, rest - name};
}

void FolderView::startDrag(Qt::DropActions) {
    const QModelIndexList rows = selectionModel()->selectedRows();
    if (rows.isEmpty()) return;
    auto* drag = new QDrag(this);
    drag->setMimeData(model()->mimeData(rows));
    drag->setPixmap(
        programIcon("drop").pixmap(QSize(dragPictureSize, dragPictureSize), devicePixelRatioF()));
    drag->exec(Qt::CopyAction);
}

// ---- lvSelected ----

BasketView::BasketView(QWidget* parent) : FileView("lvSelected", "Image Basket", parent) {
    setDragDropMode(DropOnly);
    setDropIndicatorShown(false);
}

void BasketView::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Delete) return FileView::keyPressEvent(event);
    event->accept();
    emit deletePressed();
}

std::vector<int> BasketView::columnWidths(int width) const {
    return {width / 2, width - width / 2};
}

bool BasketView::takes(const QDropEvent& event) const { return event.mimeData()->hasUrls(); }

void BasketView::dropEvent(QDropEvent* event) {
    std::vector<int32_t> rows = draggedRows(*event->mimeData());
    if (rows.empty()) return FileView::dropEvent(event);
    event->setDropAction(Qt::CopyAction);
    event->accept();
    QTimer::singleShot(0, this, [this, rows = std::move(rows)] { emit rowsDropped(rows); });
}

}  // namespace tessarine
