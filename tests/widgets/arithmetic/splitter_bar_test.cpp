#include "widgets/arithmetic/splitter_bar.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace tessarine::tests {

std::ostream& operator<<(std::ostream& out, const SplitterBar::Place& place) {
    return out << place.left << "," << place.top << " " << place.width << "x" << place.height;
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Place = SplitterBar::Place;

/// Keeps what the arithmetic tells its control, in the order told.
class RecordedBars : public SplitterBar::Control {
  public:
    SplitterBar bars{*this};
    std::vector<std::string> told;

    std::vector<std::string> takeTold() { return std::exchange(told, {}); }

  private:
    void showBars() override {
        told.push_back("bar " + std::to_string(along(bars.bar())) + ", mover " +
                       std::to_string(along(bars.mover())) +
                       (bars.moverVisible() ? " shown" : " hidden"));
    }
    void moveNeighbours() override { told.push_back("neighbours"); }
    void happened(SplitterBar::Event event) override {
        const char* names[] = {"resize", "press", "move", "release"};
        told.push_back(names[int(event)]);
    }
    int32_t along(const Place& place) const {
        return bars.orientation() == 0 ? place.left : place.top;
    }
};

class ASplitter : public testing::Test, public RecordedBars {};

TEST_F(ASplitter, BeginsWithItsDefaults) {
    EXPECT_EQ(bars.orientation(), 0);
    EXPECT_EQ(bars.position(), 50);
    EXPECT_EQ(bars.minimum(), 10);
    EXPECT_EQ(bars.maximum(), 90);
    EXPECT_EQ(bars.thickness(), 70);
    EXPECT_FALSE(bars.moverVisible());
}

TEST_F(ASplitter, StandsInTheMiddleWithTheDefaults) {
    bars.resize(1000, 400);
    EXPECT_EQ(bars.bar(), (Place{500, 0, 70, 400}));
    EXPECT_EQ(bars.mover(), bars.bar());
}

TEST_F(ASplitter, PlacesAHorizontalBarByTheHeight) {
    bars.setOrientation(1);
    bars.resize(1000, 400);
    EXPECT_EQ(bars.bar(), (Place{0, 200, 1000, 70}));
}

TEST_F(ASplitter, DropsTheFractionOfAPlace) {
    bars.resize(999, 400);
    bars.setPosition(33);
    EXPECT_EQ(bars.bar().left, 329);
}

TEST_F(ASplitter, PlacesWithoutOverflowInAVastContainer) {
    bars.resize(2'000'000'000, 400);
    EXPECT_EQ(bars.bar().left, 1'000'000'000);
}

TEST_F(ASplitter, HoldsThePositionBetweenItsLimits) {
    bars.setPosition(95);
    EXPECT_EQ(bars.position(), 90);
    bars.setPosition(5);
    EXPECT_EQ(bars.position(), 10);
    bars.setPosition(42);
    EXPECT_EQ(bars.position(), 42);
}

TEST_F(ASplitter, LetsTheMinimumWinOverASmallerMaximum) {
    bars.setMaximum(20);
    bars.setMinimum(60);
    bars.setPosition(40);
    EXPECT_EQ(bars.position(), 60);
}

TEST_F(ASplitter, MendsAMaximumOutsideThePercents) {
    bars.setMaximum(-5);
    EXPECT_EQ(bars.maximum(), 1);
    bars.setMaximum(101);
    EXPECT_EQ(bars.maximum(), 99);
    bars.setMaximum(0);
    EXPECT_EQ(bars.maximum(), 0);
    bars.setMaximum(100);
    EXPECT_EQ(bars.maximum(), 100);
}

TEST_F(ASplitter, TakesAnyMinimumAsItComes) {
    for (const int32_t percent : {-7, 250, 95, 30}) {
        bars.setMinimum(percent);
        EXPECT_EQ(bars.minimum(), percent);
    }
}

TEST_F(ASplitter, LeavesThePositionWhenALimitPassesIt) {
    bars.setMaximum(40);
    EXPECT_EQ(bars.position(), 50);
    bars.setMaximum(90);
    bars.setMinimum(60);
    EXPECT_EQ(bars.position(), 50);
}

TEST_F(ASplitter, PlacesTheBarAndTheNeighboursWhenAPropertyIsSet) {
    bars.resize(1000, 400);
    takeTold();
    bars.setPosition(20);
    EXPECT_THAT(takeTold(), ElementsAre("bar 200, mover 200 hidden", "neighbours"));
    bars.setMinimum(15);
    EXPECT_THAT(takeTold(), ElementsAre("bar 200, mover 200 hidden", "neighbours"));
    bars.setMaximum(80);
    EXPECT_THAT(takeTold(), ElementsAre("bar 200, mover 200 hidden", "neighbours"));
    bars.setThickness(30);
    EXPECT_THAT(takeTold(), ElementsAre("bar 200, mover 200 hidden", "neighbours"));
    EXPECT_EQ(bars.bar(), (Place{200, 0, 30, 400}));
}

TEST_F(ASplitter, PlacesBothBarsForANewOrientationAndLeavesTheNeighbours) {
    bars.resize(1000, 400);
    takeTold();
    bars.setOrientation(1);
    EXPECT_THAT(takeTold(), ElementsAre("bar 200, mover 200 hidden"));
    EXPECT_EQ(bars.bar(), (Place{0, 200, 1000, 70}));
}

TEST_F(ASplitter, TellsTheResizeBeforeTheLayout) {
    bars.resize(600, 400);
    EXPECT_THAT(takeTold(), ElementsAre("resize", "bar 300, mover 300 hidden", "neighbours"));
}

TEST_F(ASplitter, KeepsItsPercentageAndNotItsDistanceAfterAResize) {
    bars.resize(1000, 400);
    bars.setPosition(30);
    bars.resize(500, 400);
    EXPECT_EQ(bars.bar().left, 150);
    EXPECT_EQ(bars.position(), 30);
}

TEST_F(ASplitter, GivesTheRightNeighbourTwoBarsMoreThanIsLeft) {
    bars.resize(1000, 400);
    bars.setPosition(30);
    EXPECT_EQ(bars.leftOrTop(), (Place{0, 0, 300, 400}));
    EXPECT_EQ(bars.rightOrBottom(), (Place{370, 0, 770, 400}));
    EXPECT_EQ(bars.rightOrBottom().left + bars.rightOrBottom().width, 1000 + 2 * 70);
}

TEST_F(ASplitter, GivesTheBottomNeighbourWhatIsLeft) {
    bars.setOrientation(1);
    bars.resize(1000, 400);
    bars.setPosition(30);
    EXPECT_EQ(bars.leftOrTop(), (Place{0, 0, 1000, 120}));
    EXPECT_EQ(bars.rightOrBottom(), (Place{0, 190, 1000, 210}));
}

TEST_F(ASplitter, MovesOnlyTheMoverUntilADragEnds) {
    bars.resize(1000, 400);
    takeTold();
    bars.press();
    EXPECT_THAT(takeTold(), ElementsAre("bar 500, mover 500 shown", "press"));
    bars.move(110, 3);
    EXPECT_THAT(takeTold(), ElementsAre("bar 500, mover 610 shown", "move"));
    EXPECT_EQ(bars.position(), 61);
    bars.move(-250, 3);
    EXPECT_THAT(takeTold(), ElementsAre("bar 500, mover 250 shown", "move"));
    EXPECT_EQ(bars.mover(), (Place{250, 0, 70, 400}));
    EXPECT_EQ(bars.position(), 25);
    bars.release();
    EXPECT_THAT(takeTold(), ElementsAre("bar 250, mover 250 hidden", "neighbours", "release"));
}

TEST_F(ASplitter, DragsAHorizontalBarByTheHeight) {
    bars.setOrientation(1);
    bars.resize(1000, 400);
    bars.press();
    bars.move(700, 100);
    EXPECT_EQ(bars.mover(), (Place{0, 300, 1000, 70}));
    EXPECT_EQ(bars.position(), 75);
}

TEST_F(ASplitter, StopsTheMoverBeforeTheMaximum) {
    bars.resize(1000, 400);
    bars.press();
    bars.move(399, 0);
    takeTold();
    bars.move(400, 0);
    EXPECT_THAT(takeTold(), ElementsAre("move"));
    bars.move(480, 0);
    EXPECT_EQ(bars.mover().left, 899);
    EXPECT_EQ(bars.position(), 89);
    bars.release();
    EXPECT_EQ(bars.bar().left, 899);
}

TEST_F(ASplitter, StopsTheMoverBeforeTheMinimum) {
    bars.resize(1000, 400);
    bars.press();
    bars.move(-399, 0);
    bars.move(-400, 0);
    EXPECT_EQ(bars.mover().left, 101);
    EXPECT_EQ(bars.position(), 10);
}

TEST_F(ASplitter, RoundsThePointerToTheNearestEvenOnTies) {
    bars.resize(1000, 400);
    bars.press();
    bars.move(1.5, 0);
    EXPECT_EQ(bars.mover().left, 502);
    bars.move(2.5, 0);
    EXPECT_EQ(bars.mover().left, 502);
}

TEST_F(ASplitter, RoundsThePercentageDown) {
    bars.resize(1000, 400);
    bars.press();
    bars.move(109, 0);
    EXPECT_EQ(bars.position(), 60);
    // 1000 / 440 is rounded to a double, and 100 through that stays a hair below 44.
    bars.move(-60, 0);
    EXPECT_EQ(bars.mover().left, 440);
    EXPECT_EQ(bars.position(), 43);
}

TEST_F(ASplitter, FollowsAPointerWithoutAButtonUnseen) {
    bars.resize(300, 400);
    takeTold();
    bars.move(60, 0);
    EXPECT_THAT(takeTold(), ElementsAre("bar 150, mover 210 hidden", "move"));
    EXPECT_EQ(bars.position(), 70);
    EXPECT_EQ(bars.leftOrTop().width, 150);
}

TEST_F(ASplitter, TakesBackWhatAPassingPointerSaidWhenItLeaves) {
    bars.resize(613, 400);
    bars.setPosition(30);
    bars.move(0, 0);
    EXPECT_EQ(bars.position(), 29);
    takeTold();
    bars.leave();
    EXPECT_EQ(bars.position(), 30);
    EXPECT_EQ(bars.mover(), bars.bar());
    EXPECT_THAT(takeTold(), ElementsAre("bar 183, mover 183 hidden"));
    bars.leave();
    EXPECT_THAT(takeTold(), IsEmpty());
}

TEST_F(ASplitter, KeepsThePercentageOfItsBarInAResizeUnderAPassingPointer) {
    bars.resize(613, 400);
    bars.setPosition(30);
    bars.move(0, 0);
    bars.resize(1000, 400);
    EXPECT_EQ(bars.position(), 30);
    EXPECT_EQ(bars.bar().left, 300);
}

TEST_F(ASplitter, KeepsWhatADragSaidWhenThePointerLeaves) {
    bars.resize(1000, 400);
    bars.press();
    bars.move(100, 0);
    bars.leave();
    EXPECT_EQ(bars.position(), 60) << "the pointer of a drag is often beside the bar";
    bars.release();
    bars.move(50, 0);
    EXPECT_EQ(bars.position(), 65);
    bars.leave();
    EXPECT_EQ(bars.position(), 60);
    EXPECT_EQ(bars.bar().left, 600);
}

TEST_F(ASplitter, KeepsItsPercentageInAResizeDuringADrag) {
    bars.resize(1000, 400);
    bars.press();
    bars.move(100, 0);
    bars.resize(500, 400);
    EXPECT_EQ(bars.position(), 60);
    EXPECT_EQ(bars.mover().left, 300);
    EXPECT_TRUE(bars.moverVisible());
    bars.release();
    bars.leave();
    EXPECT_EQ(bars.position(), 60);
}

TEST_F(ASplitter, KeepsItsPercentageAfterAPlainClick) {
    bars.resize(613, 400);
    bars.setPosition(30);
    bars.move(0, 0);
    bars.press();
    EXPECT_EQ(bars.mover().left, 183);
    bars.release();
    bars.leave();
    EXPECT_EQ(bars.bar().left, 183);
    EXPECT_EQ(bars.position(), 30);
}

TEST_F(ASplitter, LetsNothingMoveInAContainerWithoutRoom) {
    bars.press();
    takeTold();
    bars.move(0, 0);
    EXPECT_THAT(takeTold(), ElementsAre("move"));
    EXPECT_EQ(bars.position(), 50);
}

TEST_F(ASplitter, TellsNothingWhileNothingHappens) { EXPECT_THAT(told, IsEmpty()); }

}  // namespace
}  // namespace tessarine::tests
