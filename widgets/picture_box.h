#pragma once

#include <QIcon>
#include <QWidget>

namespace tessarine {

/// A picture that can be clicked, crisp at every density.
class PictureBox : public QWidget {
    Q_OBJECT

  public:
    /// \param size  in pixels; the picture fills it
    PictureBox(const QIcon& picture, QSize size, QWidget* parent);

  signals:
    /// The left button was pressed and released on the picture.
    void clicked();

  protected:
    void mousePressEvent(QMouseEvent*) override {}
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent*) override;

  private:
    QIcon picture_;
};

}  // namespace tessarine
