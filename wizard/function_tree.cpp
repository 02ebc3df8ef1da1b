#include "wizard/function_tree.h"

#include <QDrag>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMimeData>
#include <QScrollBar>

#include "batch/functions.h"
#include "wizard/icons.h"

namespace tessarine {

namespace {

constexpr int indexRole = Qt::UserRole;

int16_t indexOf(const QTreeWidgetItem* item) {
    return static_cast<int16_t>(item->data(0, indexRole).toInt());
}

}  // namespace

FunctionTree::FunctionTree(QWidget* parent) : QTreeWidget(parent) {
    setObjectName("Lfunctions");
    setAccessibleName(tr("Functions"));
    setHeaderHidden(true);
    setIndentation(12);
    setUniformRowHeights(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setDragEnabled(true);
    setDragDropMode(QAbstractItemView::DragOnly);

    const QIcon groupIcon = programIcon("group");
    const QIcon functionIcon = programIcon("function");
    QTreeWidgetItem* group = nullptr;
    int index = 0;
    for (const TreeNode& node : catalogueTree()) {
        const bool isGroup = node.functionId < 0;
        auto* item = isGroup ? new QTreeWidgetItem(this) : new QTreeWidgetItem(group);
        if (isGroup) {
            group = item;
            item->setFlags(item->flags() & ~Qt::ItemIsDragEnabled);
        }
        item->setText(0, QString::fromUtf8(node.text.data(), qsizetype(node.text.size())));
        item->setIcon(0, isGroup ? groupIcon : functionIcon);
        item->setData(0, indexRole, ++index);
    }

    connect(this, &QTreeWidget::itemClicked, this, [this](QTreeWidgetItem* item) { select(item); });
    connect(this, &QTreeWidget::itemDoubleClicked, this, [this] {
        if (onAdd) onAdd();
    });
}

void FunctionTree::expandGroups() {
    for (int i = topLevelItemCount() - 1; i >= 0; --i)
        topLevelItem(i)->setExpanded(true);
    scrollToTop();
    keepNamesWhole();
}

// The rows fill the width, and a name that is longer is reached by scrolling.
void FunctionTree::keepNamesWhole() { header()->setMinimumSectionSize(sizeHintForColumn(0)); }

void FunctionTree::changeEvent(QEvent* event) {
    QTreeWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        keepNamesWhole();
}

QTreeWidgetItem* FunctionTree::node(int16_t treeIndex) const {
    for (int g = 0; g < topLevelItemCount(); ++g) {
        QTreeWidgetItem* group = topLevelItem(g);
        const int behind = treeIndex - indexOf(group);
        if (behind == 0) return group;
        if (behind > 0 && behind <= group->childCount()) return group->child(behind - 1);
    }
    return nullptr;
}

int FunctionTree::fullWidth() const {
    return sizeHintForColumn(0) + verticalScrollBar()->sizeHint().width() + 2 * frameWidth() + 2;
}

void FunctionTree::select(QTreeWidgetItem* item) {
    selected_ = indexOf(item);
    if (onSelect) onSelect(selected_);
}

void FunctionTree::startDrag(Qt::DropActions) {
    QTreeWidgetItem* item = currentItem();
    if (item == nullptr || !item->isSelected()) return;
    // What is dragged is the selected function with the values of its sheet. A node that was only
    // pressed has no sheet yet.
    if (indexOf(item) != selected_) select(item);
    auto* drag = new QDrag(this);
    auto* content = new QMimeData;
    content->setData(functionDragFormat, {});
    drag->setMimeData(content);
    drag->setPixmap(programIcon("drop").pixmap(QSize(32, 32), devicePixelRatioF()));
    drag->exec(Qt::CopyAction);
}

void FunctionTree::keyPressEvent(QKeyEvent* event) {
    const QTreeWidgetItem* before = currentItem();
    QTreeWidget::keyPressEvent(event);
    QTreeWidgetItem* now = currentItem();
    if (now == nullptr) return;
    const bool confirmed = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!confirmed && now == before) return;
    // Enter may stand on a node that only has the focus.
    now->setSelected(true);
    select(now);
}

// Of the other buttons a double click is two presses.
void FunctionTree::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        QTreeWidget::mouseDoubleClickEvent(event);
    else
        mousePressEvent(event);
}

// A press selects, and a release over another node is no click: what is selected counts.
void FunctionTree::mouseReleaseEvent(QMouseEvent* event) {
    QTreeWidget::mouseReleaseEvent(event);
    QTreeWidgetItem* item = currentItem();
    if (item != nullptr && item->isSelected() && indexOf(item) != selected_) select(item);
}

}  // namespace tessarine
