#pragma once

#include <memory>

#include <QFrame>
#include <QLabel>

namespace tessarine {

/// The small window that shows a slider's value while it is dragged. It takes neither the focus
/// nor the pointer.
class frmValueTip : public QFrame {
    Q_OBJECT

  public:
    /// The program's one tip. It lives as long as someone keeps it.
    static std::shared_ptr<frmValueTip> ofProgram();

    frmValueTip();

    /// Shows a value. \return the size of its text
    QSize setValue(int value);
    /// Comes up over the window of `owner`, or moves there. \param place  on the screen
    void showAt(const QRect& place, const QWidget& owner);

  protected:
    void paintEvent(QPaintEvent*) override;

  private:
    QLabel* lblTip_;
};

}  // namespace tessarine
