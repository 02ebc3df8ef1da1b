#include "metadata_fixture.h"

// What was true of the picture that was read, and is not of the one that is written.

namespace tessarine::tests {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr uint16_t subjectTag = 0x9214;
constexpr uint16_t firstWidthTag = 0x0100;
constexpr uint16_t firstHeightTag = 0x0101;

class MetadataStale : public MetadataTest {
  protected:
    std::string written() const { return {written_.begin(), written_.end()}; }

    /// Of a camera whose part of EXIF tells a place and a length: `part` makes it of these.
    template <class Part>
    static ByteString cameraWithPreview(const std::string& maker, Part part) {
        ExifToMake exif;
        exif.image = {{0x010F, asText(maker)}, {0x0110, asText("A model")}};
        exif.photo = {{0x829A, asRationals({{1, 250}})}, {makerTag, asBytes(part(0))}};
        const ByteString bytes = exif.bytes();
        const size_t place = ExifRead(bytes).placeOf(preview());
        exif.photo[makerTag] = asBytes(part(static_cast<uint32_t>(place)));
        return exif.bytes();
    }
    static ByteString preview() {
        return joined({0xFF, 0xD8, 0xFF, 0xE0}, bytesOf("a small picture in the maker's part"));
    }
    static void putEntry(ByteString& bytes, uint16_t tag, const ExifEntry& entry) {
        put(bytes, tag, 2);
        put(bytes, entry.kind, 2);
        put(bytes, entry.count, 4);
        bytes.insert(bytes.end(), entry.value.begin(), entry.value.end());
        bytes.resize(bytes.size() + 4 - entry.value.size());
    }
};

TEST_F(MetadataStale, AWordThatADamagedBlockHoldsTwiceIsTrueBothTimes) {
    MetadataBlocks blocks;
    blocks.exif = bytesOf("II*");
    put(blocks.exif, 0, 1);
    put(blocks.exif, 8, 4);
    put(blocks.exif, 3, 2);
    putEntry(blocks.exif, 0x010F, asText("abc"));
    putEntry(blocks.exif, orientationTag, asShort(6));
    putEntry(blocks.exif, orientationTag, asShort(3));
    put(blocks.exif, 0, 4);
    for (const char* extension : {"jpg", "png", "tif", "psd"}) {
        LeftOut none;
        const MetadataToAdd upright{packed(blocks, mostMetadataBytes, none), true, false};
        EXPECT_EQ(again(upright, extension).orientation, 1) << extension;
    }
}

// ---- Sizes ----

TEST_F(MetadataStale, TheSizeInTheFirstDirectoryIsTheOutputs) {
    ExifToMake exif;
    exif.image = {{firstWidthTag, asLong(4000)}, {firstHeightTag, asShort(3000)}};
    const ExifRead read = adjustedExif(exif, false, false);
    EXPECT_EQ(ExifRead::numberIn(read.image, firstWidthTag), 20U);
    EXPECT_EQ(ExifRead::numberIn(read.image, firstHeightTag), 10U);
    EXPECT_EQ(read.image.at(firstHeightTag).kind, 3);
}

TEST_F(MetadataStale, PlacesInPixelsGoWhereverAnotherSizeIsTold) {
    const auto subjectIsKept = [&](const ExifDirectory& image, const ExifDirectory& photo,
                                   const std::string& words) {
        ExifToMake exif;
        exif.image = image;
        exif.photo = photo;
        exif.photo[subjectTag] = ExifEntry{3, 2, {5, 0, 6, 0}};
        std::string packet =
            xmpPacket(words +
                      "<MP:RegionInfo rdf:parseType=\"Resource\"><odd:Face>a friend"
                      "</odd:Face></MP:RegionInfo>");
        packet.insert(packet.find("xmlns:dc="), "xmlns:MP=\"http://ns.microsoft.com/photo/1.2/\" ");
        MetadataBlocks blocks;
        blocks.exif = exif.bytes();
        blocks.xmp = bytesOf(packet);
        const MetadataBlocks kept = adjusted(blocks, false, false);
        const bool isKept = ExifRead(kept.exif).photo.count(subjectTag) != 0;
        const std::string xmp(kept.xmp.begin(), kept.xmp.end());
        EXPECT_EQ(xmp.find("a friend") != std::string::npos, isKept) << words;
        return isKept;
    };
    EXPECT_TRUE(subjectIsKept({}, {}, ""));
    EXPECT_TRUE(subjectIsKept({{firstWidthTag, asLong(20)}}, {{heightTag, asLong(10)}},
                              "<tiff:ImageWidth>20</tiff:ImageWidth>"));
    EXPECT_FALSE(subjectIsKept({{firstWidthTag, asLong(40)}}, {}, ""));
    EXPECT_FALSE(subjectIsKept({{firstHeightTag, asLong(30)}}, {}, ""));
    EXPECT_FALSE(subjectIsKept({}, {{widthTag, asLong(40)}}, ""));
    EXPECT_FALSE(subjectIsKept({}, {{heightTag, asLong(30)}}, ""));
    for (const char* word :
         {"exif:PixelXDimension", "exif:PixelYDimension", "tiff:ImageWidth", "tiff:ImageLength"}) {
        const std::string name(word);
        EXPECT_FALSE(subjectIsKept({}, {}, "<" + name + ">40</" + name + ">")) << name;
    }
}

TEST_F(MetadataStale, WhereAMapLiesGoesWithItsSizeAndWhatItIsCountedInStays) {
    ExifToMake exif;
    exif.image = {{firstWidthTag, asLong(20)},
                  {33550, asText("a scale")},
                  {33922, asText("a point")},
                  {34735, asText("of what system")}};
    EXPECT_EQ(adjustedExif(exif, false, false).image.count(33550), 1U);
    for (const bool isTurned : {false, true}) {
        exif.image[firstWidthTag] = asLong(isTurned ? 20 : 40);
        const ExifRead read = adjustedExif(exif, isTurned, false);
        EXPECT_EQ(read.image.count(33550) + read.image.count(33922), 0U);
        EXPECT_EQ(read.image.count(34735), 1U);
    }
}

// ---- Small pictures ----

TEST_F(MetadataStale, AThumbnailInStripsGoesWithAllThatIsSaidOfIt) {
    ExifToMake first;
    first.image = {{0x010F, asText("A maker of cameras")}};
    MetadataBlocks blocks;
    ByteString& exif = blocks.exif = first.bytes();
    constexpr size_t link = 8 + 2 + 12;
    const auto directory = static_cast<uint32_t>(exif.size());
    for (size_t i = 0; i < 4; ++i)
        exif[link + i] = static_cast<uint8_t>(directory >> (8 * i));
    const auto behind = static_cast<uint32_t>(directory + 2 + 4 * 12 + 4);
    const std::string words = "small's software", strips = "one strip, another one";
    put(exif, 4, 2);
    putEntry(exif, 0x0103, asShort(1));
    ExifEntry places{4, 2, {}}, lengths{3, 2, {}};
    put(places.value, behind, 4);
    putEntry(exif, 0x0111, places);
    put(lengths.value, 11, 2);
    put(lengths.value, strips.size() - 11, 2);
    putEntry(exif, 0x0117, lengths);
    ExifEntry software{2, static_cast<uint32_t>(words.size()), {}};
    put(software.value, behind + 8, 4);
    putEntry(exif, 0x0131, software);
    put(exif, 0, 4);
    put(exif, behind + 8 + words.size(), 4);
    put(exif, behind + 8 + words.size() + 11, 4);
    exif = joined(joined(exif, bytesOf(words)), bytesOf(strips));

    const ExifRead read(adjusted(blocks, false, false).exif);
    EXPECT_FALSE(read.hasThumbnail);
    EXPECT_EQ(read.image.at(0x010F).value, asText("A maker of cameras").value);
    EXPECT_THAT(written(), Not(HasSubstr("strip")));
    EXPECT_THAT(written(), Not(HasSubstr("another")));
    EXPECT_THAT(written(), Not(HasSubstr("software")));
}

TEST_F(MetadataStale, ValuesThatAThumbnailSharesWithThePictureStay) {
    ExifToMake made;
    made.image = {{0x011A, asRationals({{300, 1}})}};
    made.thumbnail = bytesOf("a small picture");
    ByteString exif = made.bytes();
    const size_t value = ExifRead(exif).placeOf(asRationals({{300, 1}}).value);
    // The second directory has its picture's coding first: let that be the resolution instead.
    const size_t second = value + 8;
    ByteString entry;
    put(entry, 0x011A, 2);
    put(entry, 5, 2);
    put(entry, 1, 4);
    put(entry, value, 4);
    std::copy(entry.begin(), entry.end(), exif.begin() + static_cast<ptrdiff_t>(second) + 2);
    MetadataBlocks blocks;
    blocks.exif = exif;
    const ExifRead read(adjusted(blocks, false, false).exif);
    EXPECT_FALSE(read.hasThumbnail);
    EXPECT_EQ(read.image.at(0x011A).value, asRationals({{300, 1}}).value);
}

TEST_F(MetadataStale, OtherPicturesOfATiffFileAreNotKept) {
    const FoundMetadata found = metadataIn(cameraExif().bytes(), "tif");
    EXPECT_EQ(found.orientation, 6);
    EXPECT_FALSE(ExifRead(blocksOf(found).exif).hasThumbnail);
    EXPECT_THAT(std::string(found.packed.begin(), found.packed.end()),
                Not(HasSubstr("a small picture")));
}

TEST_F(MetadataStale, PreviewsThatAMakerTellsByPlaceAndLengthGoWithTheirBytes) {
    const auto length = static_cast<uint32_t>(preview().size());
    const ByteString makers[] = {cameraWithPreview("PENTAX Corporation",
                                                   [&](uint32_t place) {
                                                       ByteString part = bytesOf({"AOC\0II", 6});
                                                       put(part, 3, 2);
                                                       putEntry(part, 1, asShort(4));
                                                       putEntry(part, 3, asLong(length));
                                                       putEntry(part, 4, asLong(place));
                                                       put(part, 0, 4);
                                                       return joined(part, preview());
                                                   }),
                                 cameraWithPreview("Minolta Co., Ltd.", [&](uint32_t place) {
                                     ByteString part;
                                     put(part, 3, 2);
                                     putEntry(part, 0, asBytes(bytesOf("MLT0")));
                                     putEntry(part, 0x88, asLong(place));
                                     putEntry(part, 0x89, asLong(length));
                                     put(part, 0, 4);
                                     return joined(part, preview());
                                 })};
    for (const ByteString& maker : makers) {
        MetadataBlocks blocks;
        blocks.exif = maker;
        const ExifRead read(adjusted(blocks, false, false).exif);
        EXPECT_EQ(leftOut, "");
        EXPECT_EQ(read.photo.at(0x829A).value, asRationals({{1, 250}}).value);
        EXPECT_EQ(read.photo.count(makerTag), 1U);
        EXPECT_THAT(written(), Not(HasSubstr("a small picture")));
    }
}

// ---- What has no room ----

TEST_F(MetadataStale, AProfileThatIsFilledUpIsCutToItsSizeAndCostsNothingElse) {
    const FoundMetadata found =
        foundIn({{0xE1, exifSegment(cameraExif().bytes())},
                 {0xE2, profileSegment(joined(profile("RGB "), ByteString(6, 0)), 1, 1)}});
    EXPECT_EQ(blocksOf(found).icc, profile("RGB "));
    for (const char* extension : {"jpg", "png", "tif", "psd"}) {
        const FoundMetadata kept = again({found.packed, false, false}, extension);
        EXPECT_EQ(leftOut, "") << extension;
        EXPECT_EQ(kept.orientation, 6) << extension;
        EXPECT_EQ(blocksOf(kept).icc, profile("RGB ")) << extension;
    }
}

TEST_F(MetadataStale, TagsForWhichABlockThatIsWrittenAnewHasNoRoomAreNamed) {
    ExifToMake exif;
    exif.image = {{0x010F, asText("A maker of cameras")}, {34377, asText("to be dropped")}};
    exif.photo = {{0x9286, asBytes(ByteString(70000, 'x'))}};
    MetadataBlocks blocks;
    blocks.exif = exif.bytes();
    LeftOut none;
    const FoundMetadata found =
        again({packed(blocks, mostMetadataBytes, none), false, false}, "psd");
    EXPECT_EQ(ExifRead(blocksOf(found).exif).photo.count(0x9286), 0U);
    EXPECT_EQ(leftOut, "UserComment of EXIF, 70000 bytes, for which a block has no room");
    exif.image.erase(34377);
    EXPECT_THAT(metadataIn(exif.bytes(), "tif").leftOut, HasSubstr("UserComment of EXIF"));
}

}  // namespace
}  // namespace tessarine::tests
