#include "widgets/splitter.h"

#include <memory>
#include <string>
#include <vector>

#include <QAccessible>
#include <QLineEdit>
#include <QPointer>
#include <QTest>
#include <gmock/gmock.h>

#include "support/qt_printers.h"
#include "support/window_driver.h"

namespace tessarine::tests {
namespace {

using testing::ElementsAre;

QWidget& bar(Splitter& splitter) { return control(splitter, "picSplitter"); }
QWidget& mover(Splitter& splitter) { return control(splitter, "picMover"); }

/// A shown splitter of 400 x 200 with two plain neighbours.
class ShownSplitter : public testing::Test {
  protected:
    ShownSplitter() {
        splitter.resize(400, 200);
        first->setFocusPolicy(Qt::StrongFocus);
        second->setFocusPolicy(Qt::StrongFocus);
        splitter.LeftOrTopControl(first);
        splitter.RightOrBottomControl(second);
        splitter.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&splitter));
    }

    Splitter splitter;
    QWidget* first = new QWidget;
    QWidget* second = new QWidget;
};

TEST_F(ShownSplitter, IsFivePixelsThickAndInTheMiddle) {
    EXPECT_EQ(splitter.SplitterWidth(), 5);
    EXPECT_EQ(bar(splitter).geometry(), QRect(200, 0, 5, 200));
    EXPECT_FALSE(mover(splitter).isVisible());
}

TEST_F(ShownSplitter, MakesItsNeighboursItsVisibleChildren) {
    EXPECT_EQ(first->parentWidget(), &splitter);
    EXPECT_TRUE(first->isVisible());
    EXPECT_TRUE(second->isVisible());
}

TEST_F(ShownSplitter, LetsTheRightNeighbourReachPastTheEdge) {
    EXPECT_EQ(first->geometry(), QRect(0, 0, 200, 200));
    EXPECT_EQ(second->geometry(), QRect(205, 0, 205, 200));
}

TEST_F(ShownSplitter, GivesTheBottomNeighbourWhatIsLeft) {
    splitter.Orientation(1);
    splitter.Refresh();
    EXPECT_EQ(bar(splitter).geometry(), QRect(0, 100, 400, 5));
    EXPECT_EQ(first->geometry(), QRect(0, 0, 400, 100));
    EXPECT_EQ(second->geometry(), QRect(0, 105, 400, 95));
}

TEST_F(ShownSplitter, MovesOnlyTheMoverUntilTheButtonIsReleased) {
    QWidget& handle = bar(splitter);
    QTest::mousePress(&handle, Qt::LeftButton, {}, QPoint(2, 50));
    EXPECT_TRUE(mover(splitter).isVisible());
    EXPECT_EQ(mover(splitter).geometry(), handle.geometry());
    QTest::mouseMove(&handle, QPoint(-80, 50));
    EXPECT_EQ(mover(splitter).geometry(), QRect(120, 0, 5, 200));
    EXPECT_EQ(handle.geometry(), QRect(200, 0, 5, 200));
    EXPECT_EQ(first->width(), 200);
    QTest::mouseRelease(&handle, Qt::LeftButton, {}, QPoint(-80, 50));
    EXPECT_FALSE(mover(splitter).isVisible());
    EXPECT_EQ(handle.geometry(), QRect(120, 0, 5, 200));
    EXPECT_EQ(first->width(), 120);
    EXPECT_EQ(second->geometry(), QRect(125, 0, 285, 200));
    EXPECT_EQ(splitter.SplitterPosition(), 30);
}

TEST_F(ShownSplitter, RaisesTheEventsOfADragInTheirOrder) {
    std::vector<std::string> raised;
    QObject::connect(&splitter, &Splitter::BarPressed, [&] {
        EXPECT_TRUE(mover(splitter).isVisible());
        raised.push_back("press");
    });
    QObject::connect(&splitter, &Splitter::BarMoved, [&] {
        EXPECT_EQ(mover(splitter).x(), 300);
        raised.push_back("move");
    });
    QObject::connect(&splitter, &Splitter::Refreshed, [&] {
        EXPECT_EQ(first->width(), 300);
        raised.push_back("refreshed");
    });
    QObject::connect(&splitter, &Splitter::BarReleased, [&] { raised.push_back("release"); });
    QWidget& handle = bar(splitter);
    QTest::mousePress(&handle, Qt::LeftButton, {}, QPoint(0, 50));
    QTest::mouseMove(&handle, QPoint(100, 50));
    QTest::mouseRelease(&handle, Qt::LeftButton, {}, QPoint(100, 50));
    EXPECT_THAT(raised, ElementsAre("press", "move", "refreshed", "release"));
}

