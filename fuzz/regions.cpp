#include <cstring>
#include <vector>

#include "input.h"
#include "pixels/bit_region.h"
#include "scratch.h"

using namespace tessarine;

namespace {

void checkRegion(const Region& region, int32_t choice) {
    expect(*Region::fromBlock(region.block()) == region);
    for (const Rect& rect : region.rects()) {
        expect(!rect.isEmpty() && region.contains(rect.left, rect.top));
        expect(!region.contains(rect.right, rect.top));
    }
    expect((region ^ region).isEmpty() && (region & region) == region);
    const Region moved = region.offset(choice, -(choice / 2));
    expect(((moved ^ region) ^ moved) == region);
    const Region border = region.frame(1, 1);
    expect((border & region) == border);
}

void expectWithin(const RegionHandle& part, const RegionHandle& whole) {
    if (part != nullptr && whole != nullptr) expect((*part & *whole) == *part);
}

}  // namespace

// A region of any block keeps its pixels through its own block and through every operation that
// is undone, and a file of it through every member that a selection has. The first word chooses
// zooms, offsets and the size of the picture.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const Scratch scratch;
    Input input(data, size);
    const int32_t choice = input.i32();
    const std::string file = textOf(input.rest());
    std::vector<int32_t> words(file.size() / sizeof(int32_t));
    if (!words.empty()) std::memcpy(words.data(), file.data(), words.size() * sizeof(int32_t));

    const RegionHandle region = Region::fromBlock(words);
    if (region != nullptr) checkRegion(*region, choice);

    cBitRegion selection;
    selection.Init(-5, -5, choice % 64, choice / 64 % 64);
    scratch.write("any.region", file);
    selection.LoadFromFile(scratch.path("any.region"));
    int32_t left = 0;
    int32_t top = 0;
    int32_t right = 0;
    int32_t bottom = 0;
    expect(selection.BoundRect(left, top, right, bottom) ==
           (selection.Region() != nullptr && !selection.Region()->isEmpty()));
    if (region != nullptr) expect(selection.Region() != nullptr && *selection.Region() == *region);

    if (selection.Region() != nullptr) {
        scratch.remove("saved.region");
        selection.SaveToFile(scratch.path("saved.region"));
        cBitRegion again;
        again.LoadFromFile(scratch.path("saved.region"));
        expect(again.Region() != nullptr && *again.Region() == *selection.Region());
        expect(again.GetData() == selection.GetData());
    }

    selection.ZoomFactor(static_cast<float>(choice % 1000) / 100);
    selection.Offset(choice, choice % 7);
    selection.Invert();
    selection.ZoomFactor(static_cast<float>(choice));
    selection.Crop();
    expectWithin(selection.Region(), selection.RegionMain());
    PixelBuffer surface(32, 32);
    selection.DrawToDC(surface, choice, 3);
    selection.RotateBrush();
    selection.DrawToDC(surface, choice % 16, 3);
    selection.Clear();
    expect(selection.IsEmptyRegion() && selection.GetDataCount() == 0);
    return 0;
}
