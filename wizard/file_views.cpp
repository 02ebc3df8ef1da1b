#include "wizard/file_views.h"

#include <algorithm>

#include <QDrag>
#include <QDropEvent>
#include <QFile>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMimeData>
#include <QTimer>
#include <QUrl>

#include "wizard/icons.h"

namespace tessarine {

namespace {

/// Pixels of the picture that goes with the pointer.
constexpr int dragPictureSize = 32;

std::vector<std::string> localPaths(const QMimeData& data) {
    std::vector<std::string> paths;
    for (const QUrl& url : data.urls())
        if (url.isLocalFile()) paths.push_back(QFile::encodeName(url.toLocalFile()).toStdString());
    return paths;
}

bool movesFromRowToRow(int key) {
    switch (key) {
        case Qt::Key_Up:
        case Qt::Key_Down:
        case Qt::Key_PageUp:
        case Qt::Key_PageDown:
        case Qt::Key_Home:
        case Qt::Key_End:
            return true;
        default:
            return false;
    }
}

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
    connect(this, &QTreeView::clicked, this, &FileView::rowClicked);
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

void FileView::keyReleaseEvent(QKeyEvent* event) {
    QTreeView::keyReleaseEvent(event);
    // A key held down passes many rows; only the one where it is let go is looked at.
    if (movesFromRowToRow(event->key()) && !event->isAutoRepeat()) emit rowClicked();
}

bool FileView::takes(const QDropEvent& event) const {
    return event.source() == nullptr && event.mimeData()->hasUrls();
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

FolderView::FolderView(QWidget* parent) : FileView("lvFolder", "Images in Folder", parent) {
    setDragDropMode(DragDrop);
    setDropIndicatorShown(false);
}

void FolderView::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter)
        return FileView::keyPressEvent(event);
    event->accept();
    emit enterPressed();
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

bool BasketView::takes(const QDropEvent& event) const {
    return qobject_cast<FolderView*>(event.source()) != nullptr || FileView::takes(event);
}

void BasketView::dropEvent(QDropEvent* event) {
    const auto* folder = qobject_cast<FolderView*>(event->source());
    if (folder == nullptr) return FileView::dropEvent(event);
    event->setDropAction(Qt::CopyAction);
    event->accept();
    QTimer::singleShot(0, this, [this, rows = folder->selectedRows()] { emit rowsDropped(rows); });
}

}  // namespace tessarine
