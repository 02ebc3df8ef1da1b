#include "widgets/slider.h"

#include <string>
#include <vector>

#include <QAccessible>
#include <QLabel>
#include <QTest>
#include <gmock/gmock.h>

#include "support/qt_printers.h"
#include "support/window_driver.h"
#include "widgets/value_tip.h"

namespace tessarine::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

QLabel& tipText() { return control<QLabel>(*frmValueTip::ofProgram(), "lblTip"); }

/// A shown slider of 0 to 10 over a free length of 100 pixels, and what it raised.
class ShownSlider : public testing::Test {
  protected:
    ShownSlider() {
        slider.Orientation(0);
        const QSize thumb = slider.minimumSizeHint();
        slider.setGeometry(20, 60, 100 + thumb.width(), thumb.height());
        window.resize(300, 200);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
        QObject::connect(&slider, &cpvSlider::Click, [this] { raised.push_back("Click"); });
        QObject::connect(&slider, &cpvSlider::ArrivedFirst,
                         [this] { raised.push_back("ArrivedFirst"); });
        QObject::connect(&slider, &cpvSlider::ArrivedLast,
                         [this] { raised.push_back("ArrivedLast"); });
        QObject::connect(&slider, &cpvSlider::ValueChanged, [this] {
            raised.push_back("ValueChanged " + std::to_string(slider.Value()));
        });
        QObject::connect(&slider, &cpvSlider::MouseDown, [this](int16_t button) {
            raised.push_back("MouseDown " + std::to_string(button));
        });
        QObject::connect(&slider, &cpvSlider::MouseUp, [this](int16_t button) {
            raised.push_back("MouseUp " + std::to_string(button));
        });
    }

    /// The middle of the thumb at a place of 0 to 100 along the rail.
    QPoint at(int along) const {
        return QPoint(along + slider.minimumSizeHint().width() / 2, slider.height() / 2);
    }
    std::vector<std::string> takeRaised() { return std::exchange(raised, {}); }

    QWidget window;
    cpvSlider slider{&window};
    std::vector<std::string> raised;
};

TEST_F(ShownSlider, BeginsWithItsDefaults) {
    const cpvSlider fresh;
    EXPECT_EQ(fresh.Orientation(), 1);
    EXPECT_EQ(fresh.RailStyle(), 0);
    EXPECT_TRUE(fresh.ShowValueTip());
    EXPECT_TRUE(fresh.isEnabled());
    EXPECT_EQ(fresh.Min(), 0);
    EXPECT_EQ(fresh.Max(), 10);
    EXPECT_EQ(fresh.Value(), 0);
}

TEST_F(ShownSlider, RaisesTheEventsOfADragInTheirOrder) {
    QTest::mousePress(&slider, Qt::LeftButton, {}, at(0));
    QTest::mouseMove(&slider, at(33));
    QTest::mouseMove(&slider, at(34));
    QTest::mouseMove(&slider, at(180));
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, at(180));
    EXPECT_THAT(takeRaised(), ElementsAre("MouseDown 1", "ValueChanged 3", "ValueChanged 10",
                                          "ArrivedLast", "MouseUp 1"));
}

TEST_F(ShownSlider, JumpsUnderAPressBesideItsThumb) {
    QTest::mouseClick(&slider, Qt::LeftButton, {}, at(70));
    EXPECT_THAT(takeRaised(), ElementsAre("ValueChanged 7", "MouseDown 1", "Click", "MouseUp 1"));
}

TEST_F(ShownSlider, TakesTheSecondPressOfADoubleClickForAPress) {
    QTest::mouseClick(&slider, Qt::LeftButton, {}, at(0));
    QTest::mouseDClick(&slider, Qt::LeftButton, {}, at(0));
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, at(0));
    EXPECT_THAT(takeRaised(), ElementsAre("MouseDown 1", "Click", "MouseUp 1", "MouseDown 1",
                                          "Click", "MouseUp 1"));
}

TEST_F(ShownSlider, MovesOnlyWhileTheButtonIsHeld) {
    QTest::mouseMove(&slider, at(50));
    EXPECT_EQ(slider.Value(), 0);
    EXPECT_THAT(raised, IsEmpty());
}

TEST_F(ShownSlider, ShowsItsValueInTheTipWhileItIsDragged) {
    const frmValueTip& tip = *frmValueTip::ofProgram();
    EXPECT_FALSE(tip.isVisible());
    QTest::mousePress(&slider, Qt::LeftButton, {}, at(50));
    EXPECT_TRUE(tip.isVisible());
    EXPECT_EQ(tipText().text(), "5");
    QTest::mouseMove(&slider, at(100));
    EXPECT_EQ(tipText().text(), "10");
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, at(100));
    EXPECT_FALSE(tip.isVisible());
}

