#include <cerrno>

#include <FreeImage.h>
#include <gmock/gmock.h>

#include "sample_files.h"

namespace tessarine::tests {
namespace {

using testing::ElementsAre;

Bitmap twoPixels(Pixel left, Pixel right) {
    Bitmap bitmap(2, 1);
    bitmap.writableRow(0)[0] = left;
    bitmap.writableRow(0)[1] = right;
    return bitmap;
}

/// A dib that lives as long as the test needs it.
class Dib {
  public:
    explicit Dib(FIBITMAP* dib) : dib_(dib) {}
    ~Dib() { FreeImage_Unload(dib_); }
    Dib(const Dib&) = delete;
    Dib& operator=(const Dib&) = delete;
    FIBITMAP* get() const { return dib_; }

  private:
    FIBITMAP* dib_;
};

class Bridges : public testing::Test {
  protected:
    mFormat format;
    std::optional<Bitmap> none;
};

TEST_F(Bridges, ABitmapFromNoDibLeavesItsText) {
    std::optional<Bitmap> bitmap = Bitmap(1, 1);
    EXPECT_FALSE(format.FreeImage_BMP_From_DIB(nullptr, bitmap));
    EXPECT_FALSE(bitmap) << "the bitmap that was there is deleted first";
    EXPECT_EQ(format.lastFormatError, "[FreeImage_BMP_From_DIB] No DIB specified to convert");
}

TEST_F(Bridges, ADibWithoutPixelsFailsAtItsBits) {
    const ScratchFolder folder;
    const std::string path = folder / "header.jpg";
    const Dib whole(FreeImage_Allocate(2, 2, 24));
    ASSERT_TRUE(FreeImage_Save(FIF_JPEG, whole.get(), path.c_str(), 0));
    const Dib dib(FreeImage_Load(FIF_JPEG, path.c_str(), FIF_LOAD_NOPIXELS));
    ASSERT_NE(dib.get(), nullptr);
    EXPECT_FALSE(format.FreeImage_BMP_From_DIB(dib.get(), none));
    EXPECT_EQ(format.lastFormatError,
              "[FreeImage_BMP_From_DIB] FreeImage_GetBits failed to get the DIB's bits");
}

TEST_F(Bridges, ADibThatHoldsNoPictureFailsWithTheErrorNumber) {
    const Dib dib(FreeImage_AllocateT(FIT_COMPLEX, 2, 2, 128));
    EXPECT_FALSE(format.FreeImage_BMP_From_DIB(dib.get(), none));
    EXPECT_EQ(format.lastFormatError,
              "[FreeImage_BMP_From_DIB] CreateDIBitmap failed to create the BITMAP from the DIB "
              "reporting error code " +
                  std::to_string(ENOMEM));
}

TEST_F(Bridges, DibsOfAllDepthsBecomeTheirColours) {
    for (const int depth : {1, 4, 8}) {
        const Dib dib(FreeImage_Allocate(2, 1, depth));
        RGBQUAD* palette = FreeImage_GetPalette(dib.get());
        palette[0] = {0, 0, 255, 0};
        palette[1] = {255, 0, 0, 0};
        BYTE index = 1;
        FreeImage_SetPixelIndex(dib.get(), 1, 0, &index);
        std::optional<Bitmap> bitmap;
        ASSERT_TRUE(format.FreeImage_BMP_From_DIB(dib.get(), bitmap)) << depth;
        EXPECT_THAT(coloursOf(*bitmap), ElementsAre(red, blue)) << depth;
    }
    for (const int depth : {24, 32}) {
        const Dib dib(FreeImage_Allocate(1, 2, depth));
        RGBQUAD below{255, 0, 0, 77};
        FreeImage_SetPixelColor(dib.get(), 0, 0, &below);
        std::optional<Bitmap> bitmap;
        ASSERT_TRUE(format.FreeImage_BMP_From_DIB(dib.get(), bitmap)) << depth;
        EXPECT_THAT(coloursOf(*bitmap), ElementsAre(black, blue)) << depth;
        EXPECT_EQ(bitmap->row(1)[0].fourth, 0);
        EXPECT_EQ(format.lastFormatError, "");
    }
}

TEST_F(Bridges, WideSamplesAreTakenToTheNearestOfEightBits) {
    const Dib grey(FreeImage_AllocateT(FIT_UINT16, 3, 1, 16));
    auto* samples = reinterpret_cast<WORD*>(FreeImage_GetScanLine(grey.get(), 0));
    samples[0] = 0x4040;
    samples[1] = 0x40C0;
    samples[2] = 0x40C1;
    std::optional<Bitmap> bitmap;
    ASSERT_TRUE(format.FreeImage_BMP_From_DIB(grey.get(), bitmap));
    EXPECT_THAT(coloursOf(*bitmap), ElementsAre(0x404040u, 0x404040u, 0x414141u));

    const Dib colour(FreeImage_AllocateT(FIT_RGBA16, 1, 1, 64));
    *reinterpret_cast<FIRGBA16*>(FreeImage_GetScanLine(colour.get(), 0)) = {0xFFFF, 0x8080, 0, 9};
    ASSERT_TRUE(format.FreeImage_BMP_From_DIB(colour.get(), bitmap));
    EXPECT_THAT(coloursOf(*bitmap), ElementsAre(0xFF8000u));
}

TEST_F(Bridges, FloatingSamplesGoFromZeroToOne) {
    const Dib colour(FreeImage_AllocateT(FIT_RGBF, 1, 1, 96));
    *reinterpret_cast<FIRGBF*>(FreeImage_GetScanLine(colour.get(), 0)) = {0.5F, 2.0F, -1.0F};
    std::optional<Bitmap> bitmap;
    ASSERT_TRUE(format.FreeImage_BMP_From_DIB(colour.get(), bitmap));
    EXPECT_THAT(coloursOf(*bitmap), ElementsAre(0x80FF00u));

    const Dib heights(FreeImage_AllocateT(FIT_FLOAT, 3, 1, 32));
    auto* row = reinterpret_cast<float*>(FreeImage_GetScanLine(heights.get(), 0));
    row[0] = -100;
    row[1] = 100;
    row[2] = 0;
    ASSERT_TRUE(format.FreeImage_BMP_From_DIB(heights.get(), bitmap));
    EXPECT_THAT(coloursOf(*bitmap), ElementsAre(black, white, 0x808080u));
}

TEST_F(Bridges, ADibOfA24BitBitmapHas32Bits) {
    FIBITMAP* dib = FreeImage_Allocate(1, 1, 8);
    const std::optional<Bitmap> bitmap = twoPixels({1, 2, 3, 0}, {4, 5, 6, 0});
    ASSERT_TRUE(format.FreeImage_DIB_From_BMP(bitmap, dib));
    const Dib owner(dib);
    EXPECT_EQ(FreeImage_GetBPP(dib), 32u);
    EXPECT_EQ(FreeImage_GetWidth(dib), 2u);
    RGBQUAD pixel;
    FreeImage_GetPixelColor(dib, 1, 0, &pixel);
    EXPECT_EQ(pixel.rgbBlue, 4);
    EXPECT_EQ(pixel.rgbGreen, 5);
    EXPECT_EQ(pixel.rgbRed, 6);
    std::optional<Bitmap> back;
    ASSERT_TRUE(format.FreeImage_BMP_From_DIB(dib, back));
    EXPECT_EQ(*back, *bitmap);
}

TEST_F(Bridges, ADibOfNoBitmapLeavesItsText) {
    FIBITMAP* dib = FreeImage_Allocate(1, 1, 8);
    EXPECT_FALSE(format.FreeImage_DIB_From_BMP(none, dib));
    EXPECT_EQ(dib, nullptr) << "the image that was there is unloaded first";
    EXPECT_EQ(format.lastFormatError, "[FreeImage_DIB_From_BMP] No bitmap specified to convert");
    EXPECT_FALSE(format.FreeImage_DIB_From_BMP(Bitmap(), dib));
    EXPECT_EQ(format.lastFormatError,
              "[FreeImage_DIB_From_BMP] GetObjectAPI failed with error "
              "code " +
                  std::to_string(EINVAL));
    EXPECT_FALSE(format.FreeImage_DIB_From_BMP(Bitmap(0, 0), dib));
    EXPECT_EQ(format.lastFormatError,
              "[FreeImage_DIB_From_BMP] FreeImage_Allocate failed to create a DIB to work with");
}

TEST_F(Bridges, RenderingTellsWhatIsMissingInTurn) {
    PictureHolder holder;
    EXPECT_FALSE(format.FreeImage_RenderBitmap(none, &holder, 0, 0, -1, -1, false));
    EXPECT_EQ(format.lastFormatError, "[FreeImage_RenderBitmap] No bitmap specified to render");
    EXPECT_FALSE(format.FreeImage_RenderBitmap(Bitmap(), &holder, 0, 0, -1, -1, false));
    EXPECT_EQ(format.lastFormatError,
              "[FreeImage_RenderBitmap] Handle specified is not a valid BITMAP");
    EXPECT_FALSE(format.FreeImage_RenderBitmap(Bitmap(1, 1), nullptr, 0, 0, -1, -1, false));
    EXPECT_EQ(format.lastFormatError, "[FreeImage_RenderBitmap] DC specified is not valid");
    EXPECT_FALSE(format.FreeImage_RenderBitmap(Bitmap(0, 1), &holder, 0, 0, -1, -1, false));
    EXPECT_EQ(format.lastFormatError, "[FreeImage_RenderBitmap] Could not get bitmap's width");
    EXPECT_FALSE(format.FreeImage_RenderBitmap(Bitmap(1, 0), &holder, 0, 0, -1, -1, false));
    EXPECT_EQ(format.lastFormatError, "[FreeImage_RenderBitmap] Could not get bitmap's height");
}

TEST_F(Bridges, RenderingCopiesPlainlyOrInverted) {
    PictureHolder holder;
    holder.setSize(3, 1);
    const Bitmap bitmap = twoPixels({0, 0, 255, 0}, {255, 0, 0, 0});
    ASSERT_TRUE(format.FreeImage_RenderBitmap(bitmap, &holder, 1, 0, -1, -1, false));
    EXPECT_THAT(coloursOf(holder.drawn()), ElementsAre(black, red, blue));
    ASSERT_TRUE(format.FreeImage_RenderBitmap(bitmap, &holder, 0, 0, 1, 1, true));
    EXPECT_THAT(coloursOf(holder.drawn()), ElementsAre(0x00FFFFu, red, blue));
    EXPECT_EQ(format.lastFormatError, "");
}

TEST_F(Bridges, SizesOfNoBitmapAreZeroWithATextOfTheirOwn) {
    EXPECT_EQ(format.FreeImage_GetBitmapWidth(none), 0);
    EXPECT_EQ(format.lastFormatError,
              "[FreeImage_GetBitmapWidth] No bitmap specified to get the info for");
    EXPECT_EQ(format.FreeImage_GetBitmapHeight(none), 0);
    EXPECT_EQ(format.lastFormatError,
              "[FreeImage_GetBitmapHeight] No bitmap specified to get the info for");
    EXPECT_EQ(format.FreeImage_GetBitmapWidth(Bitmap()), 0);
    EXPECT_EQ(format.lastFormatError,
              "[FreeImage_GetBitmapWidth] Handle specified is not a valid BITMAP");
    EXPECT_EQ(format.FreeImage_GetBitmapHeight(Bitmap()), 0);
    EXPECT_EQ(format.lastFormatError,
              "[FreeImage_GetBitmapHeight] Handle specified is not a valid BITMAP");
    EXPECT_EQ(format.FreeImage_GetBitmapWidth(Bitmap(7, 3)), 7);
    EXPECT_EQ(format.FreeImage_GetBitmapHeight(Bitmap(7, 3)), 3);
    EXPECT_EQ(format.lastFormatError, "");
}

TEST_F(Bridges, ASecondFailureDoesNotReplaceTheFirstText) {
    format.SetFormatError("first", true);
    format.SetFormatError("second", true);
    EXPECT_EQ(format.lastFormatError, "first");
    format.SetFormatError("third", false);
    EXPECT_EQ(format.lastFormatError, "third");
}

struct Fit {
    int32_t srcW, srcH, maxW, maxH, outW, outH;
};

TEST(FitInside, KeepsTheShapeAndNeverEnlarges) {
    const Fit fits[] = {
        {100, 50, 200, 200, 100, 50},  // smaller: as it is
        {200, 200, 200, 200, 200, 200}, {400, 200, 200, 200, 200, 100},
        {200, 400, 200, 200, 100, 200}, {400, 400, 200, 200, 200, 200},  // equal ratios
        {400, 1, 200, 200, 200, 0},  // half a pixel, to the even number
        {400, 3, 200, 200, 200, 2},  // one and a half
        {1, 400, 200, 200, 0, 200},     {1000, 10, 300, 5, 300, 3},
    };
    for (const Fit& fit : fits) {
        int32_t w = -1;
        int32_t h = -1;
        FitInside(fit.srcW, fit.srcH, fit.maxW, fit.maxH, w, h);
        EXPECT_EQ(w, fit.outW) << fit.srcW << "x" << fit.srcH;
        EXPECT_EQ(h, fit.outH) << fit.srcW << "x" << fit.srcH;
    }
}

}  // namespace
}  // namespace tessarine::tests
