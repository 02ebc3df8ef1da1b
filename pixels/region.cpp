#include "pixels/region.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include "pixels/band_writer.h"
#include "pixels/shortage.h"

namespace tessarine {

namespace {

using Spans = std::span<const Rect>;

/// The bands of a region, one after the other.
class Bands {
  public:
    explicit Bands(Spans rects) : rest_(rects) { next(); }

    bool done() const { return band_.empty(); }
    int32_t top() const { return band_.front().top; }
    int32_t bottom() const { return band_.front().bottom; }
    Spans spans() const { return band_; }

    void next() {
        size_t count = 0;
        while (count < rest_.size() && rest_[count].top == rest_.front().top)
            ++count;
        band_ = rest_.first(count);
        rest_ = rest_.subspan(count);
    }

  private:
    Spans rest_;
    Spans band_;
};

/// The first span from `from` on that ends right of x. Looks near `from` first.
size_t firstReaching(Spans spans, size_t from, int32_t x) {
    size_t step = 1;
    while (from + step < spans.size() && spans[from + step].right <= x)
        step *= 2;
    const auto first = spans.begin() + static_cast<ptrdiff_t>(from);
    const auto last = spans.begin() + static_cast<ptrdiff_t>(std::min(from + step, spans.size()));
    return static_cast<size_t>(
        std::partition_point(first, last, [x](const Rect& r) { return r.right <= x; }) -
        spans.begin());
}

/// Walks the shorter list and looks the longer one up, so that a long band against many short
/// ones costs no more than what they share.
void intersect(Spans a, Spans b, BandWriter& out) {
    const Spans few = a.size() < b.size() ? a : b;
    const Spans many = a.size() < b.size() ? b : a;
    size_t k = 0;
    for (const Rect& span : few) {
        k = firstReaching(many, k, span.left);
        for (size_t i = k; i < many.size() && many[i].left < span.right; ++i) {
            k = i;
            out.add(std::max(span.left, many[i].left), std::min(span.right, many[i].right));
        }
        if (k == many.size()) return;
    }
}

/// The ends of the spans in rising order: each switches between outside and inside.
int32_t switchPoint(Spans spans, size_t i) {
    return i % 2 == 0 ? spans[i / 2].left : spans[i / 2].right;
}

/// Switch points that both lists have cancel each other; the rest are those of the result.
void exclude(Spans a, Spans b, BandWriter& out) {
    const size_t endA = a.size() * 2;
    const size_t endB = b.size() * 2;
    size_t i = 0;
    size_t j = 0;
    bool inside = false;
    int32_t left = 0;
    while (i < endA || j < endB) {
        int32_t x = 0;
        if (j == endB) {
            x = switchPoint(a, i++);
        } else if (i == endA) {
            x = switchPoint(b, j++);
        } else {
            const int32_t xa = switchPoint(a, i);
            const int32_t xb = switchPoint(b, j);
            x = std::min(xa, xb);
            if (xa == x) ++i;
            if (xb == x) ++j;
            if (xa == xb) continue;
        }
        if (inside) out.add(left, x);
        left = x;
        inside = !inside;
    }
}

int32_t limited(int64_t value) {
    return static_cast<int32_t>(std::clamp<int64_t>(value, std::numeric_limits<int32_t>::min(),
                                                    std::numeric_limits<int32_t>::max()));
}

/// Runs `make` with want of memory told as a failing statement.
template <class Make>
Region orFail(Make make) {
    try {
        return make();
    } catch (const std::bad_alloc&) {
        failForMemory("not enough memory for a region");
    }
}

}  // namespace

Region::Region(Rect rect) {
    if (rect.left > rect.right) std::swap(rect.left, rect.right);
    if (rect.top > rect.bottom) std::swap(rect.top, rect.bottom);
    if (rect.isEmpty()) return;
    rects_.push_back(rect);
    box_ = rect;
}

Region::Region(std::vector<Rect> canonical) : rects_(std::move(canonical)) {
    if (rects_.empty()) return;
    box_ = rects_.front();
    box_.bottom = rects_.back().bottom;
    for (const Rect& rect : rects_) {
        box_.left = std::min(box_.left, rect.left);
        box_.right = std::max(box_.right, rect.right);
    }
}

Region Region::operator&(const Region& other) const {
    return orFail([&] {
        BandWriter out;
        Bands a(rects_);
        Bands b(other.rects_);
        while (!a.done() && !b.done()) {
            const int32_t top = std::max(a.top(), b.top());
            const int32_t bottom = std::min(a.bottom(), b.bottom());
            if (top < bottom) {
                out.begin(top, bottom);
                intersect(a.spans(), b.spans(), out);
                out.end();
            }
            const bool aEnds = a.bottom() == bottom;
            const bool bEnds = b.bottom() == bottom;
            if (aEnds) a.next();
            if (bEnds) b.next();
        }
        return Region(out.take());
    });
}

Region Region::operator^(const Region& other) const {
    return orFail([&] {
        BandWriter out;
        Bands a(rects_);
        Bands b(other.rects_);
        int32_t y = std::numeric_limits<int32_t>::min();
        // Row y is the first that is not written yet. Each turn writes the rows up to the next
        // edge of a band of either region.
        while (!a.done() || !b.done()) {
            const bool inA = !a.done() && a.top() <= y;
            const bool inB = !b.done() && b.top() <= y;
            int32_t edge = std::numeric_limits<int32_t>::max();
            if (!a.done()) edge = std::min(edge, inA ? a.bottom() : a.top());
            if (!b.done()) edge = std::min(edge, inB ? b.bottom() : b.top());
            if (inA || inB) {
                out.begin(y, edge);
                exclude(inA ? a.spans() : Spans(), inB ? b.spans() : Spans(), out);
                out.end();
            }
            if (inA && a.bottom() == edge) a.next();
            if (inB && b.bottom() == edge) b.next();
            y = edge;
        }
        return Region(out.take());
    });
}

Region Region::moved(int64_t dx, int64_t dy) const {
    return orFail([&] {
        BandWriter out;
        for (Bands bands(rects_); !bands.done(); bands.next()) {
            const int32_t top = limited(bands.top() + dy);
            const int32_t bottom = limited(bands.bottom() + dy);
            if (top >= bottom) continue;
            out.begin(top, bottom);
            for (const Rect& rect : bands.spans()) {
                const int32_t left = limited(rect.left + dx);
                const int32_t right = limited(rect.right + dx);
                if (left < right) out.add(left, right);
            }
            out.end();
        }
        return Region(out.take());
    });
}

Region Region::offset(int32_t dx, int32_t dy) const { return moved(dx, dy); }

std::span<const Rect> Region::band(int32_t y) const {
    const auto first = std::partition_point(rects_.begin(), rects_.end(),
                                            [y](const Rect& r) { return r.bottom <= y; });
    const auto last =
        std::partition_point(first, rects_.end(), [y](const Rect& r) { return r.top <= y; });
    return {first, last};
}

RegionOrder::RegionOrder(const Region* region) {
    if (region == nullptr) return;
    rects_ = region->rects();
    areas_.reserve(rects_.size() + 1);
    areas_.push_back(0);
    for (const Rect& r : rects_)
        areas_.push_back(areas_.back() + static_cast<uint64_t>(int64_t{r.right} - r.left) *
                                             static_cast<uint64_t>(int64_t{r.bottom} - r.top));
}

uint64_t RegionOrder::before(int32_t x, int32_t y) const {
    if (rects_.empty()) return 0;
    const auto first = std::partition_point(rects_.begin(), rects_.end(),
                                            [y](const Rect& r) { return r.bottom <= y; });
    const auto beyond =
        std::partition_point(first, rects_.end(), [y](const Rect& r) { return r.top <= y; });
    const auto areaTo = [this](std::span<const Rect>::iterator rect) {
        return areas_[static_cast<size_t>(rect - rects_.begin())];
    };
    if (first == beyond) return areaTo(first);
    // The band that holds row y: its rows above, then this row's pixels left of x.
    const auto height = static_cast<uint64_t>(int64_t{first->bottom} - first->top);
    const uint64_t inRow = (areaTo(beyond) - areaTo(first)) / height;
    const auto part =
        std::partition_point(first, beyond, [x](const Rect& r) { return r.right <= x; });
    uint64_t left = (areaTo(part) - areaTo(first)) / height;
    if (part != beyond && part->left < x) left += static_cast<uint64_t>(int64_t{x} - part->left);
    return areaTo(first) + inRow * static_cast<uint64_t>(int64_t{y} - first->top) + left;
}

bool Region::contains(int32_t x, int32_t y) const {
    const Spans row = band(y);
    const auto reaching =
        std::partition_point(row.begin(), row.end(), [x](const Rect& r) { return r.right <= x; });
    return reaching != row.end() && reaching->left <= x;
}

Region Region::frame(int32_t width, int32_t height) const {
    const Region inner = *this & moved(width, 0) & moved(-int64_t{width}, 0) & moved(0, height) &
                         moved(0, -int64_t{height});
    return *this ^ inner;
}

}  // namespace tessarine
