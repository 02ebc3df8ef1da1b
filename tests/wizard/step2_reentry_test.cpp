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
    static void clickWaits(QWidget& target) {
        mouseWaits(target, QEvent::MouseButtonPress, target.rect().center());
        mouseWaits(target, QEvent::MouseButtonRelease, target.rect().center());
    }
    /// The sample under the chain as the list shows it.
    PixelBuffer chainResult() {
        fBatch other{otherDesktop_};
        other.start();
        cBatch& fresh = other.batch();
        fresh.chkInvt = batch.chkInvt;
        fresh.chkKill = batch.chkKill;
        for (const ChainEntry& entry : batch.LSelectedFunctions) {
            fresh.Ltray.push_back(batch.Ltray[static_cast<size_t>(entry.itemData - 1)]);
            fresh.LSelectedFunctions.push_back(
                {entry.text, static_cast<int32_t>(fresh.Ltray.size())});
        }
        fresh.RebuildChain();
        return fresh.workBits;
    }
    void addFunctions(std::initializer_list<const char*> names) {
        for (const char* name : names) {
            clickNode(findFunction(name)->treeIndex);
            press("CmdAdd");
        }
    }

  private:
    RecordedDesktop otherDesktop_;
};

TEST_F(Reentry, TheFunctionChosenLastIsTheOneThatIsShown) {
    clickNode(brightnessNode);
    tree.setFocus();
    for (int i = 0; i < 21; ++i)
        keyWaits(tree, Qt::Key_Down);
    clickNode(brightnessNode);
    settle();
    ASSERT_EQ(text("CLab"), "[Negative]");
    EXPECT_EQ(batch.workBits, batch.cFilter.Invert());
    const Pixel pixel = batch.workBits.at(20, 30);
    EXPECT_EQ(shownAt(iDst, 20, 30), QColor(pixel.red, pixel.green, pixel.blue));
}

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

TEST_F(Reentry, AnEntryThatIsMovedDuringARebuildStandsInThePreview) {
    addFunctions({"Blue", "Emboss", "Negative", "Old Photo", "Relief"});
    clickEntry(4);
    clickWaits(at("TBTray(7)"));
    clickWaits(at("TBTray(7)"));
    press("TBTray(7)");
    settle();
    ASSERT_EQ(listed(),
              (std::vector<std::string>{"Blue", "Relief", "Emboss", "Negative", "Old Photo"}));
    EXPECT_EQ(batch.workBits, chainResult());
    EXPECT_EQ(batch.cFilter.Bits(), batch.workBits);
}

TEST_F(Reentry, StartingOverDuringARebuildLeavesTheSample) {
    addFunctions({"Blue", "Emboss", "Negative", "Old Photo", "Relief"});
    clickWaits(at("cmdStart"));
    press("cmdRefresh");
    settle();
    EXPECT_EQ(list.count(), 0);
    EXPECT_EQ(batch.workBits, batch.originalBits);
    EXPECT_EQ(batch.cFilter.Bits(), batch.originalBits);
    EXPECT_EQ(shownAt(iDst, 50, 50), sampleAt(50, 50));
}

TEST_F(Reentry, ASliderMovedDuringARebuildLeavesTheRowsTheirValues) {
    addFunctions({"Brightness", "Emboss", "Negative"});
    clickNode(brightnessNode);
    auto& spin = at<QSpinBox>("sbFilterV(0)");
    spin.setFocus();
    for (int i = 0; i < 5; ++i)
        keyWaits(spin, Qt::Key_PageUp);
    press("cmdRefresh");
    settle();
    EXPECT_EQ(batch.cFilter.Bits(), chainResult());
}

TEST_F(Reentry, AFunctionAddedWhileItsPreviewGivesWayIsInTheChainsPicture) {
    clickNode(negativeNode);
    clickNode(brightnessNode);
    const QPoint place = placeOf(negativeNode);
    mouseWaits(*tree.viewport(), QEvent::MouseButtonDblClick, place);
    mouseWaits(*tree.viewport(), QEvent::MouseButtonRelease, place);
    clickNode(negativeNode);
    settle();
    ASSERT_EQ(listed(), std::vector<std::string>{"Negative"});
    EXPECT_EQ(batch.cFilter.Bits(), chainResult());
    EXPECT_EQ(batch.workBits, chainResult()) << "and it is seen once";
}

/// Looks how deep on the stack the keys of a control arrive.
class StackGauge : public QObject {
  public:
    bool eventFilter(QObject* target, QEvent* event) override {
        if (event->type() != QEvent::KeyPress) return false;
        const char here = 0;
        const auto place = reinterpret_cast<uintptr_t>(&here);
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
