#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "deformation_twin.h"
#include "hue_twin.h"
#include "neighbourhood_twin.h"
#include "pixels/bit_filter.h"
#include "recipes_twin.h"
#include "support/comparison.h"
#include "support/pictures.h"
#include "tone_twin.h"

// The slow twins again, on pictures larger than the random ones: rows longer than the stretches
// that filters work on at once, and more pixels than a table of all brightnesses costs.

namespace tessarine::tests {
namespace {

/// One engine for one picture and its whole region.
class LargePicture {
  public:
    explicit LargePicture(PixelBuffer picture)
        : picture_(std::move(picture)), region_(wholeRegion(picture_)) {
        filter_.timeGetTime = [] { return 0U; };
        filter_.Bits(picture_);
        filter_.BitsRegion(region_);
    }
    template <class... Parameters, class... Arguments>
    void compare(const std::string& name, PixelBuffer (cBitFilter::*member)(Parameters...),
                 PixelBuffer (*twin)(const PixelBuffer&, const Region&, Parameters...),
                 Arguments... arguments) {
        EXPECT_TRUE(sameBuffer("large-" + name, (filter_.*member)(arguments...),
                               twin(picture_, *region_, arguments...)))
            << name;
    }

  private:
    PixelBuffer picture_;
    RegionHandle region_;
    cBitFilter filter_;
};

/// Every 23rd of all colours: of each channel all levels.
PixelBuffer manyColours() {
    PixelBuffer picture(1024, 713);
    Pixel* block = picture.writableBlock();
    uint32_t colour = 0;
    for (int32_t y = 0; y < picture.height(); ++y)
        for (int32_t x = 0; x < picture.width(); ++x, colour += 23)
            block[picture.offsetOfRow(y) + x] = {
                static_cast<uint8_t>(colour), static_cast<uint8_t>(colour >> 8),
                static_cast<uint8_t>(colour >> 16), static_cast<uint8_t>(x)};
    return picture;
}

TEST(LargePictureTwin, NeighbourhoodsAgreeOnLongRows) {
    LargePicture picture(randomBuffer(1301, 3, 1));
    picture.compare("CONTOUR", &cBitFilter::CONTOUR, twin::contour, 120, 0x405060);
    picture.compare("SKETCH", &cBitFilter::SKETCH, twin::sketch, 260, false, 0x405060);
    picture.compare("EMBOSS", &cBitFilter::EMBOSS, twin::emboss, 7);
    picture.compare("Engrave", &cBitFilter::Engrave, twin::engrave, 13);
    picture.compare("SHARPEN", &cBitFilter::SHARPEN, twin::sharpen, 60);
    picture.compare("DILATE", &cBitFilter::DILATE, twin::dilate);
}

TEST(LargePictureTwin, EdgesAgreeForAllThresholdsOfAnEvenPicture) {
    PixelBuffer even(600, 2);
    Pixel* block = even.writableBlock();
    for (size_t i = 0; i < even.pixelCount(); ++i)
        block[i] = {100, 150, 200, 9};
    LargePicture picture(even);
    for (const int32_t factor : {-1, 0, 1, 254, 255, 256, 257, 2147483647}) {
        picture.compare("CONTOUR", &cBitFilter::CONTOUR, twin::contour, factor, 0x405060);
        picture.compare("SKETCH", &cBitFilter::SKETCH, twin::sketch, factor, true, 0x405060);
    }
}

TEST(LargePictureTwin, ReplacementsAgreeOnLongRows) {
    LargePicture picture(randomBuffer(1301, 3, 2));
    for (const int32_t tolerance : {0, 20, 60, 200}) {
        picture.compare("REPLACE", &cBitFilter::REPLACE, twin::replaceColour, 0x405060, 0x10ff20,
                        tolerance);
        picture.compare("ReplaceHS", &cBitFilter::ReplaceHS, twin::replaceHs, 0x405060, 0x10ff20,
                        tolerance, 30, tolerance);
        picture.compare("ReplaceL", &cBitFilter::ReplaceL, twin::replaceL, 0x405060, 0x10ff20, 20,
                        tolerance);
        picture.compare("Shift", &cBitFilter::Shift, twin::deformation::shift, 0x405060, -70,
                        tolerance);
    }
}

TEST(LargePictureTwin, GreyRotationAgreesOfColoursNearAndFarFromTheMiddleOfTwoLevels) {
    LargePicture picture(manyColours());
    // Without a step all colours lie at one height; for 0 that is in the middle of two levels.
    for (const int32_t step : {-40, 0, 1, 10, 25, 2000, 100000000})
        for (const int32_t offset : {0, 33})
            picture.compare("RotateL", &cBitFilter::RotateL, twin::rotateL, offset, step);
}

TEST(LargePictureTwin, HuesAgreeForManyColours) {
    LargePicture picture(manyColours());
    for (const int32_t saturation : {0, 70, 100, 150, 200000})
        for (const int32_t offset : {-50, 0, 25, 100, 20000})
            picture.compare("RotateH", &cBitFilter::RotateH, twin::rotateH, offset, saturation);
}

TEST(LargePictureTwin, TonesAgreeForManyColours) {
    LargePicture picture(manyColours());
    picture.compare("Equalize", &cBitFilter::Equalize, twin::equalize);
    picture.compare("GreyScale", &cBitFilter::GreyScale, twin::greyScale);
    picture.compare("OLDPHOTO", &cBitFilter::OLDPHOTO, twin::oldPhoto);
    for (const int32_t factor : {-150, -33, 0, 17, 200})
        picture.compare("SATURATION", &cBitFilter::SATURATION, twin::saturation, factor);
    for (const int32_t factor : {-1, 0, 127, 254, 255})
        picture.compare("Threshold", &cBitFilter::Threshold, twin::threshold, factor);
}

TEST(LargePictureTwin, RecipesAgreeForAllPairsOfLevels) {
    for (const uint8_t third : {uint8_t{0}, uint8_t{77}, uint8_t{255}})
        for (int channel = 0; channel < 3; ++channel) {
            PixelBuffer pairs(256, 256);
            Pixel* block = pairs.writableBlock();
            for (int32_t y = 0; y < 256; ++y)
                for (int32_t x = 0; x < 256; ++x) {
                    Pixel& p = block[pairs.offsetOfRow(y) + x];
                    twin::channel(p, channel) = third;
                    twin::channel(p, (channel + 1) % 3) = static_cast<uint8_t>(x);
                    twin::channel(p, (channel + 2) % 3) = static_cast<uint8_t>(y);
                }
            LargePicture picture(pairs);
            for (int16_t effect = 0; effect < 12; ++effect)
                picture.compare("ClassyColors", &cBitFilter::ClassyColors, twin::classyColors,
                                effect);
        }
}

}  // namespace
}  // namespace tessarine::tests