TEST_F(ShownSplitter, StopsADragBeforeItsLimits) {
    QWidget& handle = bar(splitter);
    QTest::mousePress(&handle, Qt::LeftButton, {}, QPoint(0, 50));
    for (int x = 0; x <= 250; x += 10)
        QTest::mouseMove(&handle, QPoint(x, 50));
    QTest::mouseRelease(&handle, Qt::LeftButton, {}, QPoint(250, 50));
    EXPECT_EQ(handle.x(), 350);
    EXPECT_LT(splitter.SplitterPosition(), 90);
}

TEST_F(ShownSplitter, FollowsAPointerThatOnlyPassesWithoutShowingIt) {
    QTest::mouseMove(splitter.windowHandle(), QPoint(100, 50));
    QTest::mouseMove(splitter.windowHandle(), QPoint(204, 50));
    EXPECT_TRUE(QTest::qWaitFor([&] { return mover(splitter).x() == 204; }));
    EXPECT_FALSE(mover(splitter).isVisible());
    EXPECT_EQ(splitter.SplitterPosition(), 51);
    EXPECT_EQ(bar(splitter).x(), 200);
    EXPECT_EQ(first->width(), 200);
}

TEST_F(ShownSplitter, TakesBackWhatAPassingPointerSaidWhenItLeaves) {
    splitter.resize(613, 200);
    splitter.SplitterPosition(30);
    QTest::mouseMove(splitter.windowHandle(), QPoint(100, 50));
    QTest::mouseMove(splitter.windowHandle(), QPoint(183, 50));
    EXPECT_TRUE(QTest::qWaitFor([&] { return splitter.SplitterPosition() == 29; }));
    QTest::mouseMove(splitter.windowHandle(), QPoint(100, 50));
    EXPECT_TRUE(QTest::qWaitFor([&] { return splitter.SplitterPosition() == 30; }));
    EXPECT_EQ(mover(splitter).geometry(), bar(splitter).geometry());
    splitter.resize(1000, 200);
    EXPECT_EQ(first->width(), 300);
}

TEST_F(ShownSplitter, CountsAnArrowKeyFromWhereItsBarStands) {
    splitter.resize(613, 200);
    splitter.SplitterPosition(30);
    QTest::mouseMove(&bar(splitter), QPoint(0, 50));
    ASSERT_EQ(splitter.SplitterPosition(), 29);
    QTest::keyClick(&bar(splitter), Qt::Key_Right);
    EXPECT_EQ(splitter.SplitterPosition(), 31);
}

TEST_F(ShownSplitter, GoesOnWithADragWhileAnotherButtonIsPressedAndReleased) {
    QWidget& handle = bar(splitter);
    QTest::mousePress(&handle, Qt::LeftButton, {}, QPoint(0, 50));
    QTest::mouseMove(&handle, QPoint(60, 50));
    QTest::mousePress(&handle, Qt::RightButton, {}, QPoint(60, 50));
    QTest::mouseRelease(&handle, Qt::RightButton, {}, QPoint(60, 50));
    EXPECT_TRUE(mover(splitter).isVisible());
    EXPECT_EQ(mover(splitter).x(), 260);
    EXPECT_EQ(handle.x(), 200);
    QTest::mouseRelease(&handle, Qt::LeftButton, {}, QPoint(60, 50));
    EXPECT_FALSE(mover(splitter).isVisible());
    EXPECT_EQ(handle.x(), 260);
}

TEST_F(ShownSplitter, StaysWhereItIsAfterAPlainClick) {
    QTest::mouseMove(&bar(splitter), QPoint(4, 50));
    QTest::mouseClick(&bar(splitter), Qt::LeftButton, {}, QPoint(4, 50));
    EXPECT_EQ(bar(splitter).x(), 200);
    EXPECT_EQ(first->width(), 200);
}

