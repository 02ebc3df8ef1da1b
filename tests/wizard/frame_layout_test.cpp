#include "wizard/frame_layout.h"

#include <gtest/gtest.h>

namespace tessarine::tests {
namespace {

TEST(FrameLayout, TheFrameIsThirteenNarrowerAndThirtyLowerThanWhatTheBarLeaves) {
    const FrameLayout places = layOutWindow({640, 480}, 22);
    EXPECT_EQ(places.frame.width, 627);
    EXPECT_EQ(places.frame.height, 428);
}

TEST(FrameLayout, TheStripIsThreeNarrowerThanTheWindowAndEndsAtTheBar) {
    const FrameLayout places = layOutWindow({1024, 768}, 24);
    EXPECT_EQ(places.sTab.width, 1021);
    EXPECT_EQ(places.sTab.height, 744);
    EXPECT_EQ(places.SB, (Box{0, 744, 1024, 24}));
}

TEST(FrameLayout, TheFrameLiesInsideTheStripBelowTheCaptions) {
    for (const Extent inner : {Extent{500, 400}, Extent{640, 480}, Extent{1920, 1080}}) {
        const FrameLayout places = layOutWindow(inner, 30);
        EXPECT_GE(places.frame.x, 0);
        EXPECT_GE(places.frame.y, captionHeight);
        EXPECT_LE(places.frame.x + places.frame.width, places.sTab.width);
        EXPECT_LE(places.frame.y + places.frame.height, places.sTab.height);
    }
}

TEST(FrameLayout, EachSideSnapsBackByItself) {
    EXPECT_EQ(leastWindow({499, 800}), (Extent{500, 800}));
    EXPECT_EQ(leastWindow({800, 399}), (Extent{800, 400}));
    EXPECT_EQ(leastWindow({0, 0}), (Extent{500, 400}));
    EXPECT_EQ(leastWindow({500, 400}), (Extent{500, 400}));
}

int32_t sumOfWidths(const std::array<Box, panelCount>& panels) {
    int32_t sum = 0;
    for (const Box& panel : panels)
        sum += panel.width;
    return sum;
}

TEST(StatusPanels, GetWhatTheirTextsWantAndTheLastOneTheRest) {
    const auto panels = layOutPanels({1024, 24}, {130, 0, 120, 150, 400});
    EXPECT_EQ(panels[0].width, 130);
    EXPECT_EQ(panels[2].width, 120);
    EXPECT_EQ(panels[3].width, 150);
    EXPECT_GT(panels[4].width, 400);
    EXPECT_EQ(panels[4].x + panels[4].width, 1024);
}

TEST(StatusPanels, StandSideBySideInsideTheBarHoweverNarrowItIs) {
    for (const int32_t width : {500, 640, 1024, 1920}) {
        const auto panels = layOutPanels({width, 24}, {150, 0, 200, 250, 0});
        EXPECT_LE(sumOfWidths(panels), width);
        for (size_t i = 1; i < panelCount; ++i)
            EXPECT_GE(panels[i].x, panels[i - 1].x + panels[i - 1].width) << width << " " << i;
        EXPECT_LE(panels[4].x + panels[4].width, width);
        EXPECT_GE(panels[4].width, width / 6) << width;
    }
}

TEST(StatusPanels, TheNameOfTheProgramGivesWayBeforeTheCounts) {
    const auto panels = layOutPanels({600, 24}, {140, 0, 160, 150, 0});
    EXPECT_LT(panels[0].width, 140);
    EXPECT_EQ(panels[2].width, 160);
    EXPECT_EQ(panels[3].width, 150);
}

TEST(StatusPanels, TheProgressBarCoversTheSecondAndIsTwoLowerThanTheBar) {
    const Extent bar{640, 23};
    const auto panels = layOutPanels(bar, {100, 0, 100, 100, 0});
    const Box progress = layOutProgressBar(bar, panels[1]);
    EXPECT_EQ(progress.height, 21);
    EXPECT_EQ(progress.x, panels[1].x);
    EXPECT_EQ(progress.width, panels[1].width);
}

int32_t fourHundred(double scale) { return static_cast<int32_t>(400 * scale); }

TEST(Captions, HaveTheirIconsAndAllTheirPaddingWhereThereIsRoom) {
    EXPECT_EQ(fitCaptions(600, 4, 20, fourHundred), (CaptionFit{12, true, 1, true}));
}

TEST(Captions, DrawTogetherThenLoseTheirIconsThenShrink) {
    EXPECT_EQ(fitCaptions(520, 4, 20, fourHundred), (CaptionFit{4, true, 1, true}));
    EXPECT_EQ(fitCaptions(500, 4, 20, fourHundred), (CaptionFit{12, false, 1, true}));
    EXPECT_EQ(fitCaptions(432, 4, 20, fourHundred), (CaptionFit{4, false, 1, true}));
    const CaptionFit small = fitCaptions(400, 4, 20, fourHundred);
    EXPECT_FALSE(small.icons);
    EXPECT_TRUE(small.whole);
    EXPECT_NEAR(small.scale, 0.92, 0.021);
}

TEST(Captions, SayThatTheyAreCutOffWhereNothingHelps) {
    EXPECT_FALSE(fitCaptions(100, 4, 20, fourHundred).whole);
}

}  // namespace
}  // namespace tessarine::tests