TEST_F(ShownSlider, PutsTheTipAboveTheMiddleOfItsThumb) {
    QTest::mousePress(&slider, Qt::LeftButton, {}, at(50));
    const QRect place = frmValueTip::ofProgram()->geometry();
    const QPoint origin = slider.mapToGlobal(QPoint(0, 0));
    EXPECT_EQ(place.size(), tipText().size() + QSize(4, 3));
    EXPECT_EQ(place.y(), origin.y() - tipText().height() - 5);
    EXPECT_NEAR(place.x() + place.width() / 2.0, origin.x() + at(50).x() + 0.5, 0.5);
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, at(50));
}

TEST_F(ShownSlider, PutsTheTipLeftOfAVerticalThumb) {
    slider.Orientation(1);
    slider.setGeometry(100, 20, slider.minimumSizeHint().width(),
                       100 + slider.minimumSizeHint().height());
    const QPoint middle(slider.width() / 2, 50 + slider.minimumSizeHint().height() / 2);
    QTest::mousePress(&slider, Qt::LeftButton, {}, middle);
    EXPECT_EQ(slider.Value(), 5);
    const QRect place = frmValueTip::ofProgram()->geometry();
    const QPoint origin = slider.mapToGlobal(QPoint(0, 0));
    EXPECT_EQ(place.x(), origin.x() - tipText().width() - 6);
    EXPECT_NEAR(place.y() + place.height() / 2.0, origin.y() + middle.y(), 1.0);
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, middle);
}

TEST_F(ShownSlider, ShowsNoTipWhereNoneIsWanted) {
    slider.ShowValueTip(false);
    QTest::mousePress(&slider, Qt::LeftButton, {}, at(50));
    EXPECT_FALSE(frmValueTip::ofProgram()->isVisible());
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, at(50));
}

TEST_F(ShownSlider, LeavesTheFocusWhereItIs) {
    QWidget field(&window);
    field.setFocusPolicy(Qt::StrongFocus);
    field.show();
    field.setFocus();
    QTest::mousePress(&slider, Qt::LeftButton, {}, at(50));
    EXPECT_EQ(window.focusWidget(), &field);
    EXPECT_NE(QApplication::activeWindow(), frmValueTip::ofProgram().get());
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, at(50));
}

TEST_F(ShownSlider, SharesOneTipWithEveryOtherSlider) {
    cpvSlider other(&window);
    EXPECT_EQ(frmValueTip::ofProgram(), frmValueTip::ofProgram());
    int tips = 0;
    for (const QWidget* one : QApplication::topLevelWidgets())
        tips += one->objectName() == "frmValueTip";
    EXPECT_EQ(tips, 1);
}

TEST_F(ShownSlider, TakesNoKey) {
    EXPECT_EQ(slider.focusPolicy(), Qt::NoFocus);
    for (const Qt::Key key : {Qt::Key_Right, Qt::Key_Up, Qt::Key_PageUp, Qt::Key_End})
        QTest::keyClick(&slider, key);
    EXPECT_EQ(slider.Value(), 0);
    EXPECT_THAT(raised, IsEmpty());
}

TEST_F(ShownSlider, DoesNothingWhileItIsDisabled) {
    slider.setEnabled(false);
    QTest::mouseClick(&slider, Qt::LeftButton, {}, at(50));
    EXPECT_EQ(slider.Value(), 0);
    EXPECT_THAT(raised, IsEmpty());
}

TEST_F(ShownSlider, EndsItsDragWhenItIsDisabledOrHidden) {
    QTest::mousePress(&slider, Qt::LeftButton, {}, at(50));
    takeRaised();
    slider.setEnabled(false);
    EXPECT_THAT(takeRaised(), ElementsAre("MouseUp 1"));
    EXPECT_FALSE(frmValueTip::ofProgram()->isVisible());
    slider.setEnabled(true);
    QTest::mousePress(&slider, Qt::LeftButton, {}, at(50));
    takeRaised();
    slider.hide();
    EXPECT_THAT(takeRaised(), ElementsAre("MouseUp 1"));
    EXPECT_FALSE(frmValueTip::ofProgram()->isVisible());
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, at(50));
}