TEST_F(ShownSplitter, DoesNotMoveWhileItIsDisabled) {
    EXPECT_TRUE(splitter.Enabled());
    splitter.Enabled(false);
    EXPECT_FALSE(splitter.Enabled());
    EXPECT_TRUE(first->isEnabled());
    QTest::mousePress(&bar(splitter), Qt::LeftButton, {}, QPoint(0, 50));
    QTest::mouseMove(&bar(splitter), QPoint(100, 50));
    EXPECT_FALSE(mover(splitter).isVisible());
    EXPECT_EQ(splitter.SplitterPosition(), 50);
    QTest::mouseRelease(&bar(splitter), Qt::LeftButton, {}, QPoint(100, 50));
}

TEST_F(ShownSplitter, EndsItsDragWhenItIsHiddenOrDisabled) {
    QWidget& handle = bar(splitter);
    QTest::mousePress(&handle, Qt::LeftButton, {}, QPoint(0, 50));
    QTest::mouseMove(&handle, QPoint(100, 50));
    splitter.hide();
    EXPECT_FALSE(mover(splitter).isVisibleTo(&splitter));
    EXPECT_EQ(first->width(), 300);
    splitter.show();
    QTest::mousePress(&handle, Qt::LeftButton, {}, QPoint(0, 50));
    splitter.Enabled(false);
    EXPECT_FALSE(mover(splitter).isVisible());
    QTest::mouseRelease(&handle, Qt::LeftButton, {}, QPoint(0, 50));
}

TEST_F(ShownSplitter, KeepsItsPercentageAfterAResize) {
    splitter.SplitterPosition(30);
    splitter.resize(600, 300);
    EXPECT_EQ(bar(splitter).geometry(), QRect(180, 0, 5, 300));
    EXPECT_EQ(splitter.SplitterPosition(), 30);
    EXPECT_EQ(first->geometry(), QRect(0, 0, 180, 300));
}

TEST_F(ShownSplitter, TellsAResizeBeforeItsLayout) {
    std::vector<int> widths;
    QObject::connect(&splitter, &Splitter::Resize, [&] { widths.push_back(first->width()); });
    QObject::connect(&splitter, &Splitter::Refreshed, [&] { widths.push_back(first->width()); });
    splitter.resize(600, 200);
    EXPECT_THAT(widths, ElementsAre(200, 300));
}

TEST_F(ShownSplitter, ShowsTheSizingPointerOfItsOrientation) {
    EXPECT_EQ(bar(splitter).cursor().shape(), Qt::SizeHorCursor);
    splitter.Orientation(1);
    EXPECT_EQ(bar(splitter).cursor().shape(), Qt::SizeVerCursor);
}

TEST_F(ShownSplitter, MovesByOnePercentWithTheArrowKeysAlongItsWay) {
    QTest::keyClick(&bar(splitter), Qt::Key_Right);
    EXPECT_EQ(splitter.SplitterPosition(), 51);
    EXPECT_EQ(first->width(), 204);
    QTest::keyClick(&bar(splitter), Qt::Key_Left);
    QTest::keyClick(&bar(splitter), Qt::Key_Left);
    QTest::keyClick(&bar(splitter), Qt::Key_Down);
    EXPECT_EQ(splitter.SplitterPosition(), 49);
    splitter.SplitterPosition(10);
    QTest::keyClick(&bar(splitter), Qt::Key_Left);
    EXPECT_EQ(splitter.SplitterPosition(), 10);
    splitter.Orientation(1);
    QTest::keyClick(&bar(splitter), Qt::Key_Down);
    EXPECT_EQ(splitter.SplitterPosition(), 11);
}

TEST_F(ShownSplitter, IsReachedByTheTabKeyBetweenItsNeighbours) {
    first->setFocus();
    QTest::keyClick(first, Qt::Key_Tab);
    EXPECT_EQ(splitter.focusWidget(), &bar(splitter));
    QTest::keyClick(&bar(splitter), Qt::Key_Tab);
    EXPECT_EQ(splitter.focusWidget(), second);
}

