#pragma once

#include <QIcon>
#include <QWidget>

class QTimer;

namespace tessarine {

/// The picture shown at the start, before the main window. A click closes it.
class fSplash : public QWidget {
    Q_OBJECT

  public:
    /// \param picture  picSplash, drawn at `size` in pixels
    fSplash(const QIcon& picture, QSize size);

  signals:
    /// The first tick of tSplash, 500 milliseconds after the window was first shown. It comes
    /// once, whether the window was closed meanwhile or not.
    void tSplash();

  protected:
    void showEvent(QShowEvent*) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

  private:
    QTimer* timer_;
    bool shownBefore_ = false;
};

}  // namespace tessarine
