#include <algorithm>
#include <cstdint>

#include <QCoreApplication>
#include <QKeyEvent>
#include <QSpinBox>

#include "step2_fixture.h"
#include "widgets/value_tip.h"

// Previews and rebuilds give way to events: what a person does in the middle of one.

namespace tessarine::tests {
namespace {

class Reentry : public Step2 {
  protected:
    // What waits here happens as soon as a preview gives way.
    static void keyWaits(QWidget& target, Qt::Key key) {
        QCoreApplication::postEvent(&target, new QKeyEvent(QEvent::KeyPress, key, {}));
        QCoreApplication::postEvent(&target, new QKeyEvent(QEvent::KeyRelease, key, {}));
    }
    static void mouseWaits(QWidget& target, QEvent::Type type, QPoint place) {
        const bool down = type != QEvent::MouseButtonRelease;
        QCoreApplication::postEvent(
            &target, new QMouseEvent(type, place, target.mapToGlobal(place), Qt::LeftButton,
                                     down ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier));
    }
};

TEST_F(Reentry, ASliderShowsItsLastPlace) {
    clickNode(brightnessNode);
    auto& spin = at<QSpinBox>("sbFilterV(0)");
    for (int i = 0; i < 20; ++i)
        keyWaits(spin, Qt::Key_Up);
    at<cpvSlider>("sbFilter(0)").Value(30);
    settle();
    EXPECT_EQ(batch.sbFilter[0].value, 50);
    EXPECT_EQ(fieldText("lblFilterV(0)"), "50");
    EXPECT_EQ(batch.workBits, batch.cFilter.BRIGHTNESS(50));
}

/// Looks how deep on the stack the keys of a control arrive.
class StackGauge : public QObject {
  public:
    bool eventFilter(QObject* target, QEvent* event) override {
        if (event->type() != QEvent::KeyPress) return false;
        // Not the address of a variable, which the address sanitizer may keep elsewhere.
        const auto place = reinterpret_cast<uintptr_t>(__builtin_frame_address(0));
        highest_ = std::max(highest_, place);
        lowest_ = std::min(lowest_, place);
        // An event of the screen is waiting too; a posted one alone would not be looked for.
        QCoreApplication::postEvent(target, new QEvent(QEvent::User));
        return false;
    }
    size_t bytes() const { return highest_ - lowest_; }

  private:
    uintptr_t highest_ = 0;
    uintptr_t lowest_ = UINTPTR_MAX;
};

TEST_F(Reentry, KeysThatHavePiledUpAreAllTakenWithoutTakingTheStack) {
    clickNode(brightnessNode);
    auto& spin = at<QSpinBox>("sbFilterV(0)");
    StackGauge gauge;
    spin.installEventFilter(&gauge);
    for (int i = 0; i < 1000; ++i) {
        keyWaits(spin, Qt::Key_Up);
        keyWaits(spin, Qt::Key_Down);
    }
    keyWaits(spin, Qt::Key_Up);
    at<cpvSlider>("sbFilter(0)").Value(30);
    settle();
    EXPECT_EQ(batch.sbFilter[0].value, 31);
    EXPECT_EQ(batch.workBits, batch.cFilter.BRIGHTNESS(31));
    EXPECT_GT(gauge.bytes(), 10'000U) << "previews give way within one another";
    EXPECT_LT(gauge.bytes(), 1'000'000U);
}

TEST_F(Reentry, APointPickedWhileAnotherFunctionIsChosenLeavesNoCross) {
    selectFunction(27);
    const QPoint place = placeOf(brightnessNode);
    mouseWaits(*tree.viewport(), QEvent::MouseButtonPress, place);
    mouseWaits(*tree.viewport(), QEvent::MouseButtonRelease, place);
    QTest::mousePress(&iOri, Qt::LeftButton, {}, QPoint(30, 30));
    settle();
    ASSERT_EQ(text("CLab"), "[Brightness]");
    EXPECT_FALSE(iOri.mark());
    EXPECT_FALSE(iDst.mark());
    EXPECT_EQ(batch.workBits, batch.cFilter.BRIGHTNESS(0));
}

TEST_F(Reentry, AReleaseDuringThePreviewOfAPressClosesTheSlidersTip) {
    clickNode(brightnessNode);
    auto& slider = at<cpvSlider>("sbFilter(0)");
    const QPoint end(slider.width() - 3, slider.height() / 2);
    mouseWaits(slider, QEvent::MouseButtonRelease, end);
    QTest::mousePress(&slider, Qt::LeftButton, {}, end);
    settle();
    EXPECT_EQ(batch.sbFilter[0].value, 250);
    EXPECT_FALSE(frmValueTip::ofProgram()->isVisible());
}

}  // namespace
}  // namespace tessarine::tests
