#include <cstdint>
#include <iterator>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "member_checks.h"
#include "neighbourhood_pictures.h"
#include "pixels/bit_filter.h"
#include "support/engine.h"

// What the neighbourhood members share: reports, what stays, that they read the source alone, and
// that no region and no argument is too odd for them.

namespace tessarine::tests {
namespace {

constexpr int32_t lowest = std::numeric_limits<int32_t>::min();
constexpr int32_t highest = std::numeric_limits<int32_t>::max();

using Members = std::vector<NamedCall>;

/// Those that keep to the frame in all.
const Members plainMembers = {
    {"MaskFilter of 1", false,
     [](cBitFilter& f) { return f.MaskFilter(KernelMask(1), 1, 1, 2, 3, false); }},
    {"Blurs", false, [](cBitFilter& f) { return f.Blurs(1); }},
    {"EDGEENHANCE", true, [](cBitFilter& f) { return f.EDGEENHANCE(5); }},
    {"CONTOUR", false, [](cBitFilter& f) { return f.CONTOUR(200, 255); }},
    {"SKETCH", true, [](cBitFilter& f) { return f.SKETCH(200, true, 255); }},
    {"DILATE", true, [](cBitFilter& f) { return f.DILATE(); }},
    {"ERODE", true, [](cBitFilter& f) { return f.ERODE(); }},
    {"RankFilterN4", false, [](cBitFilter& f) { return f.RankFilterN4(1); }},
    {"RankFilterND", false, [](cBitFilter& f) { return f.RankFilterND(1); }},
    {"PAINTING", true, [](cBitFilter& f) { return f.PAINTING(); }},
    {"Dissolve", true, [](cBitFilter& f) { return f.Dissolve(); }},
};

/// Those whose last column and row repeat what has been written.
const Members plates = {
    {"EMBOSS", true, [](cBitFilter& f) { return f.EMBOSS(20); }},
    {"Engrave", true, [](cBitFilter& f) { return f.Engrave(20); }},
};

/// The one that changes the fourth channel.
const Members relief = {{"RELIEF", true, [](cBitFilter& f) { return f.RELIEF(); }}};

/// Those that report the rows of their windows' corners.
const Members convolutions = {
    {"MaskFilter", false, [](cBitFilter& f) { return convolve(f, 4, false); }},
    {"MaskFilter of 5", false, [](cBitFilter& f) { return convolve(f, 1, false); }},
    {"MaskFilter of several factors", false,
     [](cBitFilter& f) { return f.MaskFilter(GetFilterKernel(4).mskBits, 7, 1, 2, 3, false); }},
};

/// Those that leave out the outermost pixels of the region's box.
const Members ofAMargin = {
    {"SOFTEN", true, [](cBitFilter& f) { return f.SOFTEN(50); }},
    {"SHARPEN", true, [](cBitFilter& f) { return f.SHARPEN(50); }},
};

Members together(const std::vector<Members>& groups) {
    Members all;
    for (const Members& group : groups)
        all.insert(all.end(), group.begin(), group.end());
    return all;
}

const Members allMembers = together({plainMembers, plates, relief, convolutions, ofAMargin});

TEST(NeighbourhoodFrame, AReportOfAPictureOneRowHighIsSkippedOrFailsAsTheMemberDoes) {
    // A margin leaves nothing of a single row, and no report that could fail.
    expectTheRuleOfOneRow(allMembers);
}

TEST(NeighbourhoodFrame, MembersWithoutAMarginReportTheirRowsAndTheirEnd) {
    expectReportsOfEachRowAndTheEnd(together({plainMembers, plates, relief}));
}

TEST(NeighbourhoodFrame,
     EveryMemberButReliefKeepsSourceMarginFourthChannelAndWhatLiesOutsideTheRegion) {
    expectOnlyTheRegionsColoursToChange(together({plainMembers, plates, convolutions, ofAMargin}));
}

TEST(NeighbourhoodFrame, ReliefKeepsSourceMarginAndWhatLiesOutsideTheRegion) {
    PixelBuffer picture = randomBuffer(20, 12, 10);
    Pixel* block = picture.writableBlock();
    for (size_t i = 0; i < picture.pixelCount(); ++i)
        if (block[i] == Pixel{}) block[i] = {11, 22, 33, 44};
    Engine engine(picture);
    engine.keepTo({{0, 0, 10, 5}, {5, 5, 15, 9}});
    const PixelBuffer result = engine.filter.RELIEF();
    for (int32_t y = -2; y < 14; ++y)
        for (int32_t x = -2; x < 22; ++x)
            if (!engine.region->contains(x, y)) {
                EXPECT_EQ(result.at(x, y), picture.at(x, y)) << x << ", " << y;
            }
    EXPECT_EQ(engine.filter.Bits(), picture);
}

TEST(NeighbourhoodFrame, EveryMemberReadsTheSourceAndNotWhatItHasWritten) {
    // A region pixel by pixel gives what the whole region gives, but for the repeated lines. A
    // margin is laid around each of them.
    const PixelBuffer picture = randomBuffer(6, 5, 11);
    const auto check = [&](const Members& members, int32_t margin, int32_t right, int32_t bottom) {
        for (const NamedCall& member : members) {
            Engine whole(picture);
            whole.keepTo({{-margin, -margin, 6 + margin, 5 + margin}});
            const PixelBuffer expected = member.call(whole.filter);
            for (int32_t y = 0; y < bottom; ++y)
                for (int32_t x = 0; x < right; ++x) {
                    Engine one(picture);
                    one.keepTo({{x - margin, y - margin, x + 1 + margin, y + 1 + margin}});
                    const PixelBuffer result = member.call(one.filter);
                    EXPECT_EQ(result.at(x, y), expected.at(x, y))
                        << member.name << " at " << x << ", " << y;
                }
        }
    };
    check(together({plainMembers, relief, convolutions}), 0, 6, 5);
    check(plates, 0, 5, 4);
    check(ofAMargin, 1, 6, 5);
}

TEST(NeighbourhoodFrame, EveryMemberWithoutARegionGivesTheSourceAndReportsItsEnd) {
    expectNoRegionToGiveTheSource(allMembers);
}

TEST(NeighbourhoodFrame, EveryMemberTakesAnySizeAndAnyRegion) {
    expectNoSizeToMatter(together({plainMembers, plates, relief, convolutions}));
}

/// Calls that take all their numbers from `n`.
using WildCall = PixelBuffer (*)(cBitFilter& f, int32_t n);

TEST(NeighbourhoodFrame, NoRegionAndNoArgumentLeadsOutOfTheBuffer) {
    const WildCall calls[] = {
        [](cBitFilter& f, int32_t n) { return f.Blurs(n); },
        [](cBitFilter& f, int32_t n) { return f.SOFTEN(n); },
        [](cBitFilter& f, int32_t n) { return f.SHARPEN(n); },
        [](cBitFilter& f, int32_t n) { return f.EDGEENHANCE(n); },
        [](cBitFilter& f, int32_t n) { return f.CONTOUR(n, n); },
        [](cBitFilter& f, int32_t n) { return f.SKETCH(n, false, n); },
        [](cBitFilter& f, int32_t n) { return f.EMBOSS(n); },
        [](cBitFilter& f, int32_t n) { return f.Engrave(n); },
        [](cBitFilter& f, int32_t n) { return f.RankFilterN4(n % 2); },
        [](cBitFilter& f, int32_t n) { return f.RankFilterND(n % 2); },
        [](cBitFilter& f, int32_t n) {
            return f.MaskFilter(GetFilterKernel(1).mskBits, n == 0 ? 1 : n, n, n, n, false);
        },
        [](cBitFilter& f, int32_t n) {
            return f.MaskFilter(GetFilterKernel(1).mskBits, n == 0 ? 1 : n, n, n, n, true);
        },
    };
    const PixelBuffer picture = randomBuffer(7, 6, 13);
    // The buffer and what the widest margin, 2, takes off its region's box.
    Engine clipped(picture);
    clipped.keepTo({{-4, -4, 11, 10}});
    Engine wild(picture);
    wild.keepTo({{lowest, lowest, highest, highest}});
    for (const int32_t n : {lowest, lowest + 1, -1, 0, 1, highest - 1, highest})
        for (size_t i = 0; i < std::size(calls); ++i)
            EXPECT_EQ(calls[i](wild.filter, n), calls[i](clipped.filter, n))
                << "call " << i << " of " << n;
}

TEST(NeighbourhoodFrame, AMarginThatWrapsLeavesNothingOfTheWholeRange) {
    const PixelBuffer picture = randomBuffer(7, 6, 14);
    Engine engine(picture);
    engine.keepTo({{lowest, lowest, highest, highest}});
    for (const int32_t type : {lowest, lowest + 1, highest - 1, highest}) {
        EXPECT_EQ(engine.filter.RankFilterN4(type), picture) << type;
        EXPECT_EQ(engine.filter.RankFilterND(type), picture) << type;
    }
}

}  // namespace
}  // namespace tessarine::tests
