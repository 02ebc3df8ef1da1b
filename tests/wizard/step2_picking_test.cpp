#include <QTimer>

#include "step2_fixture.h"

// The picked point, its cross and the swatches.

namespace tessarine::tests {
namespace {

constexpr int lens = 27;
constexpr int isolate = 14;
const QColor red(255, 0, 0);
const QColor black(0, 0, 0);

class Picking : public Step2 {
  protected:
    /// The place of a picture's pixel in its view.
    static QPoint in(const PictureView& view, int x, int y) {
        const int half = view.scale() / 2;
        return {PictureView::border + x * view.scale() + half,
                PictureView::border + y * view.scale() + half};
    }
    void pressOn(PictureView& view, int x, int y) {
        QTest::mousePress(&view, Qt::LeftButton, {}, in(view, x, y));
    }
    QTimer& tmrSelect = *step.findChild<QTimer*>("tmrSelect");
};

TEST_F(Picking, APressOnEitherPictureSetsThePoint) {
    selectFunction(lens);
    EXPECT_EQ(batch.pickRelX, 0.5F);
    pressOn(iOri, 50, 87);
    EXPECT_EQ(batch.pickX, 50);
    EXPECT_EQ(batch.pickY, 87);
    EXPECT_EQ(batch.pickRelX, 0.25F);
    EXPECT_EQ(batch.pickRelY, 0.5F);
    pressOn(iDst, 150, 0);
    EXPECT_EQ(batch.pickX, 150);
    EXPECT_EQ(batch.pickY, 0);
    EXPECT_EQ(batch.workBits, batch.cFilter.LENS(0.75F, 0, 50.0F / 200, 50));
}

TEST_F(Picking, TheMouseDraggedOutKeepsTheCrossOnTheEdge) {
    selectFunction(lens);
    pressOn(iOri, 100, 100);
    drag(iOri, QPoint(-400, 60));
    EXPECT_EQ(batch.pickX, 0);
    drag(iOri, QPoint(4000, 4000));
    EXPECT_EQ(batch.pickX, 199);
    EXPECT_EQ(batch.pickY, 173);
    ASSERT_TRUE(iOri.mark());
    EXPECT_EQ(iOri.mark()->x, 199);
    EXPECT_EQ(iOri.mark()->y, 173);
}

TEST_F(Picking, OnlyTheLeftButtonPicks) {
    selectFunction(lens);
    QTest::mousePress(&iOri, Qt::RightButton, {}, in(iOri, 20, 20));
    QTest::mouseMove(&iOri, in(iOri, 30, 30));
    EXPECT_EQ(batch.pickX, 0);
    EXPECT_EQ(batch.pickRelX, 0.5F);
}

TEST_F(Picking, TheFirstSwatchTakesTheColourOfTheResult) {
    clickNode(negativeNode);
    selectFunction(isolate);
    const PixelBuffer before = batch.workBits;
    pressOn(iOri, 60, 60);
    const Pixel pixel = before.at(60, 60);
    EXPECT_EQ(batch.Col[0], uint32_t(pixel.red | pixel.green << 8 | pixel.blue << 16));
    const QImage swatch = at("Col(0)").grab().toImage();
    EXPECT_EQ(swatch.pixelColor(swatch.rect().center()),
              QColor(pixel.red, pixel.green, pixel.blue));
}

TEST_F(Picking, WithoutAPointTheMouseOnlyRepaintsTheOriginal) {
    selectFunction(lens);
    pressOn(iOri, 20, 30);
    ASSERT_TRUE(iOri.mark());
    clickNode(brightnessNode);
    const PixelBuffer shown = batch.workBits;
    pressOn(iOri, 99, 99);
    pressOn(iDst, 99, 99);
    EXPECT_EQ(batch.pickX, 20);
    EXPECT_EQ(batch.pickY, 30);
    EXPECT_EQ(batch.workBits, shown);
    EXPECT_FALSE(iOri.mark());
}

TEST_F(Picking, TheCrossStandsOnTheOriginalUntilItsNextRepaint) {
    selectFunction(lens);
    pressOn(iOri, 40, 50);
    ASSERT_TRUE(iOri.mark());
    EXPECT_FALSE(iDst.mark()) << "the preview has been painted since";
    for (int x = 36; x <= 45; ++x)
        EXPECT_EQ(shownAt(iOri, x, 50), black) << x;
    for (int y = 46; y <= 55; ++y)
        EXPECT_EQ(shownAt(iOri, 40, y), black) << y;
    EXPECT_EQ(shownAt(iOri, 35, 50), sampleAt(35, 50));
    EXPECT_EQ(shownAt(iOri, 46, 50), sampleAt(46, 50));
    EXPECT_EQ(shownAt(iOri, 40, 45), sampleAt(40, 45));
    EXPECT_EQ(shownAt(iOri, 40, 56), sampleAt(40, 56));
    drag(iOri, in(iOri, 140, 50));
    EXPECT_EQ(shownAt(iOri, 38, 50), sampleAt(38, 50)) << "the old cross is gone";
    EXPECT_EQ(shownAt(iOri, 140, 50), black);
}

TEST_F(Picking, TheCrossBlinksRedAndBlackWhileAPointIsAskedFor) {
    EXPECT_EQ(tmrSelect.interval(), 500);
    EXPECT_FALSE(tmrSelect.isActive());
    selectFunction(lens);
    EXPECT_TRUE(tmrSelect.isActive());
    EXPECT_FALSE(iOri.mark());
    ASSERT_TRUE(QTest::qWaitFor([&] { return iOri.mark().has_value(); }, 2000));
    EXPECT_EQ(shownAt(iOri, 100, 87), red);
    EXPECT_EQ(shownAt(iDst, 100, 87), red);
    ASSERT_TRUE(QTest::qWaitFor([&] { return iOri.mark()->colour == 0; }, 2000));
    EXPECT_EQ(shownAt(iOri, 100, 87), black);
    EXPECT_EQ(shownAt(iDst, 100, 87), black);
    clickNode(brightnessNode);
    EXPECT_FALSE(tmrSelect.isActive());
    EXPECT_FALSE(iOri.mark());
    EXPECT_FALSE(iDst.mark());
}

TEST_F(Picking, SelectingLensMovesTheCrossToTheCentreAndKeepsTheStoredPoint) {
    selectFunction(lens);
    pressOn(iOri, 10, 10);
    selectFunction(lens);
    ASSERT_TRUE(QTest::qWaitFor([&] { return iOri.mark().has_value(); }, 2000));
    EXPECT_EQ(iOri.mark()->x, 100);
    EXPECT_EQ(iOri.mark()->y, 87);
    press("CmdAdd");
    EXPECT_EQ(batch.Ltray.back().column(8), "10");
    EXPECT_EQ(batch.Ltray.back().column(9), "10");
}

TEST_F(Picking, OnALargerWindowTheMouseStillCountsInPixelsOfThePicture) {
    window.resize(1024, 768);
    settle();
    ASSERT_EQ(iOri.scale(), 2);
    EXPECT_EQ(iOri.size(), QSize(402, 350));
    selectFunction(lens);
    const int border = PictureView::border;
    QTest::mousePress(&iDst, Qt::LeftButton, {}, QPoint(border + 2 * 77, border + 2 * 31 + 1));
    EXPECT_EQ(batch.pickX, 77);
    EXPECT_EQ(batch.pickY, 31);
    EXPECT_EQ(shownAt(iOri, 77, 31), black);
}

TEST_F(Picking, TheArrowKeysMoveThePoint) {
    selectFunction(lens);
    iOri.setFocus();
    QTest::keyClick(&iOri, Qt::Key_Right);
    EXPECT_EQ(batch.pickX, 101);
    EXPECT_EQ(batch.pickY, 87);
    QTest::keyClick(&iOri, Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(batch.pickX, 101);
    EXPECT_EQ(batch.pickY, 77);
    for (int i = 0; i < 30; ++i)
        QTest::keyClick(&iOri, Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_EQ(batch.pickX, 0);
}

// ---- Swatches ----

TEST_F(Picking, ASwatchAsksForItsColourAndTakesTheAnswer) {
    selectFunction(isolate);
    std::vector<int32_t> asked;
    step.pickColour = [&](int32_t in, int32_t& out) {
        asked.push_back(in);
        out = 0x00112233;
        return true;
    };
    const uint32_t before = batch.Col[0];
    press("Col(0)");
    press("Col(1)");
    EXPECT_EQ(asked, (std::vector<int32_t>{int32_t(before), 0x000000C0}));
    EXPECT_EQ(batch.Col[0], 0x00112233U);
    EXPECT_EQ(batch.funcColor[1], 0x00112233);
    const QImage swatch = at("Col(1)").grab().toImage();
    EXPECT_EQ(swatch.pixelColor(swatch.rect().center()), QColor(0x33, 0x22, 0x11));
}

TEST_F(Picking, ASwatchPreviewsAfterACancelToo) {
    selectFunction(isolate);
    step.pickColour = [&](int32_t, int32_t& out) {
        out = 0x00112233;
        return false;
    };
    const uint32_t before = batch.Col[1];
    batch.workBits = batch.originalBits;
    press("Col(1)");
    EXPECT_EQ(batch.Col[1], before);
    EXPECT_NE(batch.workBits, batch.originalBits);
}

TEST_F(Picking, TheColourPickerOpensWithTheSwatchsColour) {
    selectFunction(isolate);
    std::string shown;
    // The picker is modal: it is answered while it waits.
    QTimer::singleShot(0, [&] {
        QWidget* picker = QApplication::activeModalWidget();
        ASSERT_NE(picker, nullptr);
        shown = control<QLineEdit>(*picker, "txtRed").text().toStdString();
        auto& field = control<QLineEdit>(*picker, "txtRed");
        field.setFocus();
        field.selectAll();
        QTest::keyClicks(&field, "17");
        click(control<QWidget>(*picker, "cmdOK"));
    });
    press("Col(1)");
    EXPECT_EQ(shown, "192");
    EXPECT_EQ(batch.Col[1], 0x00000011U);
    EXPECT_EQ(batch.funcColor[1], 0x00000011);
}

TEST_F(Picking, APressedSwatchLooksPressedUntilItIsReleased) {
    selectFunction(isolate);
    step.pickColour = [](int32_t, int32_t&) { return false; };
    QWidget& swatch = at("Col(0)");
    swatch.setFocus();
    const QImage idle = swatch.grab().toImage();
    QTest::mousePress(&swatch, Qt::LeftButton);
    EXPECT_NE(swatch.grab().toImage(), idle);
    QTest::mouseRelease(&swatch, Qt::LeftButton);
    EXPECT_EQ(swatch.grab().toImage(), idle);
}

}  // namespace
}  // namespace tessarine::tests
