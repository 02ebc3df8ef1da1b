// A region as a block of words, and the union of whatever rectangles such a block holds.

#include <algorithm>
#include <bit>
#include <new>
#include <vector>

#include "pixels/band_writer.h"
#include "pixels/region.h"

namespace tessarine {

namespace {

constexpr size_t headerWords = 8;
constexpr int32_t headerBytes = 32;
constexpr int32_t typeRectangles = 1;
constexpr size_t wordsPerRect = 4;

struct Stretch {
    int32_t left = 0;
    int32_t right = 0;
};

/// How often each stretch between two neighbouring x positions is covered, as a binary tree over
/// the stretches. Reading the covered spans touches only what borders on an uncovered stretch, so
/// rectangles that hide behind others cost nothing.
class Coverage {
  public:
    explicit Coverage(std::vector<int32_t> positions)
        : positions_(std::move(positions)),
          size_(std::bit_ceil(positions_.size() - 1)),
          nodes_(size_ * 2) {}

    /// Adds `change` to the cover of all stretches from left to right; both must be positions.
    void cover(int32_t left, int32_t right, int32_t change) {
        cover(1, 0, size_, indexOf(left), indexOf(right), change);
    }

    /// Covered pixels in all. Tells whether a change of one sign changed what is covered.
    int64_t covered() const { return nodes_[1].covered; }

    /// The covered stretches from left to right; neighbours may touch.
    std::vector<Stretch> stretches() const {
        std::vector<Stretch> found;
        collect(1, 0, size_, found);
        return found;
    }

  private:
    struct Node {
        int32_t count = 0;    // covers of the whole node that are not counted further down
        int64_t covered = 0;  // pixels
    };

    size_t indexOf(int32_t x) const {
        return static_cast<size_t>(std::lower_bound(positions_.begin(), positions_.end(), x) -
                                   positions_.begin());
    }

    int32_t position(size_t i) const { return positions_[std::min(i, positions_.size() - 1)]; }

    int64_t length(size_t first, size_t last) const {
        return int64_t{position(last)} - position(first);
    }

    void cover(size_t node, size_t first, size_t last, size_t from, size_t to, int32_t change) {
        if (to <= first || last <= from) return;
        if (from <= first && last <= to) {
            nodes_[node].count += change;
        } else {
            const size_t middle = (first + last) / 2;
            cover(node * 2, first, middle, from, to, change);
            cover(node * 2 + 1, middle, last, from, to, change);
        }
        if (nodes_[node].count > 0) {
            nodes_[node].covered = length(first, last);
        } else if (last - first == 1) {
            nodes_[node].covered = 0;
        } else {
            nodes_[node].covered = nodes_[node * 2].covered + nodes_[node * 2 + 1].covered;
        }
    }

    void collect(size_t node, size_t first, size_t last, std::vector<Stretch>& found) const {
        if (nodes_[node].covered == 0) return;
        if (nodes_[node].covered == length(first, last)) {
            found.push_back({position(first), position(last)});
            return;
        }
        const size_t middle = (first + last) / 2;
        collect(node * 2, first, middle, found);
        collect(node * 2 + 1, middle, last, found);
    }

    std::vector<int32_t> positions_;
    size_t size_;
    std::vector<Node> nodes_;
};

struct Edge {
    int32_t y = 0;
    int32_t change = 0;  // 1 where a rectangle begins, -1 where it ends
    Rect rect;
};

/// The union of rectangles in any order, overlapping or not. Rows are swept from the top; what is
/// covered is read anew only where it has changed.
std::vector<Rect> unite(std::span<const Rect> given) {
    if (given.empty()) return {};
    std::vector<int32_t> positions;
    std::vector<Edge> edges;
    for (const Rect& rect : given) {
        positions.insert(positions.end(), {rect.left, rect.right});
        edges.push_back({rect.top, 1, rect});
        edges.push_back({rect.bottom, -1, rect});
    }
    std::sort(positions.begin(), positions.end());
    positions.erase(std::unique(positions.begin(), positions.end()), positions.end());
    // Beginnings first: where one rectangle takes over from another nothing changes.
    std::sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) {
        return a.y != b.y ? a.y < b.y : a.change > b.change;
    });

    BandWriter out;
    Coverage coverage(std::move(positions));
    std::vector<Stretch> current;
    int32_t top = edges.front().y;
    for (size_t i = 0; i < edges.size();) {
        const int32_t y = edges[i].y;
        bool changed = false;
        for (; i < edges.size() && edges[i].y == y; ++i) {
            const int64_t before = coverage.covered();
            coverage.cover(edges[i].rect.left, edges[i].rect.right, edges[i].change);
            changed = changed || coverage.covered() != before;
        }
        if (!changed) continue;
        out.begin(top, y);
        for (const Stretch& stretch : current)
            out.add(stretch.left, stretch.right);
        out.end();
        current = coverage.stretches();
        top = y;
    }
    return out.take();
}

}  // namespace

std::shared_ptr<const Region> Region::fromBlock(std::span<const int32_t> words) {
    if (words.size() < headerWords || words[0] != headerBytes || words[1] != typeRectangles) {
        return nullptr;
    }
    const auto count = static_cast<uint32_t>(words[2]);
    const std::span<const int32_t> data = words.subspan(headerWords);
    if (count > data.size() / wordsPerRect) return nullptr;
    try {
        std::vector<Rect> given;
        for (size_t i = 0; i < size_t{count} * wordsPerRect; i += wordsPerRect) {
            const Rect rect{data[i], data[i + 1], data[i + 2], data[i + 3]};
            if (!rect.isEmpty()) given.push_back(rect);
        }
        return std::make_shared<const Region>(Region(unite(given)));
    } catch (const StatementFailed&) {
        return nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

std::vector<int32_t> Region::block() const {
    std::vector<int32_t> words = {headerBytes,
                                  typeRectangles,
                                  static_cast<int32_t>(rects_.size()),
                                  static_cast<int32_t>(rects_.size() * sizeof(Rect)),
                                  box_.left,
                                  box_.top,
                                  box_.right,
                                  box_.bottom};
    words.reserve(headerWords + rects_.size() * wordsPerRect);
    for (const Rect& rect : rects_) {
        words.insert(words.end(), {rect.left, rect.top, rect.right, rect.bottom});
    }
    return words;
}

}  // namespace tessarine
