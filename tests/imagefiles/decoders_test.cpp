#include "imagefiles/decoders.h"

#include <optional>
#include <random>

#include <gmock/gmock.h>

#include "imagefiles/extension_table.h"
#include "sample_files.h"

namespace tessarine::tests {
namespace {

using testing::ElementsAre;

std::string nameOf(const testing::TestParamInfo<std::pair<std::string, std::string>>& info) {
    return info.param.first + "_" + std::to_string(info.index);
}

class SmallFiles : public testing::TestWithParam<std::pair<std::string, std::string>> {};

TEST_P(SmallFiles, ShowTheirFourColoursInTheirPlaces) {
    const auto& [extension, bytes] = GetParam();
    const Loaded loaded = loadBytes(bytes, extension);
    ASSERT_TRUE(loaded.isThere);
    EXPECT_EQ(loaded.width, 2);
    EXPECT_EQ(loaded.height, 2);
    EXPECT_THAT(loaded.colours, ElementsAre(red, green, blue, white));
}

/// Hands bytes to the room's own decoder, without a file. \return whether it made a picture
bool decode(const std::string& extension, const std::string& bytes) {
    const Bytes file(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    std::optional<Decoded> decoded;
    attempt([&] {
        if (extension == "gif")
            decoded = decodeGif(file);
        else if (extension == "dib")
            decoded = decodeBmp(file, false);
        else
            decoded = findExtension(extension)->takeOver({file, {}});
    });
    return decoded && decoded->bitmap.isValid() && decoded->bitmap.width() > 0;
}

TEST_P(SmallFiles, CutShortAreRefusedUntilNothingIsMissing) {
    const auto& [extension, bytes] = GetParam();
    ASSERT_TRUE(decode(extension, bytes));
    bool wasWhole = false;
    for (size_t length = 0; length < bytes.size(); ++length) {
        const bool isWhole = decode(extension, bytes.substr(0, length));
        EXPECT_TRUE(isWhole || !wasWhole) << length;
        wasWhole = isWhole;
    }
    EXPECT_FALSE(decode(extension, bytes.substr(0, bytes.size() / 2)));
}

// Under a sanitizer this shows any read or write outside; elsewhere, that nothing but a refusal
// is thrown and that no claim takes memory without bounds.
TEST_P(SmallFiles, WithBytesChangedAreReadOrRefused) {
    const auto& [extension, bytes] = GetParam();
    size_t refused = 0;
    std::minstd_rand random(7);
    for (int round = 0; round < 1500; ++round) {
        std::string changed = bytes;
        for (size_t i = 0; i < 1 + random() % 3; ++i)
            changed[random() % changed.size()] =
                static_cast<char>(random() % 3 == 0 ? 0xFF : random() % 256);
        refused += decode(extension, changed) ? 0 : 1;
    }
    EXPECT_GT(refused, 0u);
    EXPECT_LT(refused, 1500u);
}

TEST_P(SmallFiles, AreRefusedUnderAnotherExtension) {
    const auto& [extension, bytes] = GetParam();
    for (const std::string other : {"png", "jpg", "psd", "tif", "pxr", "wbmp"})
        EXPECT_FALSE(loadBytes(bytes, other).isThere) << other;
}

INSTANTIATE_TEST_SUITE_P(All, SmallFiles, testing::ValuesIn(smallFiles()), nameOf);

TEST(Bmp, RunLengthsOfHalfBytesAlternate) {
    FileBytes f;
    f.text("BM").le32({0, 0, 14 + 40 + 8});
    f.le32({40, 5, 1}).le16({1, 4}).le32({2, 0, 0, 0, 2, 0});
    f.u8({0, 0, 255, 0, 255, 0, 0, 0}).u8({5, 0x01, 0, 1});
    const Loaded loaded = loadBytes(f.str(), "bmp");
    EXPECT_EQ(loaded.depth, 4);
    EXPECT_THAT(loaded.colours, ElementsAre(red, blue, red, blue, red));
}

TEST(Bmp, MasksOfAnyWidthAreSpreadOverAllLevels) {
    FileBytes f;
    f.text("BM").le32({0, 0, 14 + 56});
    f.le32({56, 2, 1}).le16({1, 16}).le32({3, 0, 0, 0, 0, 0, 0x0F00, 0x00F0, 0x000F, 0xF000});
    f.le16({0xF800, 0x07F1});
    const Loaded loaded = loadBytes(f.str(), "bmp");
    EXPECT_EQ(loaded.depth, 16);
    EXPECT_THAT(loaded.colours, ElementsAre(0x880000u, 0x77FF11u));
}

TEST(Bmp, TheFirstHeaderOfAllHasColoursOfThreeBytes) {
    FileBytes f;
    f.text("BM").le32({0, 0, 14 + 12 + 6}).le32({12}).le16({2, 1, 1, 1});
    f.u8({255, 0, 0, 0, 255, 0}).u8({0x40, 0, 0, 0});
    EXPECT_THAT(loadBytes(f.str(), "bmp").colours, ElementsAre(blue, green));
}

TEST(Bmp, AHugeClaimIsRefusedWithoutItsMemory) {
    FileBytes f;
    f.text("BM").le32({0, 0, 14 + 40});
    f.le32({40, 60000, 60000}).le16({1, 8}).le32({1, 0, 0, 0, 1, 0}).zeros(40);
    EXPECT_FALSE(loadBytes(f.str(), "bmp").isThere);
}

// The library is not to be asked for it: a claim of 2^64 bits must not count as none.
TEST(Bmp, AClaimBeyondAllNumbersIsRefused) {
    FileBytes f;
    f.text("BM").le32({0, 0, 14 + 40});
    f.le32({40, 1 << 30, 1 << 30}).le16({1, 16}).le32({0, 0, 0, 0, 0, 0}).zeros(40);
    const std::string file = f.str();
    const Bytes bytes(reinterpret_cast<const uint8_t*>(file.data()), file.size());
    EXPECT_THROW(takeOverBmp({bytes, {}}), StatementFailed);
}

TEST(Pnm, PlainBitmapsNeedNoBlanks) {
    EXPECT_THAT(loadBytes("P1\n# two rows\n3 2\n101010\n", "pbm").colours,
                ElementsAre(black, white, black, white, black, white));
    EXPECT_THAT(loadBytes("P1 3 1 1 0\n1\n", "pbm").colours, ElementsAre(black, white, black));
}

TEST(Pgm, SixteenBitsKeepTheirLevels) {
    FileBytes f;
    f.text("P5\n4 1\n65535\n").be16({0, 0x4040, 0x8080, 0xFFFF});
    const Loaded loaded = loadBytes(f.str(), "pgm");
    EXPECT_EQ(loaded.depth, 16);
    EXPECT_THAT(loaded.colours, ElementsAre(0u, 0x404040u, 0x808080u, white));
}

TEST(Pcx, PlanesOfOneBitMakeAPaletteIndex) {
    FileBytes f;
    f.u8({10, 5, 0, 1}).le16({0, 0, 3, 0, 72, 72});
    f.u8({0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0, 255}).zeros(36).u8({0, 2}).le16({2, 1}).zeros(58);
    f.u8({0x50, 0, 0x30, 0});
    const Loaded loaded = loadBytes(f.str(), "pcx");
    EXPECT_EQ(loaded.depth, 2);
    EXPECT_THAT(loaded.colours, ElementsAre(black, red, green, blue));
}

TEST(Pcx, TwoBitPicturesWithoutColoursShowThoseOfTheAdapter) {
    FileBytes f;
    f.u8({10, 2, 0, 2}).le16({0, 0, 3, 0, 72, 72});
    f.u8({0x10, 0, 0, 0x20}).zeros(44).u8({0, 1}).le16({2, 1}).zeros(58).u8({0x1B, 0});
    EXPECT_THAT(loadBytes(f.str(), "pcx").colours,
                ElementsAre(0x0000AAu, 0x55FF55u, 0xFF5555u, 0xFFFF55u));
}

TEST(Ras, ASetBitOfABilevelRasterIsBlack) {
    FileBytes f;
    f.be32({0x59A66A95, 3, 1, 1, 2, 1, 0, 0}).u8({0x40, 0});
    EXPECT_THAT(loadBytes(f.str(), "ras").colours, ElementsAre(white, black, white));
}

TEST(Ras, RunsAndAShortPaletteAreKnown) {
    FileBytes f;
    f.be32({0x59A66A95, 4, 1, 8, 4, 2, 1, 6}).u8({255, 0, 0, 0, 0, 255});
    f.u8({128, 2, 1, 0});
    EXPECT_THAT(loadBytes(f.str(), "ras").colours, ElementsAre(blue, blue, blue, red));
}

TEST(Pic, AlphaIsDroppedNotBlended) {
    FileBytes f;
    f.be32({0x5380F634, 0}).zeros(80).text("PICT").be16({2, 1}).be32({0}).be16({3, 0});
    f.u8({1, 8, 2, 0xE0, 0, 8, 2, 0x10});
    f.u8({129, 255, 0, 0}).u8({129, 0});
    const Loaded loaded = loadBytes(f.str(), "pic");
    EXPECT_EQ(loaded.depth, 32);
    EXPECT_THAT(loaded.colours, ElementsAre(red, red));
}

TEST(Pix, GreyPicturesHaveOneByteAPixel) {
    const std::string bytes = FileBytes().be16({3, 1, 0, 0, 8}).u8({1, 0, 2, 128}).str();
    const Loaded loaded = loadBytes(bytes, "pix");
    EXPECT_EQ(loaded.depth, 8);
    EXPECT_THAT(loaded.colours, ElementsAre(black, 0x808080u, 0x808080u));
}

TEST(Sgi, CodedRowsOfSixteenBitsAreKnown) {
    FileBytes f;
    f.be16({474}).u8({1, 2}).be16({2, 3, 1, 1}).zeros(500).be32({520, 8});
    f.be16({0x02, 0x4040, 0x81, 0xFFFF, 0});
    const Loaded loaded = loadBytes(f.str(), "bw");
    EXPECT_EQ(loaded.depth, 16);
    EXPECT_THAT(loaded.colours, ElementsAre(0x404040u, 0x404040u, white));
}

TEST(Sgi, RowsOfEightBitsAreKnownPlainAndCoded) {
    FileBytes plain;
    plain.be16({474}).u8({0, 1}).be16({3, 2, 2, 3}).zeros(500);
    plain.u8({1, 2, 3, 4}).u8({5, 6, 7, 8}).u8({9, 10, 11, 12});
    const Loaded loaded = loadBytes(plain.str(), "rgb");
    EXPECT_EQ(loaded.depth, 24);
    EXPECT_THAT(loaded.colours, ElementsAre(0x03070Bu, 0x04080Cu, 0x010509u, 0x02060Au));

    FileBytes coded;
    coded.be16({474}).u8({1, 1}).be16({2, 3, 1, 1}).zeros(500).be32({520, 6});
    coded.u8({0x02, 0x40, 0x81, 0xFF, 0, 0});
    EXPECT_THAT(loadBytes(coded.str(), "bw").colours, ElementsAre(0x404040u, 0x404040u, white));
}

TEST(Sgi, AFileThatEndsEarlyShowsNothingOfOtherMemory) {
    FileBytes plain;
    plain.be16({474}).u8({0, 1}).be16({2, 2, 2, 1}).zeros(500).u8({1, 2, 3});
    EXPECT_FALSE(loadBytes(plain.str(), "bw").isThere);
    FileBytes coded;
    coded.be16({474}).u8({1, 1}).be16({2, 3, 1, 1}).zeros(500).be32({520, 6}).u8({0x02, 0x40});
    EXPECT_FALSE(loadBytes(coded.str(), "sgi").isThere);
}

std::string ilbm(uint32_t planes, uint32_t mode, uint32_t width, const std::string& colours,
                 const std::string& body, const std::string& changes = "") {
    FileBytes f;
    f.text("ILBM");
    f.chunk("BMHD", FileBytes()
                        .be16({width, static_cast<uint32_t>(changes.empty() ? 1 : 2), 0, 0})
                        .u8({planes, 0, 0, 0})
                        .zeros(8)
                        .str());
    f.chunk("CAMG", FileBytes().be32({mode}).str()).chunk("CMAP", colours);
    if (!changes.empty()) f.chunk("PCHG", changes);
    return FileBytes().chunk("FORM", f.chunk("BODY", body).str()).str();
}

TEST(Ilbm, HoldAndModifyChangesOneChannelOfThePixelBefore) {
    // palette 1, then blue, red and green to full
    FileBytes body;
    for (const uint32_t plane : {0xF0u, 0x70u, 0x70u, 0x70u, 0x50u, 0x30u})
        body.u8({plane, 0});
    const std::string colours = FileBytes().zeros(3).u8({0x11, 0x22, 0x33}).zeros(42).str();
    const Loaded loaded = loadBytes(ilbm(6, 0x800, 4, colours, body.str()), "iff");
    EXPECT_EQ(loaded.depth, 6);
    EXPECT_THAT(loaded.colours, ElementsAre(0x112233u, 0x1122FFu, 0xFF22FFu, 0xFFFFFFu));
}

TEST(Ilbm, HalfBrightColoursAreHalfOfTheFirstThirtyTwo) {
    FileBytes body;
    for (const uint32_t plane : {0xC0u, 0u, 0u, 0u, 0u, 0x40u})
        body.u8({plane, 0});
    const std::string colours = FileBytes().zeros(3).u8({200, 100, 50}).zeros(90).str();
    EXPECT_THAT(loadBytes(ilbm(6, 0x80, 2, colours, body.str()), "iff").colours,
                ElementsAre(0xC86432u, 0x643219u));
}

TEST(Ilbm, ColoursMayChangeFromALineOn) {
    FileBytes changes;
    changes.be16({0, 1, 0, 2, 1, 1, 1, 1}).be32({1}).be32({0x40000000});  // the second line
    changes.u8({1, 0}).be16({0x10F0});
    const std::string colours = FileBytes().zeros(3).u8({255, 0, 0}).str();
    const std::string body = FileBytes().u8({0x80, 0, 0x80, 0}).str();
    EXPECT_THAT(loadBytes(ilbm(1, 0, 1, colours, body, changes.str()), "lbm").colours,
                ElementsAre(red, green));
}

TEST(Tga, GreyWithAlphaKeepsItsGrey) {
    FileBytes f;
    f.u8({0, 0, 3}).zeros(9).le16({2, 1}).u8({16, 0x28, 0x40, 0, 0x80, 255});
    const Loaded loaded = loadBytes(f.str(), "tga");
    EXPECT_EQ(loaded.depth, 16);
    EXPECT_THAT(loaded.colours, ElementsAre(0x404040u, 0x808080u));
}

TEST(Tga, PlainColoursAreReadAsTwentyFourBits) {
    FileBytes f;
    f.u8({0, 0, 2}).zeros(9).le16({1, 2}).u8({32, 8, 255, 0, 0, 0, 0, 0, 255, 255});
    const Loaded loaded = loadBytes(f.str(), "icb");
    EXPECT_EQ(loaded.depth, 24);
    EXPECT_THAT(loaded.colours, ElementsAre(red, blue));
}

TEST(Cut, APaletteBesideItGivesItsColours) {
    const ScratchFolder folder;
    const std::string path = folder / "figure.cut";
    writeAll(path, FileBytes().le16({3, 1, 0, 4}).u8({0x82, 1, 1, 2, 0}).str());
    FileBytes palette;
    palette.text("AH").le16({0, 0}).u8({10, 0}).le16({0, 0, 2, 255, 255, 255}).zeros(20);
    palette.le16({0, 0, 0, 255, 0, 0, 0, 0, 255});
    writeAll(folder / "figure.pal", palette.str());
    EXPECT_THAT(loadFile(path, "cut").colours, ElementsAre(red, red, blue));
}

TEST(Cut, WithoutAPaletteItIsGrey) {
    FileBytes f;
    f.le16({3, 1, 0, 5}).u8({0x82, 64, 1, 128, 0});
    const Loaded loaded = loadBytes(f.str(), "cut");
    EXPECT_THAT(loaded.colours, ElementsAre(0x404040u, 0x404040u, 0x808080u));
}

TEST(ColourTables, ShowASwatchForEachColour) {
    std::string act(768, '\0');
    act[0] = '\xFF';
    act[3 * 255 + 2] = '\xFF';
    const Loaded table = loadBytes(act, "act");
    ASSERT_TRUE(table.isThere);
    EXPECT_EQ(table.width, 256);
    EXPECT_EQ(table.height, 256);
    EXPECT_EQ(table.colours.front(), red);
    EXPECT_EQ(table.colours[16], black);
    EXPECT_EQ(table.colours.back(), blue);

    const Loaded text = loadBytes("JASC-PAL\r\n0100\r\n2\r\n255 0 0\r\n0 0 255\r\n", "pal");
    ASSERT_TRUE(text.isThere);
    EXPECT_EQ(text.height, 16);
    EXPECT_EQ(text.colours[15], red);
    EXPECT_EQ(text.colours[16], blue);
    EXPECT_EQ(text.colours[32], white);

    FileBytes riff;
    riff.text("RIFF").le32({24}).text("PAL data").le32({12}).le16({0x300, 2});
    riff.u8({255, 0, 0, 0, 0, 0, 255, 0});
    EXPECT_EQ(loadBytes(riff.str(), "pal").colours, text.colours);
}

TEST(Dds, BlocksOfTwoColoursMixThem) {
    FileBytes f;
    f.text("DDS ").le32({124, 0x1007, 4, 4, 8, 0, 0}).zeros(44);
    f.le32({32, 4}).text("DXT1").zeros(20).zeros(20);
    f.le16({0xF800, 0x001F}).u8({0xE4, 0xE4, 0xE4, 0xE4});
    const Loaded loaded = loadBytes(f.str(), "dds");
    ASSERT_EQ(loaded.colours.size(), 16u);
    EXPECT_EQ(Colours(loaded.colours.begin(), loaded.colours.begin() + 4),
              (Colours{red, blue, 0xAA0055, 0x5500AA}));
}

TEST(Gif, AFrameSmallerThanItsScreenStandsOnWhite) {
    FileBytes f;
    f.text("GIF87a").le16({3, 1}).u8({0x80, 0, 0, 255, 0, 0, 0, 0, 255});
    f.u8({0x2C}).le16({1, 0, 1, 1}).u8({0}).u8({2, 2, 0x0C | 0x40, 0x01, 0, 0x3B});
    // codes of 3 bits: clear (4), 1, end (5)
    const Loaded loaded = loadBytes(f.str(), "gif");
    EXPECT_EQ(loaded.depth, 1);
    EXPECT_THAT(loaded.colours, ElementsAre(white, blue, white));
}

TEST(Pcd, AFileThatEndsBeforeItsPictureIsRefused) {
    FileBytes f;
    f.zeros(2048).text("PCD_IPI").zeros(4096);
    EXPECT_FALSE(loadBytes(f.str(), "pcd").isThere);
}

TEST(Lmp, APictureOfTheOlderGameNeedsThePaletteBesideIt) {
    const ScratchFolder folder;
    const std::string path = folder / "console.lmp";
    writeAll(path, FileBytes().le32({2, 1}).u8({1, 0}).str());
    EXPECT_FALSE(loadFile(path, "lmp").isThere);
    writeAll(folder / "palette.lmp", FileBytes().zeros(3).u8({255, 0, 0}).zeros(762).str());
    EXPECT_THAT(loadFile(path, "lmp").colours, ElementsAre(red, black));
}

TEST(Xpm, ColoursMayHaveNamesOfSeveralWordsAndSymbols) {
    const std::string bytes =
        "/* XPM */\nstatic char *x[] = {\"3 1 3 2\", \"aa s edge c light blue\",\n"
        "\"bb m black g4 #888 c #ffff00000000\", /* \"not this\" */ \"cc c None\", \"aabbcc\"};";
    EXPECT_THAT(loadBytes(bytes, "xpm").colours, ElementsAre(0xADD8E6u, red, white));
}

}  // namespace
}  // namespace tessarine::tests
