#include <filesystem>

#include <gtest/gtest.h>

#include "batch/batch.h"
#include "batch/scaled_picture.h"
#include "support/files.h"
#include "support/paths.h"
#include "support/pictures.h"
#include "support/recorder.h"

namespace tessarine {
namespace {

using tests::drawBuffer;
using tests::firstDifference;
using tests::Recorder;
using tests::ScratchFolder;
using tests::writeAll;
using tests::writePixmap;

/// A GIF of 3 by 2 pixels.
const std::string smallGif(
    "GIF89a\x03\x00\x02\x00\x80\x00\x00\xff\x00\x00\x00\x00\xff"
    ",\x00\x00\x00\x00\x03\x00\x02\x00\x00\x02\x03\x04\x82\x05\x00;",
    36);

class ImagePreview : public testing::Test {
  protected:
    ImagePreview() {
        batch.PreviewWidth = 210;
        batch.PreviewHeight = 110;
    }
    std::string picture(const std::string& name, int32_t width, int32_t height) {
        writePixmap(scratch / name, drawBuffer(width, height, [](int32_t x, int32_t y) {
                        return Pixel{static_cast<uint8_t>(x), static_cast<uint8_t>(y), 200, 0};
                    }));
        return scratch / name;
    }

    ScratchFolder scratch;
    const std::string folder = scratch.path().string();
    Recorder recorder;
    cBatch batch{recorder};
};

TEST_F(ImagePreview, AFileIsShownWithItsFigures) {
    batch.ShowImageDetails(picture("Sun.Set.PPM", 40, 30));
    EXPECT_EQ(batch.format.loadedWidth, 40);
    EXPECT_EQ(batch.format.loadedHeight, 30);
    EXPECT_EQ(batch.SB[3].text, " 40 x 30");
    EXPECT_EQ(batch.SB[3].icon, "ppm");
    EXPECT_EQ(batch.LFileName, "Sun.Set.PPM");
    EXPECT_EQ(batch.LType, "PPM");
    EXPECT_EQ(batch.LResolution, "40 x 30");
    EXPECT_EQ(batch.LLocation, folder);
    for (const char* control :
         {"SB(4)", "LFileName", "LType", "LResolution", "LLocation", "PPreview"})
        EXPECT_TRUE(recorder.hasChanged(control)) << control;
    EXPECT_TRUE(recorder.boxes.empty());
}

TEST_F(ImagePreview, ASmallPictureIsNotEnlargedAndStandsInTheMiddle) {
    batch.ShowImageDetails(picture("a.ppm", 40, 30));
    EXPECT_TRUE(batch.PPreview.visible);
    EXPECT_EQ(batch.PPreview.left, 85);
    EXPECT_EQ(batch.PPreview.top, 40);
    EXPECT_EQ(batch.PPreview.width, 40);
    EXPECT_EQ(batch.PPreview.height, 30);
    EXPECT_EQ(batch.PPreview.picture, batch.tPreview.picture());
    EXPECT_EQ(batch.tPreview.picture().row(7)[9], (Pixel{9, 7, 200, 0}));
}

TEST_F(ImagePreview, ALargePictureIsFittedWithFivePixelsAround) {
    batch.ShowImageDetails(picture("a.ppm", 800, 200));
    EXPECT_EQ(batch.PPreview.width, 200);
    EXPECT_EQ(batch.PPreview.height, 50);
    EXPECT_EQ(batch.PPreview.left, 5);
    EXPECT_EQ(batch.PPreview.top, 30);
    EXPECT_EQ(batch.PPreview.picture.width(), 200);
    EXPECT_EQ(batch.PPreview.picture.height(), 50);
}

TEST_F(ImagePreview, ADensePanelKeepsMorePixelsOfThePicture) {
    batch.previewDensity = 2;
    batch.ShowImageDetails(picture("a.ppm", 800, 200));
    EXPECT_EQ(batch.PPreview.width, 200);
    EXPECT_EQ(batch.PPreview.picture.width(), 400);
    EXPECT_EQ(batch.PPreview.picture.height(), 100);
    batch.ShowImageDetails(picture("b.ppm", 250, 50));
    EXPECT_EQ(batch.PPreview.width, 200);
    EXPECT_EQ(batch.PPreview.picture.width(), 250) << "no more than there are";
}

TEST_F(ImagePreview, ThePanelsNewSizeFitsThePictureAgain) {
    batch.ShowImageDetails(picture("a.ppm", 800, 200));
    batch.FitPreview(410, 110);
    EXPECT_EQ(batch.PPreview.width, 400);
    EXPECT_EQ(batch.PPreview.height, 100);
    batch.FitPreview(10, 110);
    EXPECT_FALSE(batch.PPreview.visible) << "no room is left";
    batch.FitPreview(30, 30);
    EXPECT_TRUE(batch.PPreview.visible);
    EXPECT_EQ(batch.PPreview.height, 5);
}

TEST_F(ImagePreview, AVeryThinPictureIsSeenAsALine) {
    batch.ShowImageDetails(picture("a.ppm", 3000, 2));
    EXPECT_TRUE(batch.PPreview.visible);
    EXPECT_EQ(batch.PPreview.width, 200);
    EXPECT_EQ(batch.PPreview.height, 1);
    EXPECT_EQ(batch.PPreview.top, 54);
    batch.ShowImageDetails(picture("b.ppm", 2, 3000));
    EXPECT_EQ(batch.PPreview.width, 1);
    EXPECT_EQ(batch.PPreview.height, 100);
}

TEST_F(ImagePreview, WithoutAPictureNothingIsShown) {
    batch.FitPreview(300, 300);
    EXPECT_FALSE(batch.PPreview.visible);
}

TEST_F(ImagePreview, AFileThatCannotBeReadLeavesTheFiguresOfTheOneBefore) {
    batch.ShowImageDetails(picture("a.ppm", 40, 30));
    writeAll(scratch / "broken.png", "no picture");
    writeAll(scratch / "broken.gif", "no picture");
    for (const char* name : {"broken.png", "broken.gif", "missing.jpg", "missing.wmf", "text"}) {
        batch.ShowImageDetails(scratch / name);
        EXPECT_FALSE(batch.PPreview.visible) << name;
        EXPECT_EQ(batch.format.loadedWidth, 40) << name;
        EXPECT_EQ(batch.format.loadedHeight, 30) << name;
        EXPECT_EQ(batch.format.loadedDepth, 24) << name;
        EXPECT_EQ(batch.LFileName, name);
        EXPECT_EQ(batch.LResolution, "40 x 30");
    }
    EXPECT_TRUE(recorder.boxes.empty());
    batch.FitPreview(300, 300);
    EXPECT_FALSE(batch.PPreview.visible) << "the picture before is gone";
}

TEST_F(ImagePreview, ThePlatformsPicturesHaveFixedDepths) {
    writeAll(scratch / "a.gif", smallGif);
    batch.ShowImageDetails(scratch / "a.gif");
    ASSERT_TRUE(batch.PPreview.visible);
    EXPECT_EQ(batch.format.loadedWidth, 3);
    EXPECT_EQ(batch.format.loadedHeight, 2);
    EXPECT_EQ(batch.format.loadedDepth, 8);
    EXPECT_EQ(batch.SB[3].text, " 3 x 2");
    EXPECT_EQ(batch.SB[3].icon, "gif");
    EXPECT_EQ(batch.LType, "GIF");
}

TEST_F(ImagePreview, AClickShowsTheOneSelectedRow) {
    picture("a.ppm", 40, 30);
    picture("b.ppm", 20, 10);
    batch.ChangeFolder(folder);
    batch.AddCheckedToBasket();
    batch.ClickFolder({1});
    EXPECT_EQ(batch.LFileName, "b.ppm");
    batch.ClickFolder({0, 1});
    EXPECT_EQ(batch.LFileName, "b.ppm") << "two are selected";
    batch.ClickFolder({});
    batch.ClickFolder({9});
    EXPECT_EQ(batch.LFileName, "b.ppm");
    batch.ClickBasket({0});
    EXPECT_EQ(batch.LFileName, "a.ppm");
    batch.ClickBasket({0, 1});
    EXPECT_EQ(batch.LFileName, "a.ppm");
    batch.ClickBasket({1});
    EXPECT_EQ(batch.LFileName, "b.ppm");
    batch.ChangeFolder(folder);
    EXPECT_EQ(batch.SB[3].text, "Selected File(s):2");
    EXPECT_EQ(batch.SB[3].icon, "") << "the whole panel is replaced";
}

TEST(ScaledPicture, EveryPixelIsTheMeanOfItsArea) {
    const auto tone = [](int32_t x, int32_t y) { return (x * 37 + y * 91 + x * y) % 256; };
    const Bitmap source(drawBuffer(23, 17, [&](int32_t x, int32_t y) {
        const int32_t t = tone(x, y);
        return Pixel{static_cast<uint8_t>(t), static_cast<uint8_t>(255 - t), 9, 0};
    }));
    for (const auto& [width, height] : {std::pair{1, 1}, {7, 17}, {23, 5}, {10, 9}, {22, 16}}) {
        const Bitmap scaled = scaledDown(source, width, height);
        ASSERT_EQ(scaled.width(), width);
        ASSERT_EQ(scaled.height(), height);
        for (int32_t y = 0; y < height; ++y)
            for (int32_t x = 0; x < width; ++x) {
                // Each source pixel counts as width * height equal points.
                double sum = 0;
                for (int32_t j = y * 17; j < (y + 1) * 17; ++j)
                    for (int32_t i = x * 23; i < (x + 1) * 23; ++i)
                        sum += tone(i / width, j / height);
                const double mean = sum / (23 * 17);
                EXPECT_NEAR(scaled.row(y)[x].blue, mean, 0.51);
                EXPECT_NEAR(scaled.row(y)[x].green, 255 - mean, 0.51);
                EXPECT_EQ(scaled.row(y)[x].red, 9);
            }
    }
}

TEST(ScaledPicture, OneColourStaysAndOtherSizesAreRefused) {
    const Bitmap white(drawBuffer(1000, 999, [](int32_t, int32_t) {
        return Pixel{255, 255, 255, 0};
    }));
    const Bitmap scaled = scaledDown(white, 333, 334);
    EXPECT_EQ(firstDifference(scaled.pixels(), drawBuffer(333, 334,
                                                          [](int32_t, int32_t) {
                                                              return Pixel{255, 255, 255, 0};
                                                          })),
              "");
    EXPECT_THROW(scaledDown(white, 0, 5), StatementFailed);
    EXPECT_THROW(scaledDown(white, 5, -1), StatementFailed);
    EXPECT_THROW(scaledDown(white, 1001, 5), StatementFailed);
    EXPECT_THROW(scaledDown(Bitmap(), 1, 1), StatementFailed);
    EXPECT_EQ(scaledDown(white, 1000, 999), white);
}

}  // namespace
}  // namespace tessarine
