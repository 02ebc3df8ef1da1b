#pragma once

#include <functional>

#include <QTreeWidget>

namespace tessarine {

/// What a drag of a function carries. The function itself is the one selected in the tree.
inline constexpr char functionDragFormat[] = "application/x-tessarine-function";

/// Lfunctions: the catalogue of functions in its groups.
///
/// Nodes are told by their index in the catalogue, from 1.
class FunctionTree : public QTreeWidget {
  public:
    explicit FunctionTree(QWidget* parent);

    /// A node was clicked, or chosen with the keyboard.
    std::function<void(int16_t treeIndex)> onSelect;
    /// A node was double-clicked.
    std::function<void()> onAdd;

    /// Expands the groups from the last to the first.
    void expandGroups();
    QTreeWidgetItem* node(int16_t treeIndex) const;
    /// The width at which no text is cut off.
    int fullWidth() const;

  protected:
    void startDrag(Qt::DropActions actions) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    void select(QTreeWidgetItem* item);
    void keepNamesWhole();

    int16_t selected_ = 0;  ///< the index last told to onSelect
};

}  // namespace tessarine
