#include "pixels/sources.h"

#include <limits>

#include "pixels/words.h"

namespace tessarine {

SourceTaker::SourceTaker(const PixelBuffer& bits, const Region* region, Uncovered uncovered)
    : bits_(bits), test_(region), uncovered_(uncovered) {
    if (region != nullptr) box_ = region->box();
    const int32_t margin = PixelBuffer::margin;
    isBoxInBuffer_ = region != nullptr && region->rects().size() == 1 && box_.left >= -margin &&
                     box_.top >= -margin && box_.right <= bits.width() + margin &&
                     box_.bottom <= bits.height() + margin &&
                     bits.pixelCount() <= size_t{std::numeric_limits<int32_t>::max()};
}

void SourceTaker::take(Pixel* result, const int32_t* xs, const int32_t* ys, int32_t count) const {
    if (isBoxInBuffer_) return takeInBox(result, xs, ys, count);
    for (int32_t i = 0; i < count; ++i) {
        if (test_.contains(xs[i], ys[i]))
            takeColours(result[i], bits_.reached(xs[i], ys[i]));
        else if (uncovered_ == Uncovered::blacken)
            takeColours(result[i], Pixel{});
    }
}

// Without a branch: what lies outside is read from the block's first pixel and not used.
void SourceTaker::takeInBox(Pixel* result, const int32_t* xs, const int32_t* ys,
                            int32_t count) const {
    const Word* block = wordsOf(bits_.block());
    Word* __restrict words = wordsOf(result);
    const auto stride = static_cast<int32_t>(bits_.stride());
    const auto origin = static_cast<int32_t>(bits_.offsetOfRow(0));
    const auto width = static_cast<uint32_t>(box_.right - box_.left);
    const auto height = static_cast<uint32_t>(box_.bottom - box_.top);
    const int32_t left = box_.left;
    const int32_t top = box_.top;
    const Word kept = uncovered_ == Uncovered::leave ? coloursOfWord : 0;
    for (int32_t i = 0; i < count; ++i) {
        const bool isInside = (static_cast<uint32_t>(xs[i] - left) < width) &
                              (static_cast<uint32_t>(ys[i] - top) < height);
        const Word inside = isInside ? coloursOfWord : 0;
        const int32_t place = (ys[i] * stride + xs[i] + origin) & (isInside ? -1 : 0);
        const Word own = words[i];
        const Word other = own & kept & ~inside;
        words[i] = (block[place] & inside) | other | (own & ~coloursOfWord);
    }
}

}  // namespace tessarine
