#include "metadata_fixture.h"

namespace tessarine::tests {
namespace {

using testing::HasSubstr;
using testing::Not;

// ---- Finding ----

TEST_F(MetadataTest, AJpegFileGivesAllFourBlocksAsTheyStandInIt) {
    MetadataBlocks blocks;
    blocks.exif = cameraExif().bytes();
    blocks.iptc = joined(iptcSet(5, "A title"), iptcSet(25, "a word"));
    blocks.xmp = bytesOf(xmpPacket("<dc:format>image/jpeg</dc:format>"));
    blocks.icc = profile("RGB ");
    const FoundMetadata found = foundIn({{0xE1, exifSegment(blocks.exif)},
                                         {0xE1, xmpSegment({blocks.xmp.begin(), blocks.xmp.end()})},
                                         {0xED, iptcSegment(blocks.iptc)},
                                         {0xE2, profileSegment(blocks.icc, 1, 1)}});
    EXPECT_EQ(found.leftOut, "");
    EXPECT_EQ(found.orientation, 6);
    EXPECT_EQ(blocksOf(found), blocks);
}

TEST_F(MetadataTest, AFileWithoutMetadataIsUprightAndGivesNone) {
    for (const char* extension : {"jpg", "png", "tif", "psd", "bmp", "gif", "tga"}) {
        const FoundMetadata found = metadataIn(bytesOf(plainFile(extension)), extension);
        EXPECT_EQ(found.orientation, 1) << extension;
        EXPECT_EQ(found.leftOut, "") << extension;
        const MetadataBlocks blocks = blocksOf(found);
        EXPECT_TRUE(blocks.iptc.empty() && blocks.xmp.empty() && blocks.icc.empty()) << extension;
    }
}

TEST_F(MetadataTest, AllEightOrientationsAreToldAndOthersAreUpright) {
    for (uint16_t number = 0; number < 12; ++number) {
        ExifToMake exif;
        exif.image = {{orientationTag, asShort(number)}};
        const int expected = number >= 1 && number <= 8 ? number : 1;
        EXPECT_EQ(foundIn({{0xE1, exifSegment(exif.bytes())}}).orientation, expected);
    }
}

TEST_F(MetadataTest, AProfileInPartsIsPutTogetherInTheirOrder) {
    const ByteString whole = profile("RGB ", 500);
    const ByteString first(whole.begin(), whole.begin() + 300);
    const ByteString second(whole.begin() + 300, whole.end());
    EXPECT_EQ(blocksOf(foundIn({{0xE2, profileSegment(second, 2, 2)},
                                {0xE2, profileSegment(first, 1, 2)}}))
                  .icc,
              whole);
    const FoundMetadata half = foundIn({{0xE2, profileSegment(second, 2, 2)}});
    EXPECT_TRUE(blocksOf(half).icc.empty());
    EXPECT_THAT(half.leftOut, HasSubstr("a part is missing"));
}

TEST_F(MetadataTest, AProfileThatIsNotForRgbIsLeftOutWithAWord) {
    const std::pair<ByteString, const char*> cases[] = {{profile("GRAY"), "grey"},
                                                        {profile("CMYK"), "CMYK"},
                                                        {profile("Lab "), "not for RGB"},
                                                        {ByteString(300, 1), "damaged"},
                                                        {bytesOf("short"), "damaged"}};
    for (const auto& [icc, word] : cases) {
        const FoundMetadata found = foundIn({{0xE2, profileSegment(icc, 1, 1)}});
        EXPECT_TRUE(found.packed.empty());
        EXPECT_THAT(found.leftOut, HasSubstr("the colour profile"));
        EXPECT_THAT(found.leftOut, HasSubstr(word));
    }
}

TEST_F(MetadataTest, WhatIsDamagedIsLeftOutAndTheRestStays) {
    const ByteString iptc = iptcSet(5, "A title");
    const FoundMetadata found = foundIn({{0xE1, exifSegment(bytesOf("nothing of that kind"))},
                                         {0xE1, xmpSegment("<no packet>")},
                                         {0xED, iptcSegment(iptc)}});
    EXPECT_THAT(found.leftOut, HasSubstr("EXIF, which is damaged"));
    EXPECT_THAT(found.leftOut, HasSubstr("XMP, which is damaged"));
    EXPECT_EQ(blocksOf(found).iptc, iptc);
    EXPECT_TRUE(blocksOf(found).exif.empty());
    EXPECT_THAT(foundIn({{0xED, iptcSegment({0x1C, 2, 5, 0x7F, 0xFF})}}).leftOut,
                HasSubstr("IPTC, which is damaged"));
}

TEST_F(MetadataTest, TheExtendedPartOfXmpIsLeftOutWithAWord) {
    const ByteString more =
        joined(bytesOf(std::string_view("http://ns.adobe.com/xmp/extension/\0", 35)),
               bytesOf("0123456789ABCDEF0123456789ABCDEF and so on"));
    EXPECT_THAT(foundIn({{0xE1, more}}).leftOut, HasSubstr("extended part of XMP"));
}

TEST_F(MetadataTest, WhatIsBeyondTheBoundIsLeftOutWhole) {
    const std::vector<std::pair<uint8_t, ByteString>> segments{
        {0xE1, exifSegment(cameraExif().bytes())},
        {0xE2, profileSegment(profile("RGB ", 5000), 1, 1)}};
    const ByteString file = jpegWithSegments(bytesOf(plainFile("jpg")), segments);
    const FoundMetadata found = metadataIn(file, "JPG", 4000);
    EXPECT_LE(found.packed.size(), 4000U);
    EXPECT_THAT(found.leftOut, HasSubstr("the colour profile of 5000 bytes"));
    EXPECT_FALSE(blocksOf(found).exif.empty());
    EXPECT_TRUE(blocksOf(found).icc.empty());
    EXPECT_TRUE(metadataIn(file, "jpg", 0).packed.empty());
    EXPECT_TRUE(metadataIn(file, "png").packed.empty());
}

TEST_F(MetadataTest, AFileThatEndsAnywhereIsNoReasonToFail) {
    MetadataBlocks blocks;
    const ByteString file = jpegWithSegments(bytesOf(plainFile("jpg")),
                                             {{0xE1, exifSegment(cameraExif().bytes())},
                                              {0xED, iptcSegment(iptcSet(5, "A title"))},
                                              {0xE2, profileSegment(profile("RGB "), 1, 1)}});
    size_t found = 0;
    for (size_t size = 0; size < 1200; size += 7)
        found += metadataIn(Bytes(file).first(size), "jpg").packed.empty() ? 0 : 1;
    EXPECT_GT(found, 30U);
    EXPECT_LT(found, 150U);
}

TEST(PackedMetadata, OnlyWholePiecesAreTaken) {
    MetadataBlocks blocks;
    blocks.exif = bytesOf("one");
    blocks.xmp = bytesOf("four");
    LeftOut none;
    const ByteString bytes = packed(blocks, 1000, none);
    EXPECT_EQ(unpacked(bytes), blocks);
    EXPECT_EQ(none.text(), "");
    for (size_t size = 1; size < bytes.size(); ++size)
        EXPECT_FALSE(unpacked(Bytes(bytes).first(size))) << size;
    EXPECT_FALSE(unpacked(joined(bytes, {0})));
    EXPECT_FALSE(unpacked(ByteString(16, 0xFF)));
    EXPECT_EQ(unpacked({}), MetadataBlocks());
}

// ---- Adding ----

TEST_F(MetadataTest, FourFormatsHoldAllBlocksAndOthersNone) {
    MetadataBlocks blocks;
    ExifToMake exif = cameraExif();
    exif.thumbnail.clear();
    blocks.exif = exif.bytes();
    blocks.iptc = joined(iptcSet(5, "A title"), iptcSet(25, "a word"));
    blocks.xmp = bytesOf(xmpPacket("<dc:format>image/jpeg</dc:format>"));
    blocks.icc = profile("RGB ");
    LeftOut none;
    const MetadataToAdd toAdd{packed(blocks, mostMetadataBytes, none)};
    for (const FormatRow& row : formatTable()) {
        const std::string extension(row.extension);
        const bool holds =
            extension == "jpg" || extension == "png" || extension == "tif" || extension == "psd";
        EXPECT_EQ(holdsMetadata(extension), holds);
        const FoundMetadata found = again(toAdd, extension);
        EXPECT_EQ(leftOut, "") << extension;
        EXPECT_EQ(found.leftOut, "") << extension;
        if (!holds) {
            EXPECT_EQ(written_, [&] {
                again({}, extension);
                return written_;
            }()) << extension;
            continue;
        }
        const MetadataBlocks kept = blocksOf(found);
        const ExifRead read(kept.exif);
        EXPECT_EQ(found.orientation, 6) << extension;
        EXPECT_EQ(read.image.at(0x010F).value, asText("A maker of cameras").value) << extension;
        EXPECT_EQ(read.image.at(0x011A).value, asRationals({{300, 1}}).value) << extension;
        EXPECT_EQ(read.photo.at(0x829A).value, asRationals({{1, 250}}).value) << extension;
        EXPECT_EQ(read.photo.at(makerTag).value, exif.photo.at(makerTag).value) << extension;
        EXPECT_EQ(read.gps.at(0x0002).value, exif.gps.at(0x0002).value) << extension;
        EXPECT_EQ(ExifRead::numberIn(read.photo, widthTag), 20U) << extension;
        EXPECT_EQ(ExifRead::numberIn(read.photo, heightTag), 10U) << extension;
        EXPECT_EQ(kept.iptc, blocks.iptc) << extension;
        // The library words a packet anew that it reads out of these two.
        if (extension == "jpg" || extension == "psd") {
            EXPECT_EQ(kept.xmp, blocks.xmp) << extension;
        }
        EXPECT_THAT(std::string(kept.xmp.begin(), kept.xmp.end()), HasSubstr("image/jpeg"));
        EXPECT_EQ(kept.icc, blocks.icc) << extension;
    }
}

TEST_F(MetadataTest, ThePixelsAreThoseOfAFileWithoutMetadata) {
    MetadataBlocks blocks;
    blocks.exif = cameraExif().bytes();
    blocks.icc = profile("RGB ");
    LeftOut none;
    const MetadataToAdd toAdd{packed(blocks, mostMetadataBytes, none)};
    for (const char* extension : {"jpg", "png", "tif", "psd"}) {
        again({}, extension);
        const ReadOutcome plain =
            localFiles().read(scratch / (std::string("again.") + extension), extension);
        again(toAdd, extension);
        const ReadOutcome with =
            localFiles().read(scratch / (std::string("again.") + extension), extension);
        ASSERT_TRUE(plain.bitmap && with.bitmap) << extension;
        EXPECT_TRUE(*plain.bitmap == *with.bitmap) << extension;
    }
}

TEST_F(MetadataTest, ALargeProfileGoesIntoSeveralSegments) {
    MetadataBlocks blocks;
    blocks.icc = profile("RGB ", 200000);
    EXPECT_EQ(adjusted(blocks, false, false).icc, blocks.icc);
    EXPECT_EQ(leftOut, "");
}

TEST_F(MetadataTest, WhatAJpegFileCannotHoldIsLeftOutWithAWord) {
    MetadataBlocks blocks;
    blocks.xmp = bytesOf(xmpPacket("<dc:format>" + std::string(70000, 'x') + "</dc:format>"));
    for (int i = 0; i < 10; ++i)
        blocks.iptc = joined(blocks.iptc, iptcSet(120, std::string(9000, 'y')));
    const MetadataBlocks kept = adjusted(blocks, false, false);
    EXPECT_TRUE(kept.areEmpty());
    EXPECT_THAT(leftOut, HasSubstr("XMP, which is too large"));
    EXPECT_THAT(leftOut, HasSubstr("IPTC, which is too large"));
}

TEST_F(MetadataTest, WhatGotLostOnItsWayIsNamed) {
    again({bytesOf("no such piece")}, "jpg");
    EXPECT_THAT(leftOut, HasSubstr("got lost"));
}

// ---- Adjusting EXIF ----

TEST_F(MetadataTest, TheThumbnailGoesAndTheMakersPartStaysWhereItWas) {
    const ExifToMake exif = cameraExif();
    const ByteString& maker = exif.photo.at(makerTag).value;
    const ExifRead before(exif.bytes());
    ASSERT_TRUE(before.hasThumbnail);
    const ExifRead after = adjustedExif(exif, false, false);
    EXPECT_FALSE(after.hasThumbnail);
    const std::string text(written_.begin(), written_.end());
    EXPECT_THAT(text, Not(HasSubstr("a small picture")));
    EXPECT_EQ(after.placeOf(maker), before.placeOf(maker));
    EXPECT_EQ(ExifRead::numberIn(after.image, orientationTag), 6U);
}

TEST_F(MetadataTest, ATurnedPictureIsUprightInExifAndXmp) {
    MetadataBlocks blocks;
    blocks.exif = cameraExif().bytes();
    blocks.xmp = bytesOf(xmpPacket("<tiff:Orientation>6</tiff:Orientation>"));
    const MetadataBlocks turned = adjusted(blocks, true, false);
    EXPECT_EQ(ExifRead::numberIn(ExifRead(turned.exif).image, orientationTag), 1U);
    EXPECT_THAT(std::string(turned.xmp.begin(), turned.xmp.end()),
                HasSubstr("tiff:Orientation=\"1\""));
    const MetadataBlocks asItLies = adjusted(blocks, false, false);
    EXPECT_EQ(asItLies.xmp, blocks.xmp);
}

TEST_F(MetadataTest, PlacesInPixelsGoWhereTheyWouldMeanOthers) {
    ExifToMake exif;
    exif.photo = {
        {0x9214, ExifEntry{3, 2, {5, 0, 6, 0}}}, {widthTag, asLong(20)}, {heightTag, asLong(10)}};
    EXPECT_EQ(adjustedExif(exif, false, false).photo.count(0x9214), 1U);
    EXPECT_EQ(adjustedExif(exif, true, false).photo.count(0x9214), 0U);
    exif.photo[widthTag] = asLong(200);
    EXPECT_EQ(adjustedExif(exif, false, false).photo.count(0x9214), 0U);
}

TEST_F(MetadataTest, ASizeThatExifDoesNotTellIsNotAdded) {
    ExifToMake exif;
    exif.photo = {{0x9003, asText("2024:05:06 07:08:09")}};
    EXPECT_EQ(adjustedExif(exif, false, false).photo.count(widthTag), 0U);
}

// ---- Places ----

TEST_F(MetadataTest, WithoutLocationNothingOfItIsLeftInTheFile) {
    MetadataBlocks blocks;
    ExifToMake exif = cameraExif();
    exif.photo[makerTag] = asBytes(bytesOf("maker: Hiddenville"));
    exif.gps[0x001D] = asText("1999:12:31");
    blocks.exif = exif.bytes();
    blocks.iptc = joined(joined(iptcSet(5, "A title"), iptcSet(90, "Cityville")),
                         joined(iptcSet(92, "Streetville"), iptcSet(101, "Countryland")));
    blocks.xmp = bytesOf(
        xmpPacket("<dc:format>image/jpeg</dc:format><exif:GPSLatitude>48,51.5N</exif:GPSLatitude>"
                  "<photoshop:City>Cityville</photoshop:City><photoshop:Country>Countryland"
                  "</photoshop:Country><Iptc4xmpCore:Location>Streetville</Iptc4xmpCore:Location>"
                  "<Iptc4xmpExt:LocationShown><rdf:Bag><rdf:li rdf:parseType=\"Resource\">"
                  "<Iptc4xmpExt:City>Shownville</Iptc4xmpExt:City></rdf:li></rdf:Bag>"
                  "</Iptc4xmpExt:LocationShown><odd:FlightLatitude>48.85</odd:FlightLatitude>"
                  "<odd:Pilot>somebody</odd:Pilot>"));
    LeftOut none;
    const ByteString all = packed(blocks, mostMetadataBytes, none);
    for (const char* extension : {"jpg", "psd", "tif"}) {
        const FoundMetadata found = again({all, false, true}, extension);
        EXPECT_EQ(leftOut, "");
        const std::string file(written_.begin(), written_.end());
        for (const char* word : {"ville", "Countryland", "48,51", "48.85", "1999:12", "GPS"})
            EXPECT_THAT(file.find(word), std::string::npos) << word << " in " << extension;
        const MetadataBlocks kept = blocksOf(found);
        const ExifRead read(kept.exif);
        EXPECT_TRUE(read.gps.empty());
        EXPECT_EQ(read.image.count(0x8825), 0U);
        EXPECT_EQ(read.photo.at(0x829A).value, asRationals({{1, 250}}).value);
        EXPECT_EQ(kept.iptc, iptcSet(5, "A title"));
        EXPECT_THAT(file, HasSubstr("image/jpeg"));
        EXPECT_THAT(file, HasSubstr("somebody"));
    }
}

TEST_F(MetadataTest, WhatHoldsNoPlaceStaysToTheByteWithoutLocation) {
    MetadataBlocks blocks;
    blocks.iptc = iptcSet(5, "A title");
    blocks.xmp = bytesOf(xmpPacket("<dc:format>image/jpeg</dc:format>"));
    EXPECT_EQ(adjusted(blocks, false, true), blocks);
}

TEST_F(MetadataTest, APictureDoesNotHangOnThoseBeforeIt) {
    MetadataBlocks one, other;
    one.xmp = bytesOf(xmpPacket("<odd:A>1</odd:A><tiff:ImageWidth>1</tiff:ImageWidth>"));
    std::string text = xmpPacket("<odd:B>2</odd:B><tiff:ImageWidth>1</tiff:ImageWidth>");
    text.replace(text.find("http://example.org/odd/"), 23, "http://example.org/new/");
    other.xmp = bytesOf(text);
    const ByteString alone = adjusted(other, false, false).xmp;
    adjusted(one, false, false);
    EXPECT_EQ(adjusted(other, false, false).xmp, alone);
}

}  // namespace
}  // namespace tessarine::tests
