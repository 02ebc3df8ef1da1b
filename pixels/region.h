#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace tessarine {

/// A rectangle in whole pixels; right and bottom are exclusive.
struct Rect {
    int32_t left = 0;
    int32_t top = 0;
    int32_t right = 0;
    int32_t bottom = 0;

    bool isEmpty() const { return left >= right || top >= bottom; }
    friend bool operator==(const Rect&, const Rect&) = default;
};

/// A place in whole pixels.
struct Point {
    int32_t x = 0;
    int32_t y = 0;

    friend bool operator==(const Point&, const Point&) = default;
};

/// A set of pixels as rectangles in canonical form: sorted by top, then left; rectangles of one
/// band share top and bottom, never touch each other, and two bands that touch differ in their
/// rectangles. Two regions of the same pixels therefore have the same rectangles. Immutable.
///
/// Coordinates take the whole 32-bit range. Operations whose result would need more than maxRects
/// rectangles, or more memory than there is, throw StatementFailed.
class Region {
  public:
    /// The most rectangles of one region; their data then counts 256 MB.
    static constexpr size_t maxRects = size_t{1} << 24;

    /// The empty region.
    Region() = default;
    /// One rectangle. Corners given in reverse order are put in order; no area gives the empty
    /// region.
    explicit Region(Rect rect);

    /// Makes a region of a block: eight header words (32, 1, rectangle count, bytes of rectangle
    /// data, box), then four words a rectangle. The rectangles may overlap and stand in any
    /// order; those without area count for nothing. The box words are not read.
    /// \return null where the words are no such block (another type or header size, fewer words
    /// than its count asks for), or where the region is not to be had.
    static std::shared_ptr<const Region> fromBlock(std::span<const int32_t> words);
    /// The region's own block.
    std::vector<int32_t> block() const;

    Region operator&(const Region& other) const;
    Region operator^(const Region& other) const;
    /// The region moved; what would leave the 32-bit range is cut off.
    Region offset(int32_t dx, int32_t dy) const;

    bool isEmpty() const { return rects_.empty(); }
    /// The smallest rectangle around the region; all 0 for the empty region.
    Rect box() const { return box_; }
    bool contains(int32_t x, int32_t y) const;
    std::span<const Rect> rects() const { return rects_; }
    /// The rectangles of the band that holds row y, from left to right; empty where none does.
    std::span<const Rect> band(int32_t y) const;

    /// The region's border, `width` pixels wide at left and right and `height` pixels high at top
    /// and bottom: the pixels of the region from which a step of that many pixels straight left,
    /// right, up or down leaves the region. A width or height of 0 gives no border there.
    Region frame(int32_t width, int32_t height) const;

    friend bool operator==(const Region& a, const Region& b) { return a.rects_ == b.rects_; }

  private:
    /// Takes rectangles that are canonical already.
    explicit Region(std::vector<Rect> canonical);
    Region moved(int64_t dx, int64_t dy) const;

    std::vector<Rect> rects_;
    Rect box_;
};

/// The point test of a region, made ready for many points.
class RegionTest {
  public:
    /// \param region null for no region, which contains nothing. Must outlive the test.
    explicit RegionTest(const Region* region)
        : region_(region),
          box_(region != nullptr ? region->box() : Rect{}),
          isBox_(region == nullptr || region->rects().size() <= 1) {}

    bool contains(int32_t x, int32_t y) const {
        if (x < box_.left || x >= box_.right || y < box_.top || y >= box_.bottom) return false;
        return isBox_ || region_->contains(x, y);
    }

  private:
    const Region* region_;
    Rect box_;
    bool isBox_;
};

/// The order in which filters come upon a region's pixels: row by row, from left to right.
class RegionOrder {
  public:
    /// \param region null for no region. Must outlive the order.
    explicit RegionOrder(const Region* region);

    /// How many pixels of the region come before (x, y), counted modulo 2^64.
    uint64_t before(int32_t x, int32_t y) const;
    /// All pixels of the region.
    uint64_t count() const { return areas_.empty() ? 0 : areas_.back(); }

  private:
    std::span<const Rect> rects_;
    std::vector<uint64_t> areas_;  ///< areas_[i] is the area of the first i rectangles
};

/// A region as its owner holds it; null stands for no region.
using RegionHandle = std::shared_ptr<const Region>;

}  // namespace tessarine
