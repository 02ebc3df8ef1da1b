#pragma once

#include <cstdint>

#include <QColor>
#include <QPointer>
#include <QWidget>

#include "widgets/arithmetic/splitter_bar.h"

namespace tessarine {

/// Divides its room between two neighbours, its children, by a draggable bar. The position is a
/// percentage of the size. Until a drag ends, only the mover bar moves. The bar takes the focus
/// with the tab key, and the arrow keys along its way move it by one percent.
///
/// SplitterPosition also follows a pointer that only passes over the bar, until it leaves.
///
/// Beside a vertical bar the right neighbour reaches two bars' thickness past the splitter's edge,
/// where it is clipped; what it holds keeps clear of that strip.
class Splitter : public QWidget, private SplitterBar::Control {
    Q_OBJECT

  public:
    /// Thickness of the bar in pixels.
    static constexpr int32_t barThickness = 5;

    explicit Splitter(QWidget* parent = nullptr);

    /// 0: vertical bar, left and right neighbours (the default); 1: horizontal bar, top and
    /// bottom neighbours, which take their new places at the next change of size or Refresh().
    int32_t Orientation() const { return arithmetic_.orientation(); }
    void Orientation(int32_t orientation);
    /// Percent; held between SplitterMin and SplitterMax.
    int32_t SplitterPosition() const { return arithmetic_.position(); }
    void SplitterPosition(int32_t percent);
    /// Unchecked: whoever sets it passes a sensible value.
    int32_t SplitterMin() const { return arithmetic_.minimum(); }
    void SplitterMin(int32_t percent) { arithmetic_.setMinimum(percent); }
    /// Below 0 becomes 1, above 100 becomes 99.
    int32_t SplitterMax() const { return arithmetic_.maximum(); }
    void SplitterMax(int32_t percent) { arithmetic_.setMaximum(percent); }
    int32_t SplitterWidth() const { return arithmetic_.thickness(); }
    void SplitterWidth(int32_t pixels) { arithmetic_.setThickness(pixels); }
    /// Whether the bar can be moved by a person; the neighbours do not mind.
    bool Enabled() const;
    void Enabled(bool enabled);
    /// An invalid colour, the default, is the palette's.
    QColor SplitterColor() const { return colour_; }
    void SplitterColor(const QColor& colour);
    /// The neighbours become children of the splitter; either may be absent.
    void LeftOrTopControl(QWidget* control);
    void RightOrBottomControl(QWidget* control);
    QWidget* LeftOrTopControl() const { return leftOrTop_; }
    QWidget* RightOrBottomControl() const { return rightOrBottom_; }
    /// Brings bar and neighbours to the mover.
    void Refresh() { arithmetic_.Refresh(); }

  signals:
    /// Before the layout of a change of size.
    void Resize();
    /// After the neighbours took their places.
    void Refreshed();
    void BarPressed();
    void BarMoved();
    void BarReleased();

  protected:
    void resizeEvent(QResizeEvent*) override;
    void hideEvent(QHideEvent*) override { endDrag(); }

  private:
    class Bar;
    void showBars() override;
    void moveNeighbours() override;
    void happened(SplitterBar::Event event) override;
    void adopt(QWidget* control);
    void endDrag();

    SplitterBar arithmetic_;
    QColor colour_;
    QPointer<QWidget> leftOrTop_;
    QPointer<QWidget> rightOrBottom_;
    Bar* bar_;
    Bar* mover_;
};

}  // namespace tessarine
