#pragma once

#include <cstdint>

namespace tessarine {

/// The arithmetic of a splitter: where its two bars and its two neighbours stand, and what a
/// pointer does to them. Lengths are in the units of the container.
///
/// The bar stands where the split is. The mover follows the pointer, hidden unless a drag is on,
/// and Refresh() brings the bar and the neighbours to it.
class SplitterBar {
  public:
    struct Place {
        int32_t left = 0;
        int32_t top = 0;
        int32_t width = 0;
        int32_t height = 0;
        bool operator==(const Place&) const = default;
    };
    enum class Event { resize, press, move, release };

    /// The control around the arithmetic: it shows what it is told, in the order told.
    class Control {
      public:
        virtual ~Control() = default;
        /// The place of a bar changed, or the mover came up or went away.
        virtual void showBars() = 0;
        /// The neighbours take their places; an absent one is skipped.
        virtual void moveNeighbours() = 0;
        virtual void happened(Event event) = 0;
    };

    explicit SplitterBar(Control& control) : control_(control) {}

    int32_t orientation() const { return orientation_; }
    int32_t position() const { return position_; }
    int32_t minimum() const { return minimum_; }
    int32_t maximum() const { return maximum_; }
    int32_t thickness() const { return thickness_; }
    /// 0: vertical bar; 1: horizontal bar. The neighbours stay until the next Refresh().
    void setOrientation(int32_t orientation);
    /// Percent, held between minimum and maximum.
    void setPosition(int32_t percent);
    /// Percent. Unchecked: whoever sets it passes a sensible value.
    void setMinimum(int32_t percent);
    /// Percent; below 0 becomes 1 and above 100 becomes 99.
    void setMaximum(int32_t percent);
    void setThickness(int32_t thickness);

    void resize(int32_t width, int32_t height);
    /// Brings the bar and the neighbours to the mover.
    void Refresh();

    /// The pointer goes down on the bar, moves over it, with or without a button held, and up.
    /// x and y are relative to the bar.
    void press();
    void move(double x, double y);
    void release();
    /// The pointer is no longer over the bar. What it said in passing, outside a drag, is taken
    /// back: a percentage is rounded down, so a bar that only was passed over would creep towards
    /// the first neighbour from resize to resize. Nothing happens during a drag.
    void leave();

    const Place& bar() const { return bar_; }
    const Place& mover() const { return mover_; }
    bool moverVisible() const { return moverVisible_; }
    Place leftOrTop() const;
    /// Beside a vertical bar this reaches past the container's edge by two thicknesses of the bar.
    Place rightOrBottom() const;

  private:
    bool vertical() const { return orientation_ == 0; }
    int32_t size() const { return vertical() ? width_ : height_; }
    int32_t percentOfSize(int32_t percent) const;
    Place placeAt(int32_t along) const;
    void placeMover() { mover_ = placeAt(percentOfSize(position_)); }
    void placeAndRefresh();

    Control& control_;
    int32_t thickness_ = 70;
    int32_t orientation_ = 0;
    int32_t position_ = 50;
    int32_t chosen_ = 50;  ///< the position without what a pointer says in passing
    int32_t maximum_ = 90;
    int32_t minimum_ = 10;
    int32_t width_ = 0;
    int32_t height_ = 0;
    Place bar_;
    Place mover_;
    bool moverVisible_ = false;
};

}  // namespace tessarine
