#include "metadata_fixture.h"

// Places that stand where few would look for them.

namespace tessarine::tests {
namespace {

using testing::HasSubstr;
using testing::Not;

class MetadataPlaces : public MetadataTest {
  protected:
    /// What is written without places, and the blocks that are found in it.
    MetadataBlocks stripped(const MetadataBlocks& blocks, const std::string& extension = "jpg") {
        LeftOut none;
        const MetadataBlocks kept =
            blocksOf(again({packed(blocks, mostMetadataBytes, none), false, true}, extension));
        file = std::string(written_.begin(), written_.end());
        return kept;
    }

    std::string file;
};

/// A directory of one word, behind the end of a block.
uint32_t appendDirectory(ByteString& exif, const std::string& word) {
    const auto place = static_cast<uint32_t>(exif.size());
    put(exif, 1, 2);
    put(exif, 0x001D, 2);
    put(exif, 2, 2);
    put(exif, word.size() + 1, 4);
    put(exif, exif.size() + 8, 4);
    put(exif, 0, 4);
    exif = joined(exif, bytesOf(word));
    put(exif, 0, 1);
    return place;
}

TEST_F(MetadataPlaces, ADirectoryOfPlacesGoesWhereverItHangs) {
    ExifToMake exif;
    exif.image = {{0x010F, asText("A maker of cameras")}};
    exif.photo = {{0x829A, asRationals({{1, 250}})}, {0x8825, asLong(0)}};
    const auto size = static_cast<uint32_t>(exif.bytes().size());
    exif.photo[0x8825] = asLong(size);
    MetadataBlocks blocks;
    blocks.exif = exif.bytes();
    ASSERT_EQ(appendDirectory(blocks.exif, "1999:12:31 in Hiddenville"), size);
    const ExifRead read(stripped(blocks).exif);
    EXPECT_EQ(read.photo.count(0x8825), 0U);
    EXPECT_EQ(read.photo.at(0x829A).value, asRationals({{1, 250}}).value);
    EXPECT_THAT(file, Not(HasSubstr("Hiddenville")));
}

TEST_F(MetadataPlaces, WhereTheMapOfATiffFileLiesGoes) {
    ExifToMake exif;
    exif.image = {{0x010F, asText("A maker of maps")},
                  {33550, asText("a scale that tells a place")},
                  {33922, asText("a point that tells a place")},
                  {34264, asText("a matrix that tells a place")},
                  {34735, asText("keys that tell a place")},
                  {34736, asText("numbers that tell a place")},
                  {34737, asText("names that tell a place")},
                  {42112, asText("words that tell a place")},
                  {50740, asText("private words that tell a place")}};
    MetadataBlocks blocks;
    blocks.exif = exif.bytes();
    for (const char* extension : {"jpg", "png", "tif", "psd"}) {
        const ExifRead read(stripped(blocks, extension).exif);
        EXPECT_EQ(read.image.at(0x010F).value, asText("A maker of maps").value) << extension;
        for (const uint16_t tag : {33550, 33922, 34264, 34735, 34736, 34737, 42112, 50740})
            EXPECT_EQ(read.image.count(tag), 0U) << tag << " in " << extension;
        EXPECT_THAT(file, Not(HasSubstr("a place"))) << extension;
    }
}

TEST_F(MetadataPlaces, BlocksWithinExifGoEvenIfPlacesAreKept) {
    for (const uint16_t tag : {700, 33723, 34377, 34675}) {
        ExifToMake exif;
        exif.image = {{0x010F, asText("A maker of cameras")},
                      {tag, asBytes(bytesOf("another block: Cityville"))}};
        const ExifRead read = adjustedExif(exif, false, false);
        EXPECT_EQ(read.image.count(tag), 0U) << tag;
        EXPECT_EQ(read.image.at(0x010F).value, asText("A maker of cameras").value);
        EXPECT_THAT(std::string(written_.begin(), written_.end()), Not(HasSubstr("Cityville")));
    }
}

TEST_F(MetadataPlaces, XmpOfAllCommonKindsNamesNone) {
    std::string packet = xmpPacket(
        "<geo:lat>48.8511</geo:lat><geo:long>2.3511</geo:long><geo:alt>8511</geo:alt>"
        "<xmpDM:shotLocation>Shotville</xmpDM:shotLocation>"
        "<prism:location>Printville</prism:location>"
        "<dc:coverage><rdf:Bag><rdf:li>Coverville</rdf:li></rdf:Bag></dc:coverage>"
        "<odd:Trip rdf:parseType=\"Resource\"><odd:City>Fieldville</odd:City>"
        "<odd:Guide>a friend</odd:Guide></odd:Trip>"
        "<dwc:stateProvince>Speciesville</dwc:stateProvince>"
        "<dc:format>image/jpeg</dc:format><exif:SubjectLocation>7</exif:SubjectLocation>");
    packet.insert(packet.find("xmlns:dc="),
                  "xmlns:geo=\"http://www.w3.org/2003/01/geo/wgs84_pos#\" "
                  "xmlns:xmpDM=\"http://ns.adobe.com/xmp/1.0/DynamicMedia/\" "
                  "xmlns:dwc=\"http://rs.tdwg.org/dwc/terms/\" "
                  "xmlns:prism=\"http://prismstandard.org/namespaces/basic/2.0/\" ");
    MetadataBlocks blocks;
    blocks.xmp = bytesOf(packet);
    stripped(blocks);
    EXPECT_EQ(leftOut, "");
    for (const char* word : {"ville", "8511", "3511"})
        EXPECT_THAT(file, Not(HasSubstr(word)));
    for (const char* word : {"a friend", "image/jpeg", "SubjectLocation"})
        EXPECT_THAT(file, HasSubstr(word));
}

}  // namespace
}  // namespace tessarine::tests
