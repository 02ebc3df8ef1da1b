#include "imagefiles/gif_encoder.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>

#include <gtest/gtest.h>
#include <libimagequant.h>

#include "imagefiles/colour_reduction.h"
#include "imagefiles/judges.h"
#include "pixels/failures.h"

extern "C" void omp_set_num_threads(int count);

namespace tessarine {
namespace {

using tests::readAll;
using tests::readBy;
using tests::ScratchFolder;

std::string encode(const Bitmap& picture, int32_t bits, const std::string& path) {
    OutputFile file;
    EXPECT_TRUE(file.create(path));
    writeGif(picture, bits, file);
    EXPECT_TRUE(file.finish());
    return readAll(path);
}

Bitmap colourful(int32_t width, int32_t height) {
    return Bitmap(tests::randomBuffer(width, height, 11));
}

/// A picture of exactly `count` colours.
Bitmap ofColours(int32_t count, int32_t width, int32_t height) {
    return Bitmap(tests::drawBuffer(width, height, [&](int32_t x, int32_t y) {
        const int32_t i = (x + y * width) % count;
        return Pixel{static_cast<uint8_t>(i * 7), static_cast<uint8_t>(i),
                     static_cast<uint8_t>(255 - i * 3), 0};
    }));
}

/// Even colours from corner to corner, different in each channel.
Bitmap gradient(int32_t width, int32_t height) {
    return Bitmap(tests::drawBuffer(width, height, [&](int32_t x, int32_t y) {
        return Pixel{static_cast<uint8_t>(90 + 80 * (x + y) / (width + height)),
                     static_cast<uint8_t>(60 + 150 * y / height),
                     static_cast<uint8_t>(40 + 160 * x / width), 0};
    }));
}

Bitmap decoded(const IndexedPicture& reduced, int32_t width, int32_t height) {
    return Bitmap(tests::drawBuffer(width, height, [&](int32_t x, int32_t y) {
        return reduced.colours[reduced.indices[static_cast<size_t>(y) * width + x]];
    }));
}

double psnr(const Bitmap& a, const Bitmap& b) {
    double sum = 0;
    for (int32_t y = 0; y < a.height(); ++y)
        for (int32_t x = 0; x < a.width(); ++x) {
            const Pixel& p = a.row(y)[x];
            const Pixel& q = b.row(y)[x];
            for (const int d : {p.red - q.red, p.green - q.green, p.blue - q.blue})
                sum += d * d;
        }
    const double mean = sum / 3 / a.width() / a.height();
    return 10 * std::log10(255.0 * 255.0 / mean);
}

/// libimagequant by itself, with its own speed.
Bitmap byLibimagequant(const Bitmap& picture, int colours, float dithering) {
    std::vector<liq_color> pixels;
    for (int32_t y = 0; y < picture.height(); ++y)
        for (int32_t x = 0; x < picture.width(); ++x) {
            const Pixel& p = picture.row(y)[x];
            pixels.push_back({p.red, p.green, p.blue, 255});
        }
    liq_attr* options = liq_attr_create();
    liq_set_max_colors(options, colours);
    liq_image* image =
        liq_image_create_rgba(options, pixels.data(), picture.width(), picture.height(), 0);
    liq_result* result = nullptr;
    EXPECT_EQ(liq_image_quantize(image, options, &result), LIQ_OK);
    liq_set_dithering_level(result, dithering);
    IndexedPicture reduced;
    reduced.indices.resize(pixels.size());
    liq_write_remapped_image(result, image, reduced.indices.data(), reduced.indices.size());
    const liq_palette* palette = liq_get_palette(result);
    for (unsigned int i = 0; i < palette->count; ++i)
        reduced.colours.push_back(
            {palette->entries[i].b, palette->entries[i].g, palette->entries[i].r, 0});
    liq_result_destroy(result);
    liq_image_destroy(image);
    liq_attr_destroy(options);
    return decoded(reduced, picture.width(), picture.height());
}

TEST(GifEncoder, WritesAGlobalTableOfExactlyTheColoursAsked) {
    const ScratchFolder folder;
    for (const int32_t bits : {6, 7, 8})
        for (const Bitmap& picture : {colourful(70, 50), ofColours(3, 5, 5)}) {
            const std::string bytes = encode(picture, bits, folder / "a.gif");
            ASSERT_GT(bytes.size(), 20U);
            EXPECT_EQ(bytes.substr(0, 3), "GIF");
            const auto packed = static_cast<uint8_t>(bytes[10]);
            EXPECT_EQ(packed & 0x80, 0x80);
            EXPECT_EQ(packed & 7, bits - 1);
            const size_t frame = 13 + (size_t{3} << bits);
            ASSERT_EQ(bytes[frame], ',');
            EXPECT_EQ(bytes[frame + 9] & 0xC0, 0) << "a local table, or interlaced";
            EXPECT_EQ(bytes.back(), ';');
        }
}

TEST(GifEncoder, UsesNoMoreColoursThanAskedAndAllOfThemWhereThereAreMore) {
    for (const int32_t bits : {6, 7, 8}) {
        const IndexedPicture reduced = reduceColours(colourful(70, 50), 1 << bits);
        EXPECT_EQ(reduced.colours.size(), size_t{1} << bits);
        for (const uint8_t index : reduced.indices)
            ASSERT_LT(index, reduced.colours.size());
    }
}

TEST(GifEncoder, UsesUpTheTableOnAGradientOfFewLevels) {
    const Bitmap grey(tests::drawBuffer(256, 4, [](int32_t x, int32_t) {
        return Pixel{static_cast<uint8_t>(x), static_cast<uint8_t>(x), static_cast<uint8_t>(x), 0};
    }));
    EXPECT_EQ(reduceColours(grey, 64).colours.size(), 64U);
    EXPECT_EQ(reduceColours(grey, 128).colours.size(), 128U);
}

TEST(GifEncoder, KeepsEveryPixelOfAPictureWithFewColours) {
    if (!tests::isInstalled("giftopnm")) GTEST_SKIP() << "netpbm is not installed";
    const ScratchFolder folder;
    for (const int32_t bits : {6, 7, 8})
        for (const int32_t colours : {1, 2, 17, (1 << bits) - 1, 1 << bits}) {
            const Bitmap picture = ofColours(colours, 61, 37);
            encode(picture, bits, folder / "a.gif");
            const auto read = readBy("giftopnm \"$1\"", folder / "a.gif");
            ASSERT_TRUE(read);
            EXPECT_EQ(tests::firstDifference(read->pixels(), picture.pixels()), "")
                << colours << " colours of " << (1 << bits);
        }
}

TEST(GifEncoder, OtherProgramsReadThePixelsThatWereChosen) {
    const ScratchFolder folder;
    bool anyReader = false;
    for (const std::string reader : {"giftopnm \"$1\"", "convert \"gif:$1\" -depth 8 ppm:-"}) {
        if (!tests::isInstalled(reader)) continue;
        anyReader = true;
        for (const int32_t bits : {6, 7, 8})
            for (const auto& [width, height] :
                 {std::pair{1, 1}, std::pair{1, 300}, std::pair{300, 1}, std::pair{71, 51},
                  std::pair{200, 150}}) {
                const Bitmap picture = colourful(width, height);
                encode(picture, bits, folder / "a.gif");
                const auto read = readBy(reader, folder / "a.gif");
                ASSERT_TRUE(read) << reader << width << "x" << height;
                const Bitmap expected = decoded(reduceColours(picture, 1 << bits), width, height);
                EXPECT_EQ(tests::firstDifference(read->pixels(), expected.pixels()), "")
                    << reader << width << "x" << height;
            }
    }
    if (!anyReader) GTEST_SKIP() << "neither netpbm nor ImageMagick is installed";
}

TEST(GifEncoder, WritesTheLongestSidesThatGifHolds) {
    const ScratchFolder folder;
    for (const auto& [width, height] : {std::pair{65535, 2}, std::pair{2, 65535}}) {
        const std::string bytes = encode(ofColours(5, width, height), 6, folder / "a.gif");
        EXPECT_EQ(static_cast<uint8_t>(bytes[6]) | static_cast<uint8_t>(bytes[7]) << 8, width);
        EXPECT_EQ(static_cast<uint8_t>(bytes[8]) | static_cast<uint8_t>(bytes[9]) << 8, height);
        if (!tests::isInstalled("giftopnm")) continue;
        const auto read = readBy("giftopnm \"$1\"", folder / "a.gif");
        ASSERT_TRUE(read);
        EXPECT_EQ(tests::firstDifference(read->pixels(), ofColours(5, width, height).pixels()), "");
    }
}

TEST(GifEncoder, RefusesSidesThatGifDoesNotHoldAndPicturesWithoutPixels) {
    const ScratchFolder folder;
    OutputFile file;
    ASSERT_TRUE(file.create(folder / "a.gif"));
    EXPECT_THROW(writeGif(Bitmap(65536, 1), 8, file), StatementFailed);
    EXPECT_THROW(writeGif(Bitmap(1, 65536), 8, file), StatementFailed);
    EXPECT_THROW(writeGif(Bitmap(0, 0), 8, file), StatementFailed);
    EXPECT_THROW(writeGif(Bitmap(), 8, file), StatementFailed);
}

TEST(GifEncoder, ResultsDoNotDependOnTheNumberOfThreads) {
    const ScratchFolder folder;
    const Bitmap picture = colourful(300, 200);
    std::set<std::string> results;
    for (const int threads : {1, 2, 3, 8}) {
        omp_set_num_threads(threads);
        results.insert(encode(picture, 8, folder / "a.gif"));
    }
    EXPECT_EQ(results.size(), 1U);
}

TEST(GifEncoder, ASmoothGradientShowsNoBands) {
    const Bitmap picture = gradient(512, 384);
    for (const int32_t colours : {64, 128, 256}) {
        const Bitmap result = decoded(reduceColours(picture, colours), 512, 384);
        // Bands are what is left after the eye has averaged: means of 16 by 16 pixels stay close
        // to the picture's own.
        double worst = 0;
        for (int32_t top = 0; top + 16 <= 384; top += 16)
            for (int32_t left = 0; left + 16 <= 512; left += 16) {
                double difference[3] = {};
                for (int32_t y = top; y < top + 16; ++y)
                    for (int32_t x = left; x < left + 16; ++x) {
                        difference[0] += picture.row(y)[x].red - result.row(y)[x].red;
                        difference[1] += picture.row(y)[x].green - result.row(y)[x].green;
                        difference[2] += picture.row(y)[x].blue - result.row(y)[x].blue;
                    }
                // The outermost colours are means: the corners cannot be reached by mixing.
                if (top < 48 || left < 48 || top >= 320 || left >= 448) continue;
                for (const double d : difference)
                    worst = std::max(worst, std::abs(d) / 256);
            }
        EXPECT_LT(worst, 2.0) << colours << " colours";
    }
}

TEST(GifEncoder, StaysWithinHalfADecibelOfLibimagequantOnPhotographs) {
    const std::filesystem::path photos = tests::sharedFolder() / "corpus" / "photos";
    if (!std::filesystem::exists(photos)) GTEST_SKIP() << "no photographs lie beside the project";
    if (!tests::isInstalled("jpegtopnm")) GTEST_SKIP() << "netpbm is not installed";
    // A corner is enough to tell, and takes a tenth of the time.
    const bool whole = std::getenv("TESSARINE_WHOLE_PHOTOGRAPHS") != nullptr;
    const std::string cut = whole
                                ? "jpegtopnm \"$1\""
                                : "jpegtopnm \"$1\" | pamcut -left 0 -top 0 -width 900 -height 700";
    int count = 0;
    for (const auto& photo : std::filesystem::directory_iterator(photos)) {
        const auto picture = readBy(cut, photo.path().string());
        if (!picture) continue;
        ++count;
        for (const int32_t colours : {64, 128, 256}) {
            const Bitmap ours =
                decoded(reduceColours(*picture, colours), picture->width(), picture->height());
            const double own = psnr(ours, *picture);
            // Undithered is the library's default, dithered what its users see most.
            const double plain = psnr(byLibimagequant(*picture, colours, 0), *picture);
            const double dithered = psnr(byLibimagequant(*picture, colours, 1), *picture);
            EXPECT_GE(own, plain - 0.5) << photo.path().filename() << " " << colours;
            EXPECT_GE(own, dithered - 0.5) << photo.path().filename() << " " << colours;
            std::printf("%-34s %3d colours: %.2f dB; libimagequant %.2f, dithered %.2f\n",
                        photo.path().filename().c_str(), colours, own, plain, dithered);
        }
    }
    EXPECT_GT(count, 0);
}

}  // namespace
}  // namespace tessarine
