#pragma once

#include <QTabBar>
#include <QTabWidget>

#include "wizard/frame_layout.h"

class QStylePainter;

namespace tessarine {

/// The captions of the steps. They are long, so they draw closer together, and then smaller,
/// before one is cut off.
class StepCaptions : public QTabBar {
    Q_OBJECT

  public:
    explicit StepCaptions(QWidget* parent);

    /// Draws the captions within a width from now on.
    void fitInto(int32_t width);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    QSize tabSizeHint(int index) const override;
    QSize minimumTabSizeHint(int index) const override { return tabSizeHint(index); }
    void paintEvent(QPaintEvent* event) override;

  private:
    QFont fontOf(double scale) const;
    int32_t textWidth(int index, double scale) const;
    void paintCaption(QStylePainter& painter, int index) const;

    CaptionFit fit_;
};

/// sTab: the captions, the frames of the steps below them, and the window's buttons at the right
/// of the captions.
class StepStrip : public QTabWidget {
    Q_OBJECT

  public:
    explicit StepStrip(QWidget* parent);

    /// The frames fill this place from now on.
    void placeFrames(const Box& place);
    /// The buttons at the right of the captions, from the left.
    void setButtons(const QList<QWidget*>& buttons);

  protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void placeParts();

    StepCaptions* captions_;
    QList<QWidget*> buttons_;
    Box frames_;
};

}  // namespace tessarine
