#include "widgets/arithmetic/slider_track.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace tessarine::tests {

std::ostream& operator<<(std::ostream& out, const SliderTrack::Rail& rail) {
    return out << rail.left << "," << rail.top << " to " << rail.right << "," << rail.bottom;
}

std::ostream& operator<<(std::ostream& out, const SliderTrack::Tip& tip) {
    return out << tip.left << "," << tip.top << " " << tip.width << "x" << tip.height;
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int16_t left = SliderTrack::leftButton;
constexpr int16_t right = SliderTrack::rightButton;

/// Keeps what the arithmetic tells its control, in the order told.
class RecordedTrack : public SliderTrack::Control {
  public:
    SliderTrack track{*this};
    std::vector<std::string> told;

    std::vector<std::string> takeTold() { return std::exchange(told, {}); }
    /// What was told but for redraws and the tip.
    std::vector<std::string> takeEvents() {
        std::vector<std::string> events;
        for (const std::string& one : takeTold())
            if (one != "redraw" && one.find("tip") == std::string::npos) events.push_back(one);
        return events;
    }

  private:
    void redraw() override { told.push_back("redraw"); }
    void showTip() override { told.push_back("show tip"); }
    void updateTip() override { told.push_back("update tip"); }
    void closeTip() override { told.push_back("close tip"); }
    void happened(SliderTrack::Event event) override {
        const char* names[] = {"Click", "ArrivedFirst", "ArrivedLast", "ValueChanged"};
        told.push_back(names[int(event)]);
    }
    void pressed(int16_t button) override { told.push_back("MouseDown " + std::to_string(button)); }
    void released(int16_t button) override { told.push_back("MouseUp " + std::to_string(button)); }
};

class ASlider : public testing::Test, public RecordedTrack {};

/// 0 to 10 over a free length of 100 pixels, with a thumb of 12 x 20.
class AHorizontalSlider : public ASlider {
  protected:
    AHorizontalSlider() {
        track.setOrientation(0);
        track.setThumbSize({12, 20});
        track.resize({112, 20});
        told.clear();
    }
};

/// 0 to 10 over a free length of 100 pixels, with a thumb of 20 x 12.
class AVerticalSlider : public ASlider {
  protected:
    AVerticalSlider() {
        track.setThumbSize({20, 12});
        track.resize({20, 112});
        told.clear();
    }
};

TEST_F(ASlider, BeginsWithItsDefaults) {
    EXPECT_TRUE(track.Enabled());
    EXPECT_TRUE(track.ShowValueTip());
    EXPECT_EQ(track.Orientation(), 1);
    EXPECT_EQ(track.Min(), 0);
    EXPECT_EQ(track.Max(), 10);
    EXPECT_EQ(track.Value(), 0);
    EXPECT_FALSE(track.dragging());
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(AHorizontalSlider, PlacesTheThumbByTheValue) {
    track.setValue(3);
    EXPECT_EQ(track.thumbLeft(), 30);
    EXPECT_EQ(track.thumbTop(), 0);
}

TEST_F(AVerticalSlider, HasMaxAtItsTop) {
    track.setValue(10);
    EXPECT_EQ(track.thumbTop(), 0);
    track.setValue(0);
    EXPECT_EQ(track.thumbTop(), 100);
    track.setValue(3);
    EXPECT_EQ(track.thumbTop(), 70);
}

TEST_F(AHorizontalSlider, RedrawsBeforeItRaisesAChange) {
    track.setValue(3);
    EXPECT_THAT(takeTold(), ElementsAre("redraw", "ValueChanged"));
}

TEST_F(AHorizontalSlider, RaisesNothingForTheValueItHas) {
    track.setValue(4);
    takeTold();
    track.setValue(4);
    EXPECT_THAT(takeTold(), IsEmpty());
}

TEST_F(AHorizontalSlider, RaisesTheChangeBeforeTheArrival) {
    track.setValue(10);
    EXPECT_THAT(takeEvents(), ElementsAre("ValueChanged", "ArrivedLast"));
    track.setValue(0);
    EXPECT_THAT(takeEvents(), ElementsAre("ValueChanged", "ArrivedFirst"));
}

TEST_F(AHorizontalSlider, RefusesAValueOutsideItsScale) {
    track.setValue(4);
    takeTold();
    EXPECT_THROW(track.setValue(11), InvalidPropertyValue);
    EXPECT_THROW(track.setValue(-1), InvalidPropertyValue);
    EXPECT_EQ(track.Value(), 4);
    EXPECT_THAT(takeTold(), IsEmpty());
    EXPECT_EQ(InvalidPropertyValue::number, 380);
}

TEST_F(AHorizontalSlider, RefusesAMaxAtOrBelowMin) {
    EXPECT_THROW(track.setMax(0), InvalidPropertyValue);
    EXPECT_THROW(track.setMax(-3), InvalidPropertyValue);
    EXPECT_EQ(track.Max(), 10);
}

TEST_F(AHorizontalSlider, RefusesAMinAtOrAboveMax) {
    EXPECT_THROW(track.setMin(10), InvalidPropertyValue);
    EXPECT_THROW(track.setMin(12), InvalidPropertyValue);
    EXPECT_EQ(track.Min(), 0);
}

TEST_F(AHorizontalSlider, GoesToItsStartWithANewMin) {
    track.setValue(8);
    takeTold();
    track.setMin(5);
    EXPECT_EQ(track.Value(), 5);
    EXPECT_THAT(takeEvents(), ElementsAre("ValueChanged", "ArrivedFirst"));
    EXPECT_EQ(track.thumbLeft(), 0);
    track.setValue(6);
    EXPECT_EQ(track.thumbLeft(), 20);
}

TEST_F(AHorizontalSlider, RaisesNothingForANewMinThatIsItsValue) {
    track.setValue(5);
    takeTold();
    track.setMin(5);
    EXPECT_THAT(takeTold(), IsEmpty());
}

TEST_F(AHorizontalSlider, LeavesTheValueAboveANewMax) {
    track.setValue(8);
    takeTold();
    track.setMax(5);
    EXPECT_EQ(track.Value(), 8);
    EXPECT_THAT(takeTold(), IsEmpty());
    track.setValue(5);
    EXPECT_THAT(takeEvents(), ElementsAre("ValueChanged", "ArrivedLast"));
    EXPECT_EQ(track.thumbLeft(), 100);
}

TEST_F(AHorizontalSlider, ShowsWhatHoldsAlreadyWithoutAnEvent) {
    track.show(-100, 100, 50);
    EXPECT_THAT(takeEvents(), IsEmpty());
    EXPECT_EQ(track.thumbLeft(), 75);
    track.setValue(50);
    EXPECT_THAT(takeTold(), IsEmpty());
    track.setValue(100);
    EXPECT_THAT(takeEvents(), ElementsAre("ValueChanged", "ArrivedLast"));
}

TEST_F(AHorizontalSlider, ShowsAScaleWithoutLengthAtItsLowEnd) {
    track.show(1, 1, 1);
    EXPECT_EQ(track.thumbLeft(), 0);
}

TEST_F(AHorizontalSlider, StaysAtAPressOnItsThumb) {
    track.press(left, 11, 19);
    EXPECT_TRUE(track.dragging());
    EXPECT_EQ(track.thumbLeft(), 0);
    EXPECT_THAT(takeTold(), ElementsAre("show tip", "MouseDown 1"));
    track.move(21, 19);
    EXPECT_EQ(track.thumbLeft(), 10);
    EXPECT_EQ(track.Value(), 1);
}

TEST_F(AHorizontalSlider, JumpsUnderAPressBesideItsThumb) {
    track.press(left, 56, 5);
    EXPECT_EQ(track.Value(), 5);
    EXPECT_EQ(track.thumbLeft() + track.thumbSize().width / 2, 56);
    EXPECT_THAT(takeTold(),
                ElementsAre("redraw", "update tip", "ValueChanged", "show tip", "MouseDown 1"));
    track.move(66, 5);
    EXPECT_EQ(track.Value(), 6);
}

TEST_F(AHorizontalSlider, TakesThePixelAfterItsThumbForBeside) {
    track.press(left, 12, 5);
    EXPECT_EQ(track.Value(), 1);
}

TEST_F(AHorizontalSlider, JumpsFromPlaceToPlaceInADrag) {
    track.press(left, 6, 10);
    std::vector<double> places;
    for (int x = 6; x <= 106; ++x) {
        track.move(x, 10);
        if (places.empty() || places.back() != track.thumbLeft())
            places.push_back(track.thumbLeft());
    }
    EXPECT_THAT(places, ElementsAre(0, 10, 20, 30, 40, 50, 60, 70, 80, 90, 100));
}

TEST_F(AHorizontalSlider, RoundsATieToTheEvenValue) {
    track.press(left, 6, 10);
    track.move(6 + 5, 10);
    EXPECT_EQ(track.Value(), 0);
    track.move(6 + 15, 10);
    EXPECT_EQ(track.Value(), 2);
    track.move(6 + 25, 10);
    EXPECT_EQ(track.Value(), 2);
}

TEST_F(AHorizontalSlider, RaisesTheArrivalWhenADragReachesTheFarEnd) {
    track.press(left, 6, 10);
    takeTold();
    track.move(400, 10);
    EXPECT_EQ(track.thumbLeft(), 100);
    EXPECT_THAT(takeTold(), ElementsAre("redraw", "update tip", "ValueChanged", "ArrivedLast"));
    track.move(-400, 10);
    EXPECT_EQ(track.thumbLeft(), 0);
    EXPECT_THAT(takeEvents(), ElementsAre("ValueChanged", "ArrivedFirst"));
}

TEST_F(AVerticalSlider, FollowsThePointerUpwards) {
    track.press(left, 10, 106);
    takeTold();
    track.move(10, 76);
    EXPECT_EQ(track.Value(), 3);
    EXPECT_EQ(track.thumbTop(), 70);
    track.move(10, -50);
    EXPECT_EQ(track.Value(), 10);
    EXPECT_EQ(track.thumbTop(), 0);
    EXPECT_THAT(takeEvents(), ElementsAre("ValueChanged", "ValueChanged", "ArrivedLast"));
    track.move(10, 71);  // the pointer holds the thumb's middle: 65 of 100 from the top
    EXPECT_EQ(track.Value(), 4);
    EXPECT_EQ(track.thumbTop(), 60);
}

TEST_F(AHorizontalSlider, ClicksBeforeItsDragEnds) {
    track.press(left, 6, 10);
    takeTold();
    track.release(left, 6, 10);
    EXPECT_THAT(takeTold(), ElementsAre("Click", "MouseUp 1", "close tip"));
    EXPECT_FALSE(track.dragging());
    track.move(90, 10);
    EXPECT_EQ(track.Value(), 0);
}

TEST_F(AHorizontalSlider, GivesNoClickWhenADragEndsOutside) {
    for (const auto& [x, y] : {std::pair{112, 10}, {-1, 10}, {50, 20}, {50, -1}}) {
        track.press(left, 6, 10);
        takeTold();
        track.release(left, x, y);
        EXPECT_THAT(takeEvents(), ElementsAre("MouseUp 1"));
    }
}

TEST_F(AHorizontalSlider, ClicksWithoutAPressToo) {
    track.release(left, 6, 10);
    EXPECT_THAT(takeEvents(), ElementsAre("Click"));
}

TEST_F(AHorizontalSlider, EndsADragWithAnyButton) {
    track.press(left, 6, 10);
    takeTold();
    track.release(right, 6, 10);
    EXPECT_THAT(takeEvents(), ElementsAre("MouseUp 2"));
    EXPECT_FALSE(track.dragging());
}

TEST_F(AHorizontalSlider, PaysNoHeedToAnotherButton) {
    track.press(right, 56, 10);
    EXPECT_FALSE(track.dragging());
    EXPECT_THAT(takeTold(), IsEmpty());
}

TEST_F(AHorizontalSlider, PaysNoHeedToAPressWhileDisabled) {
    track.setEnabled(false);
    track.press(left, 56, 10);
    EXPECT_FALSE(track.dragging());
    EXPECT_EQ(track.Value(), 0);
    EXPECT_THAT(takeTold(), IsEmpty());
}

TEST_F(AHorizontalSlider, ShowsNoTipWhereNoneIsWanted) {
    track.setShowValueTip(false);
    track.press(left, 56, 10);
    EXPECT_THAT(takeTold(), ElementsAre("redraw", "ValueChanged", "MouseDown 1"));
}

TEST_F(AHorizontalSlider, LeavesTheThumbToThePointerWhenCodeSetsTheValueInADrag) {
    track.press(left, 56, 10);
    track.setValue(9);
    EXPECT_EQ(track.Value(), 9);
    EXPECT_EQ(track.thumbLeft(), 50);
    EXPECT_TRUE(track.dragging());
    track.move(66, 10);
    EXPECT_EQ(track.Value(), 6);
}

TEST_F(AHorizontalSlider, KeepsItsValueWhereTheThumbCannotTravel) {
    track.show(5, 10, 7);
    track.resize({12, 20});
    takeTold();
    track.press(left, 40, 10);
    track.move(3, 10);
    EXPECT_EQ(track.Value(), 7);
    EXPECT_EQ(track.thumbLeft(), 0);
    EXPECT_THAT(takeEvents(), ElementsAre("MouseDown 1"));
}

TEST_F(AVerticalSlider, KeepsItsValueWhereTheThumbCannotTravel) {
    track.show(5, 10, 7);
    track.resize({20, 12});
    track.press(left, 10, 40);
    track.move(10, 3);
    EXPECT_EQ(track.Value(), 7);
    EXPECT_EQ(track.thumbTop(), 0);
}

TEST_F(AHorizontalSlider, CentresTheThumbAcrossAndFollowsTheValueAlongAfterAResize) {
    track.setValue(5);
    takeTold();
    track.resize({212, 33});
    EXPECT_EQ(track.thumbLeft(), 100);
    EXPECT_EQ(track.thumbTop(), 6.5);
    EXPECT_THAT(takeTold(), ElementsAre("redraw"));
}

TEST_F(AVerticalSlider, CentresTheThumbAcrossAndFollowsTheValueAlongAfterAResize) {
    track.setValue(4);
    track.resize({33, 212});
    EXPECT_EQ(track.thumbLeft(), 6.5);
    EXPECT_EQ(track.thumbTop(), 120);
}

TEST_F(AHorizontalSlider, RunsItsRailFromThumbMiddleToThumbMiddle) {
    EXPECT_EQ(track.rail(), (SliderTrack::Rail{4, 8, 108, 12}));
}

TEST_F(AVerticalSlider, RunsItsRailFromThumbMiddleToThumbMiddle) {
    EXPECT_EQ(track.rail(), (SliderTrack::Rail{8, 4, 12, 108}));
}

TEST_F(AHorizontalSlider, KeepsItsRailAtTheThumbsHeightInATallerControl) {
    track.resize({112, 60});
    EXPECT_EQ(track.rail(), (SliderTrack::Rail{4, 8, 108, 12}));
}

TEST_F(AHorizontalSlider, RoundsItsRailToWholePixels) {
    track.setThumbSize({11, 17});
    // 3.5 and 6.5 go to the even neighbours.
    EXPECT_EQ(track.rail(), (SliderTrack::Rail{4, 6, 109, 10}));
}

TEST_F(AHorizontalSlider, PutsItsTipAboveTheThumb) {
    track.setValue(5);
    EXPECT_EQ(track.tip(1000, 500, 20, 15), (SliderTrack::Tip{1044, 480, 24, 18}));
}

TEST_F(AVerticalSlider, PutsItsTipLeftOfTheThumb) {
    track.setValue(5);
    EXPECT_EQ(track.tip(1000, 500, 20, 15), (SliderTrack::Tip{974, 546, 24, 18}));
}

}  // namespace
}  // namespace tessarine::tests
