#pragma once

#include <vector>

#include <QLabel>
#include <QToolButton>
#include <QWidget>

namespace tessarine {

/// The toolbar of a list, with the list's title. Its buttons show their captions where the width
/// allows, else their icons alone; where not even those fit, they go on in further rows.
class ListToolbar : public QWidget {
  public:
    /// \param name  buttons are called "name(1)" and so on
    ListToolbar(const QString& name, const QString& title, QWidget* parent);

    /// \param icon      of the program's
    /// \param caption   with its mnemonic; empty for a button that is an icon only
    /// \param purpose   what it does, where there is no caption
    /// \param shortcut  where there is no mnemonic
    QToolButton& add(const char* icon, const QString& caption, const QString& purpose = {},
                     const QKeySequence& shortcut = {});
    /// Takes a width and the height that goes with it, at the top left of its parent.
    void layOut(int width);

  protected:
    void changeEvent(QEvent* event) override;

  private:
    int rowOf(int left, int top);
    int widthOfButtons(bool captions) const;
    void showCaptions(bool shown);

    QLabel* title_;
    std::vector<QToolButton*> buttons_;
    std::vector<bool> captioned_;
};

}  // namespace tessarine
