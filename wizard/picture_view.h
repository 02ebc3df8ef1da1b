#pragma once

#include <functional>
#include <optional>

#include <QImage>
#include <QWidget>

#include "batch/batch.h"

namespace tessarine {

/// Shows a picture holder, with the cross of the picked point over it until the next repaint.
///
/// A picture may be shown at a whole multiple of its size; places are told in its own pixels.
class PictureView : public QWidget {
  public:
    /// Width of the line around the picture.
    static constexpr int border = 1;

    explicit PictureView(QWidget* parent);

    /// The left button was pressed on the picture or moved with it held; the place may lie outside.
    std::function<void(int x, int y)> onPick;
    /// An arrow key was pressed while a point is asked for: how far it moves the point.
    std::function<void(int dx, int dy)> onNudge;

    /// Shows what is drawn on a holder now; the cross is gone.
    void repaintPicture(const PictureHolder& holder);
    void drawMark(const PickMark& mark);
    void eraseMark();
    const std::optional<PickMark>& mark() const { return mark_; }
    /// Whether a point is asked for: the pointer says so, and the arrow keys move it.
    void setPicking(bool picking);
    void setScale(int scale);
    int scale() const { return scale_; }
    /// The size of the view that shows a picture at a multiple of its size.
    static QSize sizeFor(const PictureHolder& holder, int scale);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void pick(const QPointF& position);

    QImage picture_;
    std::optional<PickMark> mark_;
    int scale_ = 1;
    bool picking_ = false;
};

}  // namespace tessarine
