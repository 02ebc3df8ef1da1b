#include <filesystem>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "batch/texts.h"
#include "chain_fixture.h"
#include "support/paths.h"

// Runs whose rows change the size of their pictures, in both ways to run.

namespace tessarine::tests {
namespace {

namespace fs = std::filesystem;
using Status = PictureReport::Status;

constexpr int32_t resize = 59;
constexpr int32_t rotate = 70;
constexpr int32_t negative = 51;
constexpr int16_t bmpRow = 8;

enum class Way { window, independent };

class SizeRun : public ChainFixture, public testing::WithParamInterface<Way> {
  protected:
    SizeRun() {
        fs::create_directory(out);
        batch.txtDestination = out;
        batch.txtName = "Sample";
        batch.cboFormat.index = bmpRow;
        batch.chkOverwrite = 1;
    }

    void run() {
        if (GetParam() == Way::window)
            batch.CmdBatchAll();
        else
            batch.BatchEach();
    }
    void addFile(const std::string& name) {
        const std::string path = scratch / name;
        batch.lvSelected.push_back({name, extensionOf(path), path, folderOf(path)});
    }
    PixelBuffer addPicture(int32_t width, int32_t height) {
        const auto number = static_cast<uint32_t>(batch.lvSelected.size());
        const PixelBuffer picture = Bitmap(randomBuffer(width, height, number)).pixels();
        const std::string name = "picture" + std::to_string(number) + ".ppm";
        writePixmap(scratch / name, picture);
        addFile(name);
        return picture;
    }
    PixelBuffer output(int number) const {
        return readBitmapFile(out + "/Sample" + std::to_string(number) + ".bmp");
    }
    void expectOutputSize(int number, int32_t width, int32_t height) const {
        const PixelBuffer picture = output(number);
        EXPECT_EQ(picture.width(), width) << number;
        EXPECT_EQ(picture.height(), height) << number;
    }
    static PixelBuffer resampled(const PixelBuffer& picture, int32_t width, int32_t height) {
        cBitFilter filter;
        filter.Bits(picture);
        filter.BitsResample(picture, width, height);
        return filter.Bits();
    }

