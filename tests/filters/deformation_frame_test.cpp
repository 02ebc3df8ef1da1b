#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "places.h"
#include "support/clock.h"
#include "support/pictures.h"

// What all members of the family share: the fourth channel, the margin, the reports, and that no
// argument, region or picture is too odd for them.

namespace tessarine::tests::deformation {
namespace {

using Reports = std::vector<int32_t>;

/// A call that takes all its numbers from `n`.
struct Member {
    std::string name;
    std::function<PixelBuffer(cBitFilter&, int32_t n)> call;
};

const std::vector<Member>& members() {
    using F = cBitFilter;
    using N = int32_t;
    static const std::vector<Member> all = {
        {"BEND", [](F& f, N n) { return f.BEND(n, true); }},
        {"FOLD", [](F& f, N n) { return f.FOLD(n, n, true); }},
        {"STRETCH", [](F& f, N n) { return f.STRETCH(n, n, true); }},
        {"TWIRL", [](F& f, N n) { return f.TWIRL(n, n, true); }},
        {"ROTATE", [](F& f, N n) { return f.ROTATE(n, true); }},
        {"RotateSmooth", [](F& f, N n) { return f.RotateSmooth(n); }},
        {"GLASS slanting", [](F& f, N) { return f.GLASS("slanting", 0); }},
        {"GLASS squary", [](F& f, N) { return f.GLASS("squary", 1); }},
        {"GLASS curtain", [](F& f, N) { return f.GLASS("curtain", 2); }},
        {"LENS", [](F& f, N n) { return f.LENS(0.5F, 0.5F, 0.4F, n); }},
        {"LENS by radius",
         [](F& f, N n) { return f.LENS(0.5F, 0.5F, static_cast<float>(n), 140); }},
        {"LENS by centre", [](F& f, N n) { return f.LENS(n * 0.01F, n * 0.01F, 0.5F, 150); }},
        {"WAVES", [](F& f, N n) { return f.WAVES(n, n, n); }},
        {"TILE", [](F& f, N n) { return f.TILE(n); }},
        {"Shift", [](F& f, N n) { return f.Shift(n, n, n); }},
    };
    return all;
}

/// A picture whose margin is coloured, so that a change there is seen.
PixelBuffer framed(int32_t width, int32_t height) {
    PixelBuffer picture = randomBuffer(width, height, 1);
    Pixel* block = picture.writableBlock();
    for (int32_t y = -2; y < height + 2; ++y)
        for (int32_t x = -2; x < width + 2; ++x)
            if (x < 0 || x >= width || y < 0 || y >= height)
                block[picture.offsetOfRow(y) + x] = {11, 22, 33, 44};
    return picture;
}

TEST(DeformationFrame, EveryMemberKeepsMarginFourthChannelSourceAndWhatLiesOutsideTheBox) {
    for (const Member& member : members()) {
        Engine engine(framed(24, 18));
        engine.keepTo({{3, 2, 20, 15}});
        const PixelBuffer result = member.call(engine.filter, 40);
        EXPECT_FALSE(result == engine.picture) << member.name;
        EXPECT_EQ(engine.filter.Bits(), engine.picture) << member.name;
        for (int32_t y = -2; y < 20; ++y)
            for (int32_t x = -2; x < 26; ++x) {
                EXPECT_EQ(result.at(x, y).fourth, engine.picture.at(x, y).fourth) << member.name;
                if (x >= 3 && x < 20 && y >= 2 && y < 15) continue;
                EXPECT_EQ(result.at(x, y), engine.picture.at(x, y)) << member.name;
            }
    }
}

TEST(DeformationFrame, EveryMemberButThoseOfADiscOrOfTilesReportsItsRows) {
    for (const Member& member : members()) {
        if (member.name.starts_with("LENS") || member.name == "TILE") continue;
        Engine engine(randomBuffer(6, 5, 2));
        engine.keepTo({{0, 2, 6, 4}});
        SteppingClock clock(100, 11);
        clock.attachTo(engine.filter);
        Reports reports;
        keepReports(engine.filter, reports);
        member.call(engine.filter, 10);
        EXPECT_EQ(reports, (Reports{50, 75, 100})) << member.name;
    }
}

TEST(DeformationFrame, EveryMemberButLensSkipsTheReportOfAPictureOneRowHigh) {
    for (const Member& member : members()) {
        if (member.name.starts_with("LENS")) continue;
        Engine engine(randomBuffer(6, 1, 3));
        SteppingClock clock(100, 11);
        clock.attachTo(engine.filter);
        Reports reports;
        keepReports(engine.filter, reports);
        PixelBuffer result;
        EXPECT_NO_THROW(result = member.call(engine.filter, 10)) << member.name;
        EXPECT_EQ(result.width(), 6) << member.name;
        EXPECT_EQ(reports, (Reports{100})) << member.name;
    }
}

TEST(DeformationFrame, TileMaskFailsAtADueReportOfAPictureOneRowHigh) {
    Engine engine(randomBuffer(6, 1, 3));
    SteppingClock clock(100, 11);
    clock.attachTo(engine.filter);
    EXPECT_THROW(engine.filter.TileMask(places(2, 2), 0, 0, true, 50, -1), StatementFailed);
}

TEST(DeformationFrame, EveryMemberButLensOnAnEmptyRegionGivesTheSourceAndReportsItsEnd) {
    for (const Member& member : members()) {
        if (member.name.starts_with("LENS")) continue;
        Engine engine(randomBuffer(12, 9, 4));
        engine.keepTo({});
        SteppingClock clock(100, 11);
        clock.attachTo(engine.filter);
        Reports reports;
        keepReports(engine.filter, reports);
        EXPECT_EQ(member.call(engine.filter, 40), engine.picture) << member.name;
        EXPECT_EQ(reports, (Reports{100})) << member.name;
    }
}

TEST(DeformationFrame, LensAndTileMaskReportTheirRowsOnAnEmptyRegionAsWell) {
    // Neither walks the scan rectangle.
    const PixelBuffer mask = places(3, 4);
    for (const bool lens : {true, false}) {
        Engine engine(randomBuffer(12, 9, 4));
        engine.keepTo({});
        SteppingClock clock(100, 11);
        clock.attachTo(engine.filter);
        Reports reports;
        keepReports(engine.filter, reports);
        EXPECT_EQ(lens ? engine.filter.LENS(0.5F, 0.5F, 0.1F, 75)
                       : engine.filter.TileMask(mask, 0, 0, true, 50, -1),
                  engine.picture);
        EXPECT_EQ(reports, (Reports{0, 50, 100, 100}));
    }
}

TEST(DeformationFrame, AnObjectWithoutABufferGivesNone) {
    const auto region = regionOf({{-5, -5, 5, 5}});
    for (const Member& member : members()) {
        cBitFilter filter;
        filter.BitsRegion(region);
        EXPECT_FALSE(member.call(filter, 40).isDimensioned()) << member.name;
    }
    cBitFilter filter;
    filter.timeGetTime = [] { return 0U; };
    filter.BitsRegion(region);
    EXPECT_FALSE(filter.TileMask(places(2, 2), 0, 0, true, 50, -1).isDimensioned());
}

TEST(DeformationFrame, NoArgumentRegionOrSizeIsTooOdd) {
    constexpr int32_t lowest = std::numeric_limits<int32_t>::min();
    constexpr int32_t highest = std::numeric_limits<int32_t>::max();
    const std::vector<int32_t> numbers{lowest, lowest + 1, -46341, -101,        -100,
                                       -1,     0,          1,      149,         150,
                                       151,    300,        46341,  highest - 1, highest};
    const std::vector<std::vector<Rect>> regions{
        {{lowest, lowest, highest, highest}},
        {{lowest, -1, 0, highest}, {2, lowest, highest, 2}},
        {{highest - 3, highest - 3, highest, highest}},
        {{lowest, lowest, lowest + 2, lowest + 2}}};
    const std::vector<std::pair<int32_t, int32_t>> sizes{{0, 0}, {0, 3}, {3, 0}, {1, 1},
                                                         {1, 5}, {5, 1}, {2, 2}, {7, 4}};
    const std::vector<PixelBuffer> masks{PixelBuffer(0, 0), PixelBuffer(0, 3), PixelBuffer(3, 0),
                                         places(1, 1),      places(2, 3),      places(30, 20)};
    for (const auto& [width, height] : sizes)
        for (const auto& rects : regions) {
            Engine engine(framed(width, height));
            engine.keepTo(rects);
            for (const int32_t n : numbers) {
                for (const Member& member : members()) {
                    const PixelBuffer result = member.call(engine.filter, n);
                    EXPECT_EQ(result.byteCount(), engine.picture.byteCount()) << member.name;
                }
                for (const PixelBuffer& mask : masks)
                    for (const bool tiled : {true, false}) {
                        // The tiles of a mask without columns or rows never end.
                        size_t bytes = engine.picture.byteCount();
                        const bool ended = attempt([&] {
                            bytes = engine.filter.TileMask(mask, n, n, tiled, 50, n).byteCount();
                        });
                        EXPECT_EQ(bytes, engine.picture.byteCount());
                        EXPECT_TRUE(ended || (tiled && (mask.width() == 0 || mask.height() == 0)));
                    }
            }
        }
}

TEST(DeformationFrame, NoSingleIsTooOddForALens) {
    constexpr int32_t lowest = std::numeric_limits<int32_t>::min();
    constexpr int32_t highest = std::numeric_limits<int32_t>::max();
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float none = std::numeric_limits<float>::quiet_NaN();
    const std::vector<float> singles{0.5F, none, infinity, -infinity, 3e38F, -3e38F, 1e-45F};
    const std::vector<std::pair<int32_t, int32_t>> sizes{{0, 0}, {0, 3}, {1, 1}, {5, 1}, {7, 4}};
    for (const auto& [width, height] : sizes) {
        Engine engine(framed(width, height));
        engine.keepTo({{lowest, lowest, highest, highest}});
        for (const float xRel : singles)
            for (const float yRel : singles)
                for (const float dRel : singles)
                    for (const int32_t factor : {lowest, -1, 0, 75, 150, 151, highest})
                        EXPECT_EQ(engine.filter.LENS(xRel, yRel, dRel, factor).byteCount(),
                                  engine.picture.byteCount())
                            << xRel << ", " << yRel << ", " << dRel << ", " << factor;
    }
}

}  // namespace
}  // namespace tessarine::tests::deformation
