#include "wizard/function_basket.h"

#include <QAction>
#include <QDropEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QMimeData>
#include <QSignalBlocker>
#include <QToolButton>

#include "batch/sheet_controls.h"
#include "wizard/function_tree.h"
#include "wizard/icons.h"
#include "wizard/sheet_panels.h"

namespace tessarine {

FunctionList::FunctionList(QWidget* parent) : QListWidget(parent) {
    setObjectName("LSelectedFunctions");
    setAccessibleName("Function Basket");
    setSelectionMode(QAbstractItemView::SingleSelection);
    setDragDropMode(QAbstractItemView::DropOnly);
    setDropIndicatorShown(false);
    setIconSize(QSize(16, 16));
    heading_ = new QLabel("Function Basket", this);
    heading_->setIndent(6);
    heading_->setAutoFillBackground(true);
    heading_->setBackgroundRole(QPalette::Button);
    heading_->setForegroundRole(QPalette::ButtonText);
}

void FunctionList::resizeEvent(QResizeEvent* event) {
    QListWidget::resizeEvent(event);
    const int height = heading_->fontMetrics().height() + 6;
    if (viewportMargins().top() != height) setViewportMargins(0, height, 0, 0);
    const QRect rows = viewport()->geometry();
    heading_->setGeometry(rows.left(), rows.top() - height, rows.width(), height);
}

// Whatever else is dragged here is left to the window.
void FunctionList::dragEnterEvent(QDragEnterEvent* event) {
    event->setAccepted(event->mimeData()->hasFormat(functionDragFormat));
}

void FunctionList::dragMoveEvent(QDragMoveEvent* event) {
    event->setAccepted(event->mimeData()->hasFormat(functionDragFormat));
}

void FunctionList::dropEvent(QDropEvent* event) {
    event->setAccepted(event->mimeData()->hasFormat(functionDragFormat));
    if (event->isAccepted() && onDrop) onDrop();
}

void FunctionList::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Delete && event->modifiers() == Qt::NoModifier) {
        if (onDelete) onDelete();
        return;
    }
    QListWidget::keyPressEvent(event);
}

FunctionBasket::FunctionBasket(const StepContext& context, QWidget* parent)
    : QWidget(parent), context_(context) {
    setObjectName("pLSelectedFunctions");
    cBatch& batch = context_.batch;

    TBTray_ = new QToolBar(this);
    TBTray_->setObjectName("TBTray");
    TBTray_->setAccessibleName("Function Basket");
    TBTray_->setIconSize(QSize(16, 16));
    TBTray_->setContextMenuPolicy(Qt::PreventContextMenu);
    addButton(1, "add", tr("Add function"), QKeySequence("Ins"));
    addButton(2, "remove", tr("Remove function"), {});
    addButton(3, "clear", tr("Remove all functions"), QKeySequence("Ctrl+Del"));
    addButton(4, "open-list", tr("Open function list"), QKeySequence("Ctrl+O"));
    addButton(5, "save-list", tr("Save function list"), QKeySequence("Ctrl+S"));
    TBTray_->addSeparator();
    addButton(7, "move-up", tr("Move up"), QKeySequence("Ctrl+Up"));
    addButton(8, "move-down", tr("Move down"), QKeySequence("Ctrl+Down"));

    LSelectedFunctions_ = new FunctionList(this);
    LSelectedFunctions_->onDrop = [&batch] { batch.CmdAdd(); };
    LSelectedFunctions_->onDelete = [&batch] { batch.TBTray(2); };
    connect(LSelectedFunctions_, &QListWidget::itemSelectionChanged, this, [this, &batch] {
        const QList<QListWidgetItem*> selected = LSelectedFunctions_->selectedItems();
        batch.selectedFunction = selected.isEmpty() ? -1 : LSelectedFunctions_->row(selected[0]);
    });
    showAlways(context_, "LSelectedFunctions", [this] { showList(); });
}

void FunctionBasket::addButton(int index, const char* icon, const QString& text,
                               const QKeySequence& keys) {
    QAction* action = TBTray_->addAction(programIcon(icon), text);
    action->setShortcut(keys);
    const QString shown = keys.isEmpty() ? QString("Del") : keys.toString(QKeySequence::NativeText);
    action->setToolTip(text + " (" + shown + ")");
    connect(action, &QAction::triggered, this,
            [this, index] { context_.batch.TBTray(static_cast<int16_t>(index)); });
    auto* button = qobject_cast<QToolButton*>(TBTray_->widgetForAction(action));
    button->setObjectName(QString::fromStdString(indexed("TBTray", index)));
    button->setAccessibleName(text);
    button->setFocusPolicy(Qt::TabFocus);
}

void FunctionBasket::showList() {
    const cBatch& batch = context_.batch;
    const QSignalBlocker silent(LSelectedFunctions_);
    const int before = LSelectedFunctions_->count();
    const auto count = static_cast<int>(batch.LSelectedFunctions.size());
    while (LSelectedFunctions_->count() > count)
        delete LSelectedFunctions_->takeItem(LSelectedFunctions_->count() - 1);
    for (int i = 0; i < count; ++i) {
        const QString text =
            QString::fromStdString(batch.LSelectedFunctions[static_cast<size_t>(i)].text);
        if (i < LSelectedFunctions_->count())
            LSelectedFunctions_->item(i)->setText(text);
        else
            new QListWidgetItem(programIcon("function"), text, LSelectedFunctions_);
    }
    if (batch.selectedFunction >= 0) {
        LSelectedFunctions_->setCurrentRow(batch.selectedFunction);
    } else {
        LSelectedFunctions_->setCurrentItem(nullptr);
        LSelectedFunctions_->clearSelection();
    }
    if (count > before) LSelectedFunctions_->scrollToBottom();
}

void FunctionBasket::layOut() {
    const int bar = TBTray_->sizeHint().height();
    TBTray_->setGeometry(0, 0, width(), bar);
    LSelectedFunctions_->setGeometry(0, bar, std::max(width() - rightMargin, 0),
                                     std::max(height() - bar, 0));
}

}  // namespace tessarine