    const ScratchFolder scratch;
    const std::string out = scratch / "out";
};

INSTANTIATE_TEST_SUITE_P(Ways, SizeRun, testing::Values(Way::window, Way::independent),
                         [](const auto& way) {
                             return way.param == Way::window ? "Window" : "Independent";
                         });

TEST_P(SizeRun, EachPictureIsResizedByItsOwnProportions) {
    const PixelBuffer first = addPicture(40, 30);
    const PixelBuffer second = addPicture(10, 40);
    const PixelBuffer third = addPicture(20, 20);
    addRow(resize, {"20", "99", "1", "0", "0", "True"});
    run();
    EXPECT_EQ(output(1), resampled(first, 20, 15));
    EXPECT_EQ(output(2), resampled(second, 20, 80));
    EXPECT_EQ(output(3), resampled(third, 20, 20));
}

TEST_P(SizeRun, TheSavedPictureIsThatOfTheLastRow) {
    const PixelBuffer picture = addPicture(40, 30);
    addRow(negative);
    addRow(resize, {"90", "7", "1", "0", "0", "False"});
    addRow(resize, {"33", "44", "1", "0", "0", "False"});
    addRow(negative);
    run();
    EXPECT_EQ(output(1), inverted(resampled(resampled(inverted(picture), 90, 7), 33, 44)));
}

TEST_P(SizeRun, EachPictureGrowsByItsOwnSizeWhereItIsTurned) {
    addPicture(100, 50);
    addPicture(30, 30);
    addRow(rotate, {"0", "0", "0", "0", "0", "True"});
    batch.sbDegrees = 45;
    run();
    expectOutputSize(1, 106, 106);
    expectOutputSize(2, 42, 42);
}

TEST_P(SizeRun, ATurnBy0DegreesSavesThePictureAsItWas) {
    const PixelBuffer picture = addPicture(33, 20);
    addRow(rotate, {"45", "0", "0", "0", "0", "False"});
    run();
    EXPECT_EQ(output(1), picture);
}

TEST_P(SizeRun, TheAngleOfTheSheetMayChangeBetweenTwoPictures) {
    addPicture(30, 20);
    addPicture(30, 20);
    addRow(rotate, {"45", "0", "0", "0", "0", "False"});
    // One moment for each picture and one before its row.
    platform.onGiveWay = {nullptr, nullptr, [this] { batch.sbDegrees = 90; }};
    run();
    expectOutputSize(1, 30, 20);
    expectOutputSize(2, 20, 30);
}

TEST_P(SizeRun, AResizeToNothingSavesABlackPictureOfTheOldSize) {
    addPicture(40, 30);
    addRow(resize, {"0", "9", "1", "0", "0", "False"});
    run();
    EXPECT_EQ(output(1), PixelBuffer(40, 30));
}

TEST_P(SizeRun, AResizeToANegativeSizeSavesThePictureAsItWas) {
    const PixelBuffer picture = addPicture(40, 30);
    addRow(resize, {"-20", "9", "1", "0", "0", "False"});
    run();
    EXPECT_EQ(output(1), picture);
}

TEST_P(SizeRun, AResizeBeyondAnyMemorySavesNothingAndTheNextPictureIsAsGoodAsAny) {
    addPicture(1, 60000);
    const PixelBuffer second = addPicture(32767, 2);
    addRow(resize, {"32767", "0", "0", "0", "0", "True"});
    batch.LSelectedFunctions.clear();  // the sample at that width would be there, and huge
    run();
    ASSERT_EQ(batch.report.entries().size(), 2U);
    EXPECT_EQ(batch.report.entries()[0].status, Status::failed);
    EXPECT_EQ(batch.report.entries()[0].error, "too-large");
    EXPECT_FALSE(fs::exists(out + "/Sample1.bmp"));
    EXPECT_EQ(batch.report.entries()[1].status, Status::saved);
    EXPECT_EQ(output(2), second);
    EXPECT_TRUE(platform.boxes.empty());
}

TEST_P(SizeRun, TheReportTellsTheSizeAsRead) {
    addPicture(40, 30);
    addRow(resize, {"5", "6", "0", "0", "0", "False"});
    run();
    ASSERT_EQ(batch.report.entries().size(), 1U);
    EXPECT_EQ(batch.report.entries()[0].width, 40);
    EXPECT_EQ(batch.report.entries()[0].height, 30);
}

TEST_P(SizeRun, EveryRouteSavesTheNewSize) {
    addPicture(40, 30);
    addRow(resize, {"26", "14", "1", "0", "0", "False"});
    for (const auto& [row, extension] :
         {std::pair{0, "gif"}, {6, "jpg"}, {9, "png"}, {12, "ppm"}}) {
        batch.cboFormat.index = row;
        run();
        const std::string path = out + "/Sample1." + extension;
        PictureHolder saved;
        if (extension == std::string("gif"))
            saved.setPicture(LoadPicture(path, extension).bitmap);
        else
            saved.setPicture(LoadImageFile(batch.format, path, extension).value());
        EXPECT_EQ(saved.width(), 26) << extension;
        EXPECT_EQ(saved.height(), 14) << extension;
    }
}

TEST_P(SizeRun, AnUnreadableFileGetsWhatItsWayToRunGivesIt) {
    addPicture(40, 20);
    addFile("gone.ppm");
    addRow(rotate);
    batch.sbDegrees = 90;
    run();
    expectOutputSize(1, 20, 40);
    // In the window the picture before it, as its chain left it, is turned once more.
    if (GetParam() == Way::window)
        expectOutputSize(2, 40, 20);
    else
        EXPECT_FALSE(fs::exists(out + "/Sample2.bmp"));
}

class WindowRun : public SizeRun {};
INSTANTIATE_TEST_SUITE_P(Ways, WindowRun, testing::Values(Way::window),
                         [](const auto&) { return "Window"; });

TEST_P(WindowRun, AfterwardsThePreviewIsAsItWasAtItsOwnSize) {
    batch.sheetReady = true;
    addPicture(40, 30);
    addRow(resize, {"150", "100", "1", "0", "0", "False"});
    addRow(negative);
    batch.RebuildChain();
    const Bitmap before = batch.iDst.drawn();
    run();
    expectOutputSize(1, 150, 100);
    EXPECT_EQ(batch.iDst.drawn(), before);
    EXPECT_EQ(batch.iDst.width(), 200);
    EXPECT_EQ(batch.iDst.height(), 174);
    EXPECT_EQ(batch.workBits, inverted(resampled(sample, 150, 100)));
    EXPECT_EQ(batch.originalBits, sample);
}

TEST_P(WindowRun, AfterwardsASizeRowThatLeftTheChainLeavesNoTrace) {
    addPicture(40, 30);
    addRow(resize, {"150", "100", "1", "0", "0", "False"});
    batch.LSelectedFunctions.clear();
    run();
    expectOutputSize(1, 150, 100);
    expectResult(sample);
    EXPECT_EQ(batch.iDst.drawn().pixels(), sample);
    EXPECT_EQ(batch.iSrc.width(), 200);
    EXPECT_EQ(batch.workBitmapInfo, (BitmapInfo{204, 178}));
    EXPECT_EQ(batch.workRegion.RegionMain()->box(), (Rect{0, 0, 200, 174}));
}

}  // namespace
}  // namespace tessarine::tests
