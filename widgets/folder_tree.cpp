#include "widgets/folder_tree.h"

#include <QAbstractFileIconProvider>
#include <QDir>
#include <QFileSystemModel>
#include <QHeaderView>
#include <QKeyEvent>
#include <QScrollBar>
#include <QStyle>

namespace tessarine {

namespace {

bool liesInHiddenFolder(const QString& path) { return path.contains("/."); }

}  // namespace

/// The style's picture of a folder for each of them: nothing is looked up folder by folder, and a
/// desktop without an icon theme has one too.
class FolderTree::OneIcon : public QAbstractFileIconProvider {
  public:
    explicit OneIcon(const QIcon& icon) : icon_(icon) {}
    QIcon icon(IconType) const override { return icon_; }
    QIcon icon(const QFileInfo&) const override { return icon_; }

  private:
    QIcon icon_;
};

FolderTree::FolderTree(QWidget* parent)
    : QTreeView(parent),
      icons_(std::make_unique<OneIcon>(style()->standardIcon(QStyle::SP_DirIcon))),
      folders_(new QFileSystemModel(this)) {
    setAccessibleName("Folders");
    folders_->setIconProvider(icons_.get());
    folders_->setFilter(QDir::Dirs | QDir::NoDotAndDotDot);
    folders_->setReadOnly(true);
    folders_->setRootPath("/");
    setModel(folders_);
    setHeaderHidden(true);
    for (int column = 1; column < folders_->columnCount(); ++column)
        hideColumn(column);
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    setEditTriggers(NoEditTriggers);
    setUniformRowHeights(true);

    connect(folders_, &QFileSystemModel::directoryLoaded, this, &FolderTree::follow);
    connect(folders_, &QFileSystemModel::layoutChanged, this, &FolderTree::follow);
    const auto takeOver = [this] { followed_ = QModelIndex(); };
    connect(verticalScrollBar(), &QScrollBar::actionTriggered, this, takeOver);
    connect(this, &QTreeView::expanded, this, takeOver);
    connect(this, &QTreeView::collapsed, this, takeOver);
    connect(this, &QTreeView::doubleClicked, this,
            [this](const QModelIndex& index) { emit folderActivated(folders_->filePath(index)); });
    keepInView(folders_->index(QDir::homePath()));
}

FolderTree::~FolderTree() {
    // The model reads folders on a thread of its own, which asks for icons to its end.
    setModel(nullptr);
    delete folders_;
}

QString FolderTree::path() const {
    const QModelIndex index = selected();
    return index.isValid() ? folders_->filePath(index) : QString();
}

bool FolderTree::setPath(const QString& path) {
    if (path.isEmpty()) return false;
    const QString folder = QDir::cleanPath(QDir(path).absolutePath());
    if (!QFileInfo(folder).isDir()) return false;
    if (liesInHiddenFolder(folder)) {
        folders_->setFilter(folders_->filter() | QDir::Hidden);
        // The model would take in what it had left out only later; sorting does it now.
        folders_->sort(0);
    }
    const QModelIndex index = folders_->index(folder);
    if (!index.isValid()) return false;
    setCurrentIndex(index);
    expand(index);
    keepInView(index);
    return true;
}

void FolderTree::selectionChanged(const QItemSelection& selected,
                                  const QItemSelection& deselected) {
    QTreeView::selectionChanged(selected, deselected);
    const QString folder = path();
    if (folder.isEmpty() || folder == announced_) return;
    announced_ = folder;
    emit pathChanged(folder);
}

void FolderTree::rowsAboutToBeRemoved(const QModelIndex& parent, int start, int end) {
    // The selection must not slip on to a folder that nobody chose.
    QModelIndex gone = selected();
    while (gone.isValid() && gone.parent() != parent)
        gone = gone.parent();
    if (gone.isValid() && gone.row() >= start && gone.row() <= end) {
        announced_.clear();
        setCurrentIndex(QModelIndex());
    }
    QTreeView::rowsAboutToBeRemoved(parent, start, end);
}

void FolderTree::keyPressEvent(QKeyEvent* event) {
    followed_ = QModelIndex();
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (enter && selected().isValid())
        emit folderActivated(path());
    else
        QTreeView::keyPressEvent(event);
}

void FolderTree::mousePressEvent(QMouseEvent* event) {
    followed_ = QModelIndex();
    QTreeView::mousePressEvent(event);
}

void FolderTree::wheelEvent(QWheelEvent* event) {
    followed_ = QModelIndex();
    QTreeView::wheelEvent(event);
}

void FolderTree::resizeEvent(QResizeEvent* event) {
    QTreeView::resizeEvent(event);
    // As wide as its longest name, but never narrower than the tree: a click beside a name counts.
    header()->setMinimumSectionSize(viewport()->width());
}

QModelIndex FolderTree::selected() const {
    // Not the current index: a tree that takes the focus puts that on its first row by itself.
    const QModelIndexList indexes = selectionModel()->selectedIndexes();
    return indexes.isEmpty() ? QModelIndex() : indexes.front();
}

void FolderTree::keepInView(const QModelIndex& index) {
    scrollTo(index, PositionAtCenter);
    // Sideways the name matters, with the marks of two parents before it, and not the column.
    QScrollBar& sideways = *horizontalScrollBar();
    const int nameBegins = visualRect(index).left() + sideways.value();
    const int nameEnds = nameBegins + sizeHintForIndex(index).width();
    sideways.setValue(nameEnds > viewport()->width() ? nameBegins - 2 * indentation() : 0);
    followed_ = index;
}

void FolderTree::follow() {
    const QModelIndex index = followed_;
    if (index.isValid()) keepInView(index);
}

}  // namespace tessarine

#include "moc_folder_tree.cpp"