TEST_F(ShownSplitter, IsReadAndSetByAScreenReader) {
    QAccessibleInterface* reader = QAccessible::queryAccessibleInterface(&bar(splitter));
    ASSERT_TRUE(reader && reader->valueInterface());
    EXPECT_EQ(reader->role(), QAccessible::Splitter);
    EXPECT_FALSE(reader->text(QAccessible::Name).isEmpty());
    EXPECT_EQ(reader->valueInterface()->currentValue().toInt(), 50);
    EXPECT_EQ(reader->valueInterface()->minimumValue().toInt(), 10);
    EXPECT_EQ(reader->valueInterface()->maximumValue().toInt(), 90);
    reader->valueInterface()->setCurrentValue(25);
    EXPECT_EQ(splitter.SplitterPosition(), 25);
    EXPECT_EQ(first->width(), 100);
}

TEST_F(ShownSplitter, GoesOnWithoutANeighbourThatIsGone) {
    delete first;
    EXPECT_EQ(splitter.LeftOrTopControl(), nullptr);
    splitter.SplitterPosition(30);
    EXPECT_EQ(second->geometry(), QRect(125, 0, 285, 200));
}

TEST(Splitter, TakesItsNeighboursAndADraggedSplitterWithIt) {
    auto splitter = std::make_unique<Splitter>();
    const QPointer<QWidget> tree = new QWidget;
    const QPointer<Splitter> inside = new Splitter;
    const QPointer<QWidget> list = new QLineEdit;
    inside->LeftOrTopControl(list);
    splitter->LeftOrTopControl(tree);
    splitter->RightOrBottomControl(inside);
    splitter->resize(400, 200);
    splitter->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(splitter.get()));
    list->setFocus();
    QTest::mousePress(&bar(*inside), Qt::LeftButton, {}, QPoint(0, 50));
    splitter.reset();
    EXPECT_TRUE(tree.isNull() && inside.isNull() && list.isNull());
}

TEST(Splitter, PaintsItsBarInItsColour) {
    Splitter splitter;
    splitter.resize(400, 200);
    splitter.SplitterColor(Qt::red);
    EXPECT_EQ(splitter.SplitterColor(), QColor(Qt::red));
    // Out of the pointer's reach, which would tint it.
    const QImage picture = splitter.grab().toImage();
    EXPECT_EQ(picture.pixelColor(202, 10), QColor(Qt::red));
    EXPECT_NE(picture.pixelColor(198, 10), QColor(Qt::red));
}

TEST(Splitter, MovesTheOnlyNeighbourThatIsSet) {
    Splitter left;
    left.resize(400, 200);
    left.LeftOrTopControl(new QWidget);
    EXPECT_EQ(left.RightOrBottomControl(), nullptr);
    left.SplitterPosition(30);
    left.show();
    EXPECT_EQ(left.LeftOrTopControl()->geometry(), QRect(0, 0, 120, 200));
    Splitter right;
    right.resize(400, 200);
    right.RightOrBottomControl(new QWidget);
    right.SplitterPosition(30);
    right.show();
    EXPECT_EQ(right.RightOrBottomControl()->geometry(), QRect(125, 0, 285, 200));
}

TEST(Splitter, LeavesANeighbourHiddenThatWasHiddenOnPurpose) {
    Splitter splitter;
    auto* hidden = new QWidget;
    hidden->hide();
    splitter.LeftOrTopControl(hidden);
    splitter.show();
    EXPECT_FALSE(hidden->isVisible());
}

TEST(Splitter, PassesARoomOnToASplitterInside) {
    Splitter outer;
    auto* inner = new Splitter;
    inner->Orientation(1);
    inner->LeftOrTopControl(new QWidget);
    outer.RightOrBottomControl(inner);
    outer.resize(400, 200);
    outer.show();
    EXPECT_EQ(inner->geometry(), QRect(205, 0, 205, 200));
    EXPECT_EQ(inner->LeftOrTopControl()->geometry(), QRect(0, 0, 205, 100));
}

}  // namespace
}  // namespace tessarine::tests
