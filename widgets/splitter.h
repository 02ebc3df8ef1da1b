#pragma once

#include <cstdint>

#include <QPointer>
#include <QWidget>

namespace tessarine {

/// Divides its room between two neighbours, its children, by a draggable bar. The position is a
/// percentage of the size. Until a drag ends, only the mover bar moves.
///
/// Beside a vertical bar the right neighbour reaches two bars' thickness past the splitter's edge,
/// where it is clipped; what it holds keeps clear of that strip.
class Splitter : public QWidget {
    Q_OBJECT

  public:
    /// Thickness of the bar in pixels.
    static constexpr int32_t barThickness = 5;

    explicit Splitter(QWidget* parent = nullptr);

    /// 0: vertical bar, left and right neighbours (the default); 1: horizontal bar, top and
    /// bottom neighbours.
    int32_t Orientation() const;
    void Orientation(int32_t orientation);
    /// Percent; held between SplitterMin and SplitterMax.
    int32_t SplitterPosition() const;
    void SplitterPosition(int32_t percent);
    int32_t SplitterMin() const;
    void SplitterMin(int32_t percent);
    int32_t SplitterMax() const;
    void SplitterMax(int32_t percent);
    int32_t SplitterWidth() const;
    void SplitterWidth(int32_t pixels);
    /// The neighbours become children of the splitter; either may be absent.
    void LeftOrTopControl(QWidget* control);
    void RightOrBottomControl(QWidget* control);
    QWidget* LeftOrTopControl() const;
    QWidget* RightOrBottomControl() const;
    /// Brings bar and neighbours to the mover.
    void Refresh();

  signals:
    /// Before the layout of a change of size.
    void Resize();
    /// After the neighbours took their places.
    void Refreshed();
    void BarPressed();
    void BarMoved();
    void BarReleased();
};

}  // namespace tessarine
