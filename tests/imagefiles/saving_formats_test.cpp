// What other programs find in the files, for every row of the format table.

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "imagefiles/judges.h"

namespace tessarine {
namespace {

using tests::readAll;
using tests::readBy;
using tests::saveBy;
using tests::ScratchFolder;
using Status = SaveOutcome::Status;

struct Size {
    int32_t width;
    int32_t height;
};
constexpr Size sizes[] = {{1, 1}, {1, 9}, {9, 1}, {5, 7}, {70, 50}, {71, 51}};

/// The programs that read a row's files; two independent ones where there are two that do not err.
std::vector<std::string> readersOf(std::string_view extension) {
    if (extension == "bmp") return {"bmptopnm \"$1\"", "convert \"bmp:$1\" -depth 8 ppm:-"};
    if (extension == "png") return {"pngtopnm \"$1\"", "convert \"png:$1\" -depth 8 ppm:-"};
    // ImageMagick turns the rows of a bottom-up file of 24 bits about.
    if (extension == "tga") return {"tgatoppm \"$1\""};
    if (extension == "tif") return {"tifftopnm \"$1\"", "convert \"tiff:$1\" -depth 8 ppm:-"};
    if (extension == "ppm" || extension == "pgm" || extension == "pbm")
        return {"ppmtoppm < \"$1\"", "convert \"$1\" -depth 8 ppm:-"};
    if (extension == "pcx") return {"pcxtoppm \"$1\"", "convert \"pcx:$1\" -depth 8 ppm:-"};
    if (extension == "psd") return {"convert \"psd:$1[0]\" -depth 8 ppm:-"};
    return {"sgitopnm \"$1\"", "convert \"sgi:$1\" -depth 8 ppm:-"};
}

class LosslessRow : public testing::TestWithParam<int> {};

TEST_P(LosslessRow, HoldsThePixelsForOtherPrograms) {
    const FormatRow& row = formatTable()[GetParam()];
    const ScratchFolder folder;
    bool anyReader = false;
    for (const std::string& reader : readersOf(row.extension)) {
        if (!tests::isInstalled(reader)) continue;
        anyReader = true;
        for (const Size& size : sizes) {
            const Bitmap picture(tests::randomBuffer(size.width, size.height, 7));
            const std::string path = folder / "a." + std::string(row.extension);
            ASSERT_EQ(saveBy(row, picture, path, true).status, Status::saved);
            const auto read = readBy(reader, path);
            ASSERT_TRUE(read) << reader << " refuses " << size.width << "x" << size.height;
            EXPECT_EQ(tests::firstDifference(read->pixels(), picture.pixels()), "")
                << reader << " " << size.width << "x" << size.height;
        }
    }
    if (!anyReader) GTEST_SKIP() << "neither netpbm nor ImageMagick is installed";
}

INSTANTIATE_TEST_SUITE_P(Rows, LosslessRow, testing::Range(8, 18), [](const auto& row) {
    return std::string(formatTable()[row.param].shortName);
});

uint32_t number(const std::string& bytes, size_t place, int count, bool bigEndian) {
    uint32_t value = 0;
    for (int i = 0; i < count; ++i)
        value |= static_cast<uint32_t>(
                     static_cast<uint8_t>(bytes.at(place + (bigEndian ? count - 1 - i : i))))
                 << (8 * i);
    return value;
}

std::string savedBytes(int row, const Bitmap& picture) {
    const ScratchFolder folder;
    const std::string path = folder / "a." + std::string(formatTable()[row].extension);
    EXPECT_EQ(saveBy(formatTable()[row], picture, path).status, Status::saved);
    return readAll(path);
}

Bitmap coloured(int32_t width, int32_t height) {
    return Bitmap(tests::randomBuffer(width, height, 3));
}

TEST(SavedBmp, Has24BitsAPixelUncompressed) {
    const std::string bytes = savedBytes(8, coloured(71, 51));
    EXPECT_EQ(bytes.substr(0, 2), "BM");
    EXPECT_EQ(number(bytes, 28, 2, false), 24U);
    EXPECT_EQ(number(bytes, 30, 4, false), 0U);
    EXPECT_EQ(bytes.size(), 54U + 216 * 51);
}

TEST(SavedPng, HoldsTrueColour) {
    const std::string bytes = savedBytes(9, coloured(71, 51));
    EXPECT_EQ(bytes.substr(12, 4), "IHDR");
    EXPECT_EQ(number(bytes, 16, 4, true), 71U);
    EXPECT_EQ(bytes[24], 8);
    EXPECT_EQ(bytes[25], 2);
    EXPECT_EQ(bytes.substr(bytes.size() - 8, 4), "IEND");
}

TEST(SavedTga, IsUncompressedBottomUpWithItsOriginAtZero) {
    const Bitmap picture = coloured(71, 51);
    const std::string bytes = savedBytes(10, picture);
    EXPECT_EQ(bytes[2], 2);
    EXPECT_EQ(number(bytes, 8, 4, false), 0U);
    EXPECT_EQ(bytes[16], 24);
    const int topDown = bytes[17] & 0x20;
    EXPECT_EQ(topDown, 0);
    for (int32_t y = 0; y < 51; ++y)
        for (int32_t x = 0; x < 71; ++x) {
            const size_t place = 18 + static_cast<size_t>((50 - y) * 71 + x) * 3;
            const Pixel& p = picture.row(y)[x];
            ASSERT_EQ(bytes[place], static_cast<char>(p.blue));
            ASSERT_EQ(bytes[place + 1], static_cast<char>(p.green));
            ASSERT_EQ(bytes[place + 2], static_cast<char>(p.red));
        }
    EXPECT_NE(bytes.find("TRUEVISION-XFILE."), std::string::npos);
}

TEST(SavedTif, IsLzwWithoutATimeOfDay) {
    const std::string bytes = savedBytes(11, coloured(71, 51));
    const bool big = bytes[0] == 'M';
    const size_t directory = number(bytes, 4, 4, big);
    const uint32_t entries = number(bytes, directory, 2, big);
    uint32_t compression = 0;
    uint32_t before = 0;
    for (uint32_t i = 0; i < entries; ++i) {
        const size_t entry = directory + 2 + i * 12;
        const uint32_t tag = number(bytes, entry, 2, big);
        EXPECT_GT(tag, before);
        EXPECT_NE(tag, 306U);
        if (tag == 259) compression = number(bytes, entry + 8, 2, big);
        before = tag;
    }
    EXPECT_EQ(compression, 5U);
    EXPECT_EQ(number(bytes, directory + 2 + entries * 12, 4, big), 0U);
    const std::string year = bytes.substr(bytes.size() - 20, 2);
    EXPECT_EQ(year, std::string(2, '\0'));
}

TEST(SavedPbmAndPgm, HoldTheSameBytesAsPpm) {
    const Bitmap picture = coloured(70, 50);
    const std::string ppm = savedBytes(12, picture);
    EXPECT_EQ(ppm.substr(0, 2), "P6");
    EXPECT_EQ(savedBytes(13, picture), ppm);
    EXPECT_EQ(savedBytes(14, picture), ppm);
}

TEST(SavedPcx, HasThreePlanesOf8BitsRunLengthCoded) {
    const std::string bytes = savedBytes(15, coloured(71, 51));
    EXPECT_EQ(bytes.substr(0, 4), std::string("\x0a\x05\x01\x08", 4));
    EXPECT_EQ(bytes[65], 3);
}

TEST(SavedPsd, HasThreeChannelsOf8Bits) {
    const std::string bytes = savedBytes(16, coloured(71, 51));
    EXPECT_EQ(bytes.substr(0, 4), "8BPS");
    EXPECT_EQ(number(bytes, 12, 2, true), 3U);
    EXPECT_EQ(number(bytes, 14, 4, true), 51U);
    EXPECT_EQ(number(bytes, 18, 4, true), 71U);
    EXPECT_EQ(number(bytes, 22, 2, true), 8U);
    EXPECT_EQ(number(bytes, 24, 2, true), 3U);
}

TEST(SavedSgi, IsVerbatimWithThreeChannels) {
    const std::string bytes = savedBytes(17, coloured(71, 51));
    EXPECT_EQ(number(bytes, 0, 2, true), 474U);
    EXPECT_EQ(bytes[2], 0);
    EXPECT_EQ(bytes[3], 1);
    EXPECT_EQ(number(bytes, 10, 2, true), 3U);
    EXPECT_EQ(bytes.size(), 512U + 71 * 51 * 3);
}

/// The segments of a JPEG file with a marker, without their lengths.
std::vector<std::string> segments(const std::string& bytes, uint8_t marker) {
    std::vector<std::string> found;
    size_t place = 2;
    while (place + 4 <= bytes.size() && static_cast<uint8_t>(bytes[place]) == 0xFF) {
        const auto kind = static_cast<uint8_t>(bytes[place + 1]);
        const size_t length = number(bytes, place + 2, 2, true);
        if (kind == marker) found.push_back(bytes.substr(place + 4, length - 2));
        if (kind == 0xDA) break;
        place += 2 + length;
    }
    return found;
}

// The example tables of the JPEG standard in zigzag order, which qualities scale.
constexpr std::array<int, 64> luminance = {
    16, 11, 12,  14,  12,  10, 16, 14,  13,  14,  18,  17,  16, 19,  24,  40,
    26, 24, 22,  22,  24,  49, 35, 37,  29,  40,  58,  51,  61, 60,  57,  51,
    56, 55, 64,  72,  92,  78, 64, 68,  87,  69,  55,  56,  80, 109, 81,  87,
    95, 98, 103, 104, 103, 62, 77, 113, 121, 112, 100, 120, 92, 101, 103, 99};
constexpr std::array<int, 64> chrominance = {
    17, 18, 18, 24, 21, 24, 47, 26, 26, 47, 99, 66, 56, 66, 99, 99, 99, 99, 99, 99, 99, 99,
    99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99,
    99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99};

std::string scaled(const std::array<int, 64>& table, int quality) {
    const int percent = quality < 50 ? 5000 / quality : 200 - 2 * quality;
    std::string steps;
    for (const int step : table)
        steps += static_cast<char>(std::clamp((step * percent + 50) / 100, 1, 255));
    return steps;
}

class JpegRow : public testing::TestWithParam<int> {};

TEST_P(JpegRow, HasTheQualityAskedAndHalvedChroma) {
    constexpr std::array<int, 5> qualities = {10, 25, 50, 75, 100};
    const int quality = qualities[GetParam() - 3];
    const std::string bytes = savedBytes(GetParam(), coloured(71, 51));
    std::string tables;
    for (const std::string& segment : segments(bytes, 0xDB))
        tables += segment;
    ASSERT_EQ(tables.size(), 130U);
    EXPECT_EQ(tables.substr(1, 64), scaled(luminance, quality));
    EXPECT_EQ(tables.substr(66, 64), scaled(chrominance, quality));

    const std::vector<std::string> frames = segments(bytes, 0xC0);
    ASSERT_EQ(frames.size(), 1U);
    const std::string& frame = frames[0];
    EXPECT_EQ(number(frame, 1, 2, true), 51U);
    EXPECT_EQ(number(frame, 3, 2, true), 71U);
    ASSERT_EQ(frame[5], 3);
    EXPECT_EQ(frame[7], 0x22);
    EXPECT_EQ(frame[10], 0x11);
    EXPECT_EQ(frame[13], 0x11);
}

TEST_P(JpegRow, IsReadByOtherProgramsAtEverySize) {
    bool anyReader = false;
    const ScratchFolder folder;
    for (const std::string reader : {"jpegtopnm \"$1\"", "convert \"jpg:$1\" -depth 8 ppm:-"}) {
        if (!tests::isInstalled(reader)) continue;
        anyReader = true;
        for (const Size& size : sizes) {
            const Bitmap grey(tests::drawBuffer(size.width, size.height, [](int32_t, int32_t) {
                return Pixel{90, 90, 90, 0};
            }));
            ASSERT_EQ(saveBy(formatTable()[GetParam()], grey, folder / "a.jpg", true).status,
                      Status::saved);
            const auto read = readBy(reader, folder / "a.jpg");
            ASSERT_TRUE(read) << reader << size.width << "x" << size.height;
            ASSERT_EQ(read->width(), size.width);
            ASSERT_EQ(read->height(), size.height);
            // The coarsest step of the mean of a block is 80 at quality 10, an eighth a level.
            EXPECT_NEAR(read->row(0)[0].green, 90, 5);
            EXPECT_NEAR(read->row(0)[0].red, 90, 5);
        }
    }
    if (!anyReader) GTEST_SKIP() << "neither netpbm nor ImageMagick is installed";
}

INSTANTIATE_TEST_SUITE_P(Rows, JpegRow, testing::Range(3, 8), [](const auto& row) {
    std::string name(formatTable()[row.param].shortName);
    name[3] = '_';
    return name;
});

TEST(SavedJpeg, KeepsRedRedAndTheTopAtTheTop) {
    if (!tests::isInstalled("jpegtopnm")) GTEST_SKIP() << "netpbm is not installed";
    const ScratchFolder folder;
    const Bitmap picture(tests::drawBuffer(64, 64, [](int32_t x, int32_t y) {
        return Pixel{static_cast<uint8_t>(x < 32 ? 250 : 5), static_cast<uint8_t>(20),
                     static_cast<uint8_t>(y < 32 ? 240 : 10), 0};
    }));
    ASSERT_EQ(saveBy(formatTable()[7], picture, folder / "a.jpg").status, Status::saved);
    const auto read = readBy("jpegtopnm \"$1\"", folder / "a.jpg");
    ASSERT_TRUE(read);
    for (const auto& [x, y] : {std::pair{8, 8}, std::pair{50, 8}, std::pair{8, 50}}) {
        EXPECT_NEAR(read->row(y)[x].red, picture.row(y)[x].red, 3);
        EXPECT_NEAR(read->row(y)[x].blue, picture.row(y)[x].blue, 3);
    }
}

}  // namespace
}  // namespace tessarine
