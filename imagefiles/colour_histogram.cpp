#include "imagefiles/colour_histogram.h"

#include <limits>

namespace tessarine {

namespace {

constexpr size_t mostCells = 65536;
/// Cubes of 8 levels never exceed mostCells.
constexpr int coarsestShift = 3;

/// Cells found by the upper bits of a colour. The slots are twice as many as the cells, so that
/// runs of taken slots stay short.
class CellTable {
  public:
    explicit CellTable(int shift) : shift_(shift), slots_(slotCount, free) { cells_.reserve(4096); }

    /// \return false where the cells do not suffice
    bool add(const Pixel& pixel) {
        const uint32_t key = static_cast<uint32_t>(pixel.red >> shift_) << 16 |
                             static_cast<uint32_t>(pixel.green >> shift_) << 8 |
                             static_cast<uint32_t>(pixel.blue >> shift_);
        if (key != lastKey_) {
            uint32_t slot = (key * 2654435769U) >> (32 - slotBits);
            while (slots_[slot] != free && keys_[slots_[slot]] != key)
                slot = (slot + 1) & (slotCount - 1);
            if (slots_[slot] == free) {
                if (cells_.size() == mostCells) return false;
                slots_[slot] = static_cast<uint32_t>(cells_.size());
                keys_.push_back(key);
                cells_.emplace_back().isOneColour = shift_ == 0;
            }
            lastKey_ = key;
            last_ = slots_[slot];
        }
        ColourCell& cell = cells_[last_];
        ++cell.count;
        cell.red += pixel.red;
        cell.green += pixel.green;
        cell.blue += pixel.blue;
        return true;
    }

    std::vector<ColourCell> take() { return std::move(cells_); }

  private:
    static constexpr int slotBits = 17;
    static constexpr uint32_t slotCount = 1U << slotBits;
    static constexpr uint32_t free = std::numeric_limits<uint32_t>::max();

    int shift_;
    std::vector<uint32_t> slots_;
    std::vector<uint32_t> keys_;
    std::vector<ColourCell> cells_;
    uint32_t lastKey_ = free;
    uint32_t last_ = 0;
};

bool addAll(const Bitmap& picture, CellTable& table) {
    for (int32_t y = 0; y < picture.height(); ++y) {
        const Pixel* row = picture.row(y);
        for (int32_t x = 0; x < picture.width(); ++x)
            if (!table.add(row[x])) return false;
    }
    return true;
}

}  // namespace

std::vector<ColourCell> colourHistogram(const Bitmap& picture) {
    for (int shift = 0;; ++shift) {
        CellTable table(shift);
        if (addAll(picture, table) || shift == coarsestShift) return table.take();
    }
}

}  // namespace tessarine
