#pragma once

#include <array>
#include <functional>

#include <QListWidget>
#include <QToolBar>

#include "wizard/step.h"

class QLabel;

namespace tessarine {

/// LSelectedFunctions: the functions chosen, in their order, below the heading of the basket. A
/// function dragged from the tree may be dropped here.
class FunctionList : public QListWidget {
  public:
    explicit FunctionList(QWidget* parent);

    std::function<void()> onDrop;
    std::function<void()> onDelete;

  protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    QLabel* heading_;
};

/// pLSelectedFunctions, the Function Basket: the toolbar TBTray and the list below it.
class FunctionBasket : public QWidget {
  public:
    /// What the list leaves free at its right, in pixels.
    static constexpr int rightMargin = 7;

    FunctionBasket(const StepContext& context, QWidget* parent);

    /// Toolbar at the top, the list in the rest.
    void layOut();

  protected:
    void resizeEvent(QResizeEvent*) override { layOut(); }

  private:
    void addButton(int index, const char* icon, const QString& text, const QKeySequence& keys);
    void showList();

    StepContext context_;
    QToolBar* TBTray_;
    FunctionList* LSelectedFunctions_;
};

}  // namespace tessarine
