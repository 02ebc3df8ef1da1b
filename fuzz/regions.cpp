#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "expect.h"
#include "pixels/bit_region.h"

using namespace tessarine;

// A region of any block keeps its pixels through its own block and through every operation that
// is undone; the first word chooses a zoom and an offset.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::vector<int32_t> words(size / sizeof(int32_t));
    if (words.empty()) return 0;
    std::memcpy(words.data(), data, words.size() * sizeof(int32_t));
    const int32_t choice = words.front();
    words.front() = 32;
    const RegionHandle region = Region::fromBlock(words);
    if (region == nullptr) return 0;
    expect(*Region::fromBlock(region->block()) == *region);
    for (const Rect& rect : region->rects()) {
        expect(!rect.isEmpty() && region->contains(rect.left, rect.top));
        expect(!region->contains(rect.right, rect.top));
    }
    expect((*region ^ *region).isEmpty() && (*region & *region) == *region);
    const Region moved = region->offset(choice, -(choice / 2));
    expect(((moved ^ *region) ^ moved) == *region);
    const Region border = region->frame(1, 1);
    expect((border & *region) == border);

    cBitRegion selection;
    selection.Init(-5, -5, 40, 30);
    selection.Region(region);
    selection.ZoomFactor(static_cast<float>(choice % 1000) / 100);
    selection.Invert();
    selection.Crop();
    PixelBuffer surface(32, 32);
    selection.DrawToDC(surface, choice, 3);
    return 0;
}
