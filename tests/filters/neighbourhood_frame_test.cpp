#include <cstdint>
#include <span>
#include <vector>

#include <gtest/gtest.h>

#include "neighbourhood_pictures.h"

// What the frame promises, at each neighbourhood member.

namespace tessarine::tests {
namespace {

constexpr int32_t lowest = -2147483647 - 1;
constexpr int32_t highest = 2147483647;

/// All members of the family. First stand those with a margin, then those that report other rows;
/// the one that writes the fourth byte comes last.
constexpr NamedCall allMembers[] = {
    {"SOFTEN", true, [](cBitFilter& f) { return f.SOFTEN(50); }},
    {"SHARPEN", true, [](cBitFilter& f) { return f.SHARPEN(50); }},
    {"MaskFilter", false, [](cBitFilter& f) { return convolve(f, 4, false); }},
    {"MaskFilter of 5", false, [](cBitFilter& f) { return convolve(f, 1, false); }},
    {"MaskFilter of several factors", false,
     [](cBitFilter& f) { return f.MaskFilter(GetFilterKernel(4).mskBits, 7, 1, 2, 3, false); }},
    {"Blurs", false, [](cBitFilter& f) { return f.Blurs(1); }},
    {"EDGEENHANCE", true, [](cBitFilter& f) { return f.EDGEENHANCE(5); }},
    {"CONTOUR", false, [](cBitFilter& f) { return f.CONTOUR(200, 255); }},
    {"SKETCH", true, [](cBitFilter& f) { return f.SKETCH(200, true, 255); }},
    {"EMBOSS", true, [](cBitFilter& f) { return f.EMBOSS(20); }},
    {"Engrave", true, [](cBitFilter& f) { return f.Engrave(20); }},
    {"DILATE", true, [](cBitFilter& f) { return f.DILATE(); }},
    {"ERODE", true, [](cBitFilter& f) { return f.ERODE(); }},
    {"RankFilterN4", false, [](cBitFilter& f) { return f.RankFilterN4(1); }},
    {"RankFilterND", false, [](cBitFilter& f) { return f.RankFilterND(1); }},
    {"PAINTING", true, [](cBitFilter& f) { return f.PAINTING(); }},
    {"Dissolve", true, [](cBitFilter& f) { return f.Dissolve(); }},
    {"RELIEF", true, [](cBitFilter& f) { return f.RELIEF(); }},
};
constexpr std::span<const NamedCall> all = allMembers;
constexpr std::span<const NamedCall> withoutMargin = all.subspan(2);
constexpr std::span<const NamedCall> thatReportAsTheFrame = all.subspan(5);
constexpr std::span<const NamedCall> butRelief = all.first(all.size() - 1);

TEST(NeighbourhoodFrame, AReportOfAPictureOneRowHighIsSkippedOrFailsAsTheMemberDoes) {
    expectTheRuleOfOneRow(all);
}

TEST(NeighbourhoodFrame, MembersWithoutMarginReportEachRowAndTheEnd) {
    expectReportsOfEachRowAndTheEnd(thatReportAsTheFrame);
}

TEST(NeighbourhoodFrame, MembersButReliefChangeTheRegionsColoursAlone) {
    expectOnlyTheRegionsColoursToChange(butRelief);
}

TEST(NeighbourhoodFrame, ReliefKeepsMarginSourceAndWhatLiesOutsideTheRegion) {
    const PixelBuffer picture = randomBuffer(20, 12, 10);
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

TEST(NeighbourhoodFrame, AnEmptyRegionGivesTheSource) { expectNoRegionToGiveTheSource(all); }

TEST(NeighbourhoodFrame, NoSizeAndNoRegionMatters) { expectNoSizeToMatter(withoutMargin); }

TEST(NeighbourhoodFrame, EveryMemberReadsTheSourceAndNotWhatItHasWritten) {
    // A region pixel by pixel gives what the whole region gives, but for the repeated lines.
    const PixelBuffer picture = randomBuffer(6, 5, 11);
    for (const NamedCall& member : withoutMargin) {
        Engine whole(picture);
        const PixelBuffer expected = member.call(whole.filter);
        for (int32_t y = 0; y < 4; ++y)
            for (int32_t x = 0; x < 5; ++x) {
                Engine one(picture);
                one.keepTo({{x, y, x + 1, y + 1}});
                EXPECT_EQ(member.call(one.filter).at(x, y), expected.at(x, y))
                    << member.name << " at " << x << ", " << y;
            }
    }
}

TEST(NeighbourhoodFrame, NoRegionAndNoArgumentLeadsOutOfTheBuffer) {
    const PixelBuffer picture = randomBuffer(7, 6, 13);
    Engine engine(picture);
    engine.keepTo({{lowest, lowest, highest, highest}});
    cBitFilter& f = engine.filter;
    const std::vector<PixelBuffer> inMargin = {f.EMBOSS(10), f.DILATE(), f.Dissolve()};
    for (const PixelBuffer& result : inMargin)
        EXPECT_EQ(result.width(), 7);
    for (const int32_t wild : {lowest, lowest + 1, -1, 0, 1, highest - 1, highest}) {
        EXPECT_EQ(f.Blurs(wild).height(), 6);
        EXPECT_EQ(f.SOFTEN(wild).height(), 6);
        EXPECT_EQ(f.SHARPEN(wild).height(), 6);
        EXPECT_EQ(f.EDGEENHANCE(wild).height(), 6);
        EXPECT_EQ(f.CONTOUR(wild, wild).height(), 6);
        EXPECT_EQ(f.SKETCH(wild, false, wild).height(), 6);
        EXPECT_EQ(f.EMBOSS(wild).height(), 6);
        EXPECT_EQ(f.Engrave(wild).height(), 6);
        EXPECT_EQ(f.RankFilterN4(wild).height(), 6);
        EXPECT_EQ(f.RankFilterND(wild).height(), 6);
        if (wild == 0) continue;
        for (const bool keep : {false, true})
            EXPECT_EQ(
                f.MaskFilter(GetFilterKernel(1).mskBits, wild, wild, wild, wild, keep).height(), 6);
    }
}

}  // namespace
}  // namespace tessarine::tests