TEST_F(ShownSlider, RefusesAPropertyOutsideItsScale) {
    EXPECT_THROW(slider.Value(11), InvalidPropertyValue);
    EXPECT_THROW(slider.Min(10), InvalidPropertyValue);
    EXPECT_THROW(slider.Max(0), InvalidPropertyValue);
    EXPECT_THAT(raised, IsEmpty());
}

TEST_F(ShownSlider, RaisesTheArrivalOfANewMin) {
    slider.Value(8);
    takeRaised();
    slider.Min(5);
    EXPECT_THAT(takeRaised(), ElementsAre("ValueChanged 5", "ArrivedFirst"));
}

TEST_F(ShownSlider, ShowsWhatHoldsAlreadyWithoutASignal) {
    slider.show(-50, 50, 20);
    EXPECT_THAT(raised, IsEmpty());
    EXPECT_EQ(slider.Min(), -50);
    EXPECT_EQ(slider.Max(), 50);
    EXPECT_EQ(slider.Value(), 20);
}

TEST_F(ShownSlider, IsReadAndSetByAScreenReader) {
    slider.setAccessibleName("Level");
    QAccessibleInterface* reader = QAccessible::queryAccessibleInterface(&slider);
    ASSERT_TRUE(reader && reader->valueInterface());
    EXPECT_EQ(reader->role(), QAccessible::Slider);
    EXPECT_EQ(reader->text(QAccessible::Name), "Level");
    EXPECT_EQ(reader->valueInterface()->minimumValue().toInt(), 0);
    EXPECT_EQ(reader->valueInterface()->maximumValue().toInt(), 10);
    reader->valueInterface()->setCurrentValue(6);
    EXPECT_EQ(reader->valueInterface()->currentValue().toInt(), 6);
    EXPECT_EQ(reader->text(QAccessible::Value), "6");
    EXPECT_THAT(takeRaised(), ElementsAre("ValueChanged 6"));
    reader->valueInterface()->setCurrentValue(99);
    EXPECT_EQ(slider.Value(), 10);
}

TEST_F(ShownSlider, PaintsEveryRailStyleInItsOwnWay) {
    std::vector<QImage> pictures;
    for (int style = 0; style <= 4; ++style) {
        slider.RailStyle(style);
        for (const QImage& other : pictures)
            EXPECT_NE(slider.grab().toImage(), other) << style;
        pictures.push_back(slider.grab().toImage());
    }
}

TEST_F(ShownSlider, ShowsTheRailPictureInTheRailsPlace) {
    QPixmap picture(60, 6);
    picture.fill(Qt::red);
    slider.RailPicture(picture);
    const QPoint middle = slider.rect().center();
    EXPECT_NE(slider.grab().toImage().pixelColor(middle), QColor(Qt::red));
    slider.RailStyle(99);
    EXPECT_EQ(slider.grab().toImage().pixelColor(middle), QColor(Qt::red));
    const QColor ground = slider.grab().toImage().pixelColor(slider.width() - 12, middle.y());
    EXPECT_EQ(ground, slider.palette().color(QPalette::Window));
}

TEST_F(ShownSlider, TakesItsThumbFromItsPicture) {
    QPixmap picture(30, 24);
    picture.fill(Qt::green);
    slider.SliderIcon(QIcon(picture), QSize(30, 24));
    EXPECT_EQ(slider.minimumSizeHint(), QSize(30, 24));
    EXPECT_EQ(slider.sizeHint().height(), 24);
    slider.resize(130, 24);
    slider.Value(5);
    const QImage shown = slider.grab().toImage();
    EXPECT_EQ(shown.pixelColor(50, 12), QColor(Qt::green));
    EXPECT_EQ(shown.pixelColor(79, 1), QColor(Qt::green));
    EXPECT_NE(shown.pixelColor(48, 1), QColor(Qt::green));
}

TEST_F(ShownSlider, PaintsItsGroundInItsColour) {
    slider.BackColor(Qt::yellow);
    EXPECT_EQ(slider.BackColor(), QColor(Qt::yellow));
    EXPECT_EQ(slider.grab().toImage().pixelColor(60, 0), QColor(Qt::yellow));
}

TEST_F(ShownSlider, FollowsItsValueWhenItBecomesLonger) {
    slider.Value(5);
    slider.resize(slider.width() + 100, slider.height());
    raised.clear();
    QTest::mousePress(&slider, Qt::LeftButton, {}, at(100));
    EXPECT_EQ(slider.Value(), 5);
    EXPECT_THAT(takeRaised(), ElementsAre("MouseDown 1"));
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, at(100));
}

}  // namespace
}  // namespace tessarine::tests
