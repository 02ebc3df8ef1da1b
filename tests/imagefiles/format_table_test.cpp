#include "imagefiles/format_table.h"

#include <set>
#include <string>

#include <gtest/gtest.h>

namespace tessarine {
namespace {

TEST(FormatTable, HoldsTheTextsOfTheChoiceBoxInTheirOrder) {
    const char* const texts[formatRowCount] = {
        "GIF-64 Colors",           "GIF-128 Colors",
        "GIF-256 Colors",          "JPEG - Bad Quality",
        "JPEG - Average Quality",  "JPEG - Normal Quality",
        "JPEG - Good Quality",     "JPEG - Superb Quality",
        "BMP - Windows Bitmap ",   "PNG - Portable Network Graphics",
        "TGA - Targa Files",       "TIF - Tag Image File Format",
        "PPM - Portable Pixelmap", "PBM - Portable Bitmap",
        "PGM - Portable Greymap",  "PCX - ZSoft Paintbrush",
        "PSD - Photoshop",         "SGI - Silicon Graphics"};
    const char* const extensions[formatRowCount] = {"gif", "gif", "gif", "jpg", "jpg", "jpg",
                                                    "jpg", "jpg", "bmp", "png", "tga", "tif",
                                                    "ppm", "pbm", "pgm", "pcx", "psd", "sgi"};
    for (int16_t i = 0; i < formatRowCount; ++i) {
        EXPECT_EQ(formatTable()[i].text, texts[i]);
        EXPECT_EQ(formatTable()[i].extension, extensions[i]);
    }
}

TEST(FormatTable, GoesByTheEncoderThenJpegThenDevil) {
    for (int16_t i = 0; i < formatRowCount; ++i) {
        const SaveRoute expected = i < 3   ? SaveRoute::encoder
                                   : i < 8 ? SaveRoute::jpeg
                                           : SaveRoute::devil;
        EXPECT_EQ(formatTable()[i].route, expected) << i;
    }
}

TEST(FormatTable, CountsGifColoursInBits) {
    EXPECT_EQ(formatTable()[0].value, 6);
    EXPECT_EQ(formatTable()[1].value, 7);
    EXPECT_EQ(formatTable()[2].value, 8);
}

TEST(FormatTable, JpegValueGrowsSmallerAsTheQualityGrows) {
    EXPECT_EQ(formatTable()[3].value, 0x0800);
    EXPECT_EQ(formatTable()[7].value, 0x0080);
    for (int16_t i = 4; i <= 7; ++i)
        EXPECT_EQ(formatTable()[i].value * 2, formatTable()[i - 1].value);
}

TEST(FormatTable, ShortNamesTellTheRowsApart) {
    std::set<std::string_view> names;
    for (const FormatRow& row : formatTable())
        names.insert(row.shortName);
    EXPECT_EQ(names.size(), static_cast<size_t>(formatRowCount));
    EXPECT_EQ(formatTable()[6].shortName, "jpg-good");
    EXPECT_EQ(formatTable()[0].shortName, "gif64");
}

}  // namespace
}  // namespace tessarine
