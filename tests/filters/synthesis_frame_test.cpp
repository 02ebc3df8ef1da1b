#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/comparison.h"
#include "support/engine.h"

// What holds for all synthesis members alike: what they leave alone, odd regions and pictures,
// and their reports.

namespace tessarine::tests {
namespace {

constexpr int32_t lowest = std::numeric_limits<int32_t>::min();
constexpr int32_t highest = std::numeric_limits<int32_t>::max();

struct Member {
    std::string name;
    std::function<PixelBuffer(cBitFilter&)> call;
    bool skips = true;
    /// Whether a pixel's outcome goes by the region's place, and not by its shape alone.
    bool goesByPlace = false;
};

const std::vector<Member>& members() {
    using F = cBitFilter;
    static const PixelBuffer texture = randomBuffer(4, 3, 9);
    static const std::vector<Member> all = {
        {"DIFFUSE", [](F& f) { return f.DIFFUSE(9, 5); }, true, true},
        {"HALFTONE", [](F& f) { return f.HALFTONE(2, 3, 10); }, false, true},
        {"PIXELIZE", [](F& f) { return f.PIXELIZE(3); }},
        {"NOISE", [](F& f) { return f.NOISE(40, false); }, true, true},
        {"Scanlines", [](F& f) { return f.Scanlines(60); }, true, true},
        {"Grid", [](F& f) { return f.Grid(3, 2, true, 255, 200); }, true, true},
        {"Light", [](F& f) { return f.Light(0.4F, 0.5F, 0.6F, 90, 20); }, false},
        {"Texturize", [](F& f) { return f.Texturize(texture); }, true, true},
        {"StuckiBW", [](F& f) { return f.StuckiBW(10); }},
        {"GradientCircular",
         [](F& f) { return f.GradientCircular(1, 2, 7, 4, 255, 65280, 70, 3); }},
        {"GradientLinear", [](F& f) { return f.GradientLinear(1, 2, 7, 4, 255, -1, 70, 3); }},
    };
    return all;
}

/// A random picture whose margin is random too.
PixelBuffer withMargin(int32_t width, int32_t height, uint32_t seed) {
    const PixelBuffer colours = randomBuffer(width + 4, height + 4, seed);
    PixelBuffer picture(width, height);
    Pixel* block = picture.writableBlock();
    for (int32_t y = -2; y < height + 2; ++y)
        for (int32_t x = -2; x < width + 2; ++x)
            block[picture.offsetOfRow(y) + x] = colours.at(x + 2, y + 2);
    return picture;
}

TEST(SynthesisFrame, FourthBytesAndTheSourceStay) {
    for (const Member& member : members()) {
        Engine engine(withMargin(13, 11, 1));
        engine.keepTo({{-2, -2, 15, 13}});
        const PixelBuffer result = member.call(engine.filter);
        EXPECT_FALSE(result == engine.picture) << member.name;
        EXPECT_EQ(engine.filter.Bits(), engine.picture) << member.name;
        for (size_t i = 0; i < result.pixelCount(); ++i)
            ASSERT_EQ(result.block()[i].fourth, engine.picture.block()[i].fourth) << member.name;
    }
}

TEST(SynthesisFrame, PixelsOutsideARectangleStayInTheMarginToo) {
    for (const Member& member : members()) {
        Engine engine(withMargin(13, 11, 2));
        engine.keepTo({{2, 3, 9, 8}});
        const PixelBuffer result = member.call(engine.filter);
        EXPECT_FALSE(result == engine.picture) << member.name;
        for (int32_t y = -2; y < 13; ++y)
            for (int32_t x = -2; x < 15; ++x)
                if (!engine.region->contains(x, y)) {
                    ASSERT_EQ(result.at(x, y), engine.picture.at(x, y))
                        << member.name << " at " << x << ", " << y;
                }
    }
}

TEST(SynthesisFrame, ARegionOfTheWholeRangeIsDoneAtOnceAndReachesTheMargin) {
    for (const Member& member : members()) {
        Engine engine(withMargin(13, 11, 3));
        engine.keepTo({{-2, -2, 15, 13}});
        const PixelBuffer expected = member.call(engine.filter);
        engine.keepTo({{lowest, lowest, highest, highest}});
        const PixelBuffer result = member.call(engine.filter);
        if (!member.goesByPlace) {
            EXPECT_TRUE(sameBuffer("whole-range", result, expected)) << member.name;
        }
        engine.keepTo({{lowest, lowest, -2, highest}, {15, 0, highest, 5}});
        if (member.name != "DIFFUSE") {
            EXPECT_EQ(member.call(engine.filter), engine.picture) << member.name;
        }
    }
}

TEST(SynthesisFrame, PicturesWithoutPixelsOrBufferComeOutAsTheyAre) {
    for (const Member& member : members()) {
        for (const PixelBuffer& picture :
             {PixelBuffer(), PixelBuffer(0, 0), PixelBuffer(0, 5), PixelBuffer(5, 0)}) {
            Engine engine(picture);
            EXPECT_EQ(member.call(engine.filter), picture) << member.name;
            EXPECT_EQ(engine.reports.back(), 100) << member.name;
        }
        Engine none((PixelBuffer()));
        none.keepTo({{-5, -5, 9, 9}});
        EXPECT_FALSE(member.call(none.filter).isDimensioned()) << member.name;
    }
}

TEST(SynthesisFrame, WithoutARegionThePictureComesOutAsItIs) {
    for (const Member& member : members()) {
        Engine engine(withMargin(13, 11, 4));
        engine.region.reset();
        const uint32_t state = engine.filter.random.state();
        EXPECT_EQ(member.call(engine.filter), engine.picture) << member.name;
        EXPECT_EQ(engine.reports.back(), 100) << member.name;
        EXPECT_EQ(engine.filter.random.state(), state) << member.name;
    }
}

TEST(SynthesisFrame, OneRowHighMembersThatSkipGoOnWithoutTheReport) {
    for (const Member& member : members()) {
        Engine engine(withMargin(13, 1, 5));
        const PixelBuffer quiet = [&] {
            Engine other(engine.picture);
            return member.call(other.filter);
        }();
        engine.reportAlways();
        // The disc's reports are not measured against the picture's height.
        if (member.skips || member.name == "Light") {
            EXPECT_EQ(member.call(engine.filter), quiet) << member.name;
            EXPECT_EQ(engine.reports.back(), 100) << member.name;
        } else {
            EXPECT_THROW(member.call(engine.filter), StatementFailed) << member.name;
            EXPECT_TRUE(engine.reports.empty()) << member.name;
        }
    }
}

using Reports = std::vector<int32_t>;

/// The reports of a call on 9 by 5 pixels, each of them due.
template <class Call>
Reports reportsOf(Call call) {
    Engine engine(withMargin(9, 5, 6));
    engine.reportAlways();
    call(engine);
    return engine.reports;
}

TEST(SynthesisReports, FollowEachRowOfTheScan) {
    for (const char* name : {"DIFFUSE", "PIXELIZE", "NOISE"})
        for (const Member& member : members()) {
            if (member.name != name) continue;
            const Reports reports = reportsOf([&](Engine& engine) {
                engine.keepTo({{0, 1, 9, 4}});
                member.call(engine.filter);
            });
            EXPECT_EQ(reports, (Reports{25, 50, 75, 100})) << name;
        }
}

TEST(SynthesisReports, OfDotsFollowEachRowOfCells) {
    // Cells start in rows 0, 2 and 4.
    EXPECT_EQ(reportsOf([](Engine& e) { e.filter.HALFTONE(1, 2, 0); }), (Reports{0, 50, 100, 100}));
}

TEST(SynthesisReports, OfScanlinesFollowEachSecondRow) {
    EXPECT_EQ(reportsOf([](Engine& e) {
                  e.keepTo({{0, 1, 9, 5}});
                  e.filter.Scanlines(9);
              }),
              (Reports{25, 75, 100}));
}

TEST(SynthesisReports, OfAGridFollowEachLine) {
    // Rows 0 and 3 of 4, columns 0, 5 of 8; the lines that are forced report nothing.
    for (const bool force : {false, true})
        EXPECT_EQ(reportsOf([=](Engine& e) { e.filter.Grid(5, 3, force, 0, 255); }),
                  (Reports{0, 75, 0, 62, 100}));
}

TEST(SynthesisReports, OfADiscAreMeasuredAgainstItsHeight) {
    // A radius of 8 * 0.25 = 2 has rows -2 to 2.
    EXPECT_EQ(reportsOf([](Engine& e) { e.filter.Light(0.5F, 0.5F, 0.25F, 10, 0); }),
              (Reports{0, 25, 50, 75, 100, 100}));
}

TEST(SynthesisReports, OfADiscCountItsRowsOutsideTheImage) {
    // Around the first row: two of the five rows lie above the image, which has a margin of two,
    // and of a larger disc four of nine.
    EXPECT_EQ(reportsOf([](Engine& e) { e.filter.Light(0.5F, 0, 0.25F, 10, 0); }),
              (Reports{0, 25, 50, 75, 100, 100}));
    EXPECT_EQ(reportsOf([](Engine& e) { e.filter.Light(0.5F, 0, 0.5F, 10, 0); }),
              (Reports{0, 12, 25, 37, 50, 62, 75, 87, 100, 100}));
}

TEST(SynthesisReports, OfATextureFollowEachRowOfTiles) {
    // A texture of 3 rows is laid in steps of 2.
    EXPECT_EQ(reportsOf([](Engine& e) { e.filter.Texturize(randomBuffer(4, 3, 7)); }),
              (Reports{0, 50, 100, 100}));
}

TEST(SynthesisReports, OfTheErrorDiffusionAreTwoSeriesUpTo100) {
    EXPECT_EQ(reportsOf([](Engine& e) {
                  e.keepTo({{0, 2, 9, 4}});
                  e.filter.StuckiBW(10);
              }),
              (Reports{0, 25, 50, 75, 100, 100, 50, 75, 100}));
}

TEST(SynthesisReports, OfAGradientFollowTheRowsOfTheWholeImage) {
    const Reports all = {0, 25, 50, 75, 100, 100};
    EXPECT_EQ(reportsOf([](Engine& e) {
                  e.keepTo({{0, 2, 9, 4}});
                  e.filter.GradientCircular(3, 3, 5, 5, 0, 255, 50, 1);
              }),
              all);
    EXPECT_EQ(reportsOf([](Engine& e) {
                  e.keepTo({{0, 2, 9, 4}});
                  e.filter.GradientLinear(3, 3, 5, 5, 0, 255, 50, 1);
              }),
              all);
}

}  // namespace
}  // namespace tessarine::tests
