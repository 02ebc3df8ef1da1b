#include "pixels/levels.h"

#include <vector>

#include <gtest/gtest.h>

#include "pixels/point_loops.h"

namespace tessarine {
namespace {

/// Pixels whose bytes take all values in changing company.
std::vector<Pixel> pixels(size_t count) {
    std::vector<Pixel> made(count);
    for (size_t i = 0; i < count; ++i)
        made[i] = {static_cast<uint8_t>(i), static_cast<uint8_t>(i * 7 + i / 256),
                   static_cast<uint8_t>(255 - i), static_cast<uint8_t>(i * 31)};
    return made;
}

/// A pixel that no table and no sum below gives.
constexpr Pixel untouched{1, 2, 3, 4};

Levels scrambled() {
    Levels levels;
    for (size_t i = 0; i < levels.size(); ++i)
        levels[i] = static_cast<uint8_t>(i * 37 + 11);
    return levels;
}

TEST(Levels, EveryValueInEveryChannelGoesThroughTheTable) {
    const Levels levels = scrambled();
    const std::vector<Pixel> source = pixels(70000);
    std::vector<Pixel> result(source.size());
    changeLevels(levels, source.data(), result.data(), source.size());
    for (size_t i = 0; i < source.size(); ++i) {
        const Pixel& p = source[i];
        const Pixel expected{levels[p.blue], levels[p.green], levels[p.red], p.fourth};
        ASSERT_EQ(result[i], expected) << i;
    }
}

TEST(Levels, RunsOfAllLengthsAndPlacesAreChangedAndNothingBesideThem) {
    const Levels levels = scrambled();
    const std::vector<Pixel> source = pixels(120);
    for (size_t from = 0; from < 8; ++from)
        for (size_t count = 0; from + count <= source.size(); ++count) {
            std::vector<Pixel> result(source.size(), untouched);
            changeLevels(levels, source.data() + from, result.data() + from, count);
            for (size_t i = 0; i < source.size(); ++i) {
                const Pixel& p = source[i];
                const bool isIn = i >= from && i < from + count;
                ASSERT_EQ(result[i],
                          (isIn ? Pixel{levels[p.blue], levels[p.green], levels[p.red], p.fourth}
                                : untouched))
                    << from << ' ' << count << ' ' << i;
            }
        }
}

TEST(Sums, EveryPixelTakesTheColoursOfItsSumAndKeepsItsFourthByte) {
    ColoursOfSums colours;
    for (size_t sum = 0; sum < colours.size(); ++sum) {
        const auto level = static_cast<int32_t>(sum);
        colours[sum] = bitsOfColour(Colour{level & 255, level >> 2, 255 - level / 3});
    }
    const std::vector<Pixel> source = pixels(3000);
    for (const size_t count : {size_t{0}, size_t{1}, size_t{511}, size_t{512}, size_t{2999}}) {
        std::vector<Pixel> result(source.size(), untouched);
        changeSums(colours, source.data(), result.data(), count);
        for (size_t i = 0; i < source.size(); ++i) {
            const Pixel& p = source[i];
            const int32_t sum = p.blue + p.green + p.red;
            const Pixel expected{static_cast<uint8_t>(sum & 255), static_cast<uint8_t>(sum >> 2),
                                 static_cast<uint8_t>(255 - sum / 3), p.fourth};
            ASSERT_EQ(result[i], i < count ? expected : untouched) << count << ' ' << i;
        }
    }
}

}  // namespace
}  // namespace tessarine
