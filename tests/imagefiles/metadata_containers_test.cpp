#include <tiffio.h>
#include <zlib.h>

#include "metadata_fixture.h"
#include "pixels/orientation.h"

// Files that are odd, and what they say all the same.

namespace tessarine::tests {
namespace {

using testing::HasSubstr;

class MetadataContainers : public MetadataTest {
  protected:
    static ByteString uprightExif(uint16_t orientation) {
        ExifToMake exif;
        exif.image = {{orientationTag, asShort(orientation)},
                      {0x010F, asText("A maker of cameras")}};
        return exif.bytes();
    }
    static ByteString chunk(const std::string& kind, const ByteString& contents) {
        const ByteString body = joined(bytesOf(kind), contents);
        ByteString made;
        const auto putHigh = [&](uint64_t number) {
            for (int shift = 24; shift >= 0; shift -= 8)
                made.push_back(static_cast<uint8_t>(number >> shift));
        };
        putHigh(contents.size());
        made = joined(made, body);
        putHigh(crc32(0, body.data(), static_cast<uInt>(body.size())));
        return made;
    }
    static ByteString deflated(const ByteString& bytes) {
        uLongf room = compressBound(bytes.size());
        ByteString made(room);
        EXPECT_EQ(compress(made.data(), &room, bytes.data(), bytes.size()), Z_OK);
        made.resize(room);
        return made;
    }
    /// With a chunk of EXIF, and another one behind it.
    FoundMetadata foundInPng(const ByteString& other) {
        constexpr ptrdiff_t endOfHeader = 33;
        const ByteString plain = bytesOf(plainFile("png"));
        ByteString made(plain.begin(), plain.begin() + endOfHeader);
        made = joined(joined(made, chunk("eXIf", uprightExif(6))), other);
        made.insert(made.end(), plain.begin() + endOfHeader, plain.end());
        return metadataIn(made, "png");
    }
    /// A TIFF file of 40 by 24 pixels in colours that are no plain red, green and blue.
    std::string colourTiff(uint16_t photometric, uint16_t orientation) {
        const std::string path = scratch / ("colours" + std::to_string(orientation) + ".tif");
        TIFF* const tiff = TIFFOpen(path.c_str(), "w");
        const bool isYcbcr = photometric == PHOTOMETRIC_YCBCR;
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 40);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 24);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 3);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, isYcbcr ? COMPRESSION_JPEG : COMPRESSION_NONE);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometric);
        TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        TIFFSetField(tiff, TIFFTAG_ORIENTATION, orientation);
        if (isYcbcr) TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 16);
        for (uint32_t y = 0; y < 24; ++y) {
            ByteString row;
            for (uint32_t x = 0; x < 40; ++x)
                for (const uint32_t level : {x * 6, y * 4, x < 10 && y < 5 ? 100u : 0u})
                    row.push_back(static_cast<uint8_t>(level));
            EXPECT_EQ(TIFFWriteScanline(tiff, row.data(), y, 0), 1);
        }
        TIFFClose(tiff);
        return path;
    }
};

// ---- TIFF ----

TEST_F(MetadataContainers, PixelsOfAllTiffFilesComeAsTheyAreStoredWithTheWordOnHowTheyLie) {
    for (const uint16_t photometric : {PHOTOMETRIC_YCBCR, PHOTOMETRIC_CIELAB}) {
        const ReadOutcome upright = localFiles().read(colourTiff(photometric, 1), "tif");
        ASSERT_TRUE(upright.bitmap);
        for (uint16_t orientation = 1; orientation <= 8; ++orientation) {
            const ReadOutcome read =
                localFiles().readWithMetadata(colourTiff(photometric, orientation), "tif");
            ASSERT_TRUE(read.bitmap) << read.message;
            EXPECT_EQ(read.metadata.orientation, orientation);
            EXPECT_TRUE(*read.bitmap == *upright.bitmap) << photometric << ", " << orientation;
            EXPECT_EQ(read.depth, upright.depth);
        }
    }
}

TEST_F(MetadataContainers, OfATiffFileWithPlacesOf64BitsAllIsLeftOutWithAWord) {
    for (const bool hasWords : {false, true}) {
        const std::string path = scratch / "large.tif";
        TIFF* const tiff = TIFFOpen(path.c_str(), "w8");
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 1);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 1);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
        TIFFSetField(tiff, TIFFTAG_XRESOLUTION, 72.0);
        TIFFSetField(tiff, TIFFTAG_ORIENTATION, hasWords ? 6 : 1);
        uint8_t pixel = 7;
        ASSERT_EQ(TIFFWriteScanline(tiff, &pixel, 0, 0), 1);
        TIFFClose(tiff);
        const FoundMetadata found = metadataIn(bytesOf(readFile(path)), "tif");
        EXPECT_TRUE(found.packed.empty());
        EXPECT_EQ(found.leftOut.empty(), !hasWords) << found.leftOut;
        if (hasWords) {
            EXPECT_THAT(found.leftOut, HasSubstr("64 bits"));
        }
    }
}

// ---- JPEG ----

TEST_F(MetadataContainers, StrayBytesBetweenSegmentsOfAJpegFileArePassedOver) {
    const ByteString with =
        jpegWithSegments(bytesOf(plainFile("jpg")), {{0xE1, exifSegment(uprightExif(6))}});
    for (const ByteString& stray : {ByteString{0}, ByteString{1, 2, 3}, ByteString{0xFF, 0}}) {
        ByteString made(with.begin(), with.begin() + 2);
        made = joined(made, stray);
        made.insert(made.end(), with.begin() + 2, with.end());
        const std::string path = scratch / "stray.jpg";
        writeFile(path, {made.begin(), made.end()});
        const ReadOutcome read = localFiles().readWithMetadata(path, "jpg");
        EXPECT_TRUE(read.bitmap) << read.message;
        EXPECT_EQ(read.metadata.orientation, 6);
        EXPECT_EQ(blocksOf(read.metadata).exif, uprightExif(6));
    }
}

// ---- PNG ----

TEST_F(MetadataContainers, AnOddChunkOfAPngFileCostsNothingElse) {
    const ByteString lengthy(300000, 'x');
    const ByteString others[] = {
        chunk("zTXt", joined(bytesOf({"Comment\0\0", 9}), deflated(lengthy))),
        chunk("iTXt", joined(bytesOf({"parameters\0\1\0\0\0", 15}), deflated(lengthy))),
        chunk("zTXt", bytesOf({"K\0\0", 3})),
        chunk("zTXt", bytesOf({"Comment\0\0no such thing", 22})),
        chunk("tEXt", bytesOf("a text without a name")),
        chunk("tEXt", {}),
    };
    for (const ByteString& other : others) {
        const FoundMetadata found = foundInPng(other);
        EXPECT_EQ(found.orientation, 6);
        EXPECT_EQ(found.leftOut, "");
        EXPECT_EQ(blocksOf(found).exif, uprightExif(6));
    }
}

TEST_F(MetadataContainers, ADamagedBlockOfAPngFileIsLeftOutAlone) {
    const std::pair<ByteString, const char*> others[] = {
        {chunk("zTXt", bytesOf({"Raw profile type iptc\0\0no such thing", 36})), "IPTC"},
        {chunk("tEXt", bytesOf({"Raw profile type xmp\0\nxmp\n 9\n3c3", 31})), "XMP"},
        {chunk("iTXt", bytesOf({"XML:com.adobe.xmp\0\1\0\0\0short", 27})), "XMP"},
        {chunk("iCCP", bytesOf({"icc\0\0no such thing", 18})), "the colour profile"}};
    for (const auto& [other, name] : others) {
        const FoundMetadata found = foundInPng(other);
        EXPECT_EQ(found.orientation, 6);
        EXPECT_EQ(found.leftOut, std::string(name) + ", which is damaged");
    }
}

TEST_F(MetadataContainers, PackedXmpAndBlocksInDigitsAreReadFromPngFiles) {
    const ByteString packet =
        bytesOf(xmpPacket("<dc:format>image/png</dc:format>") + std::string(200000, ' '));
    EXPECT_EQ(blocksOf(foundInPng(chunk("iTXt", joined(bytesOf({"XML:com.adobe.xmp\0\1\0\0\0", 22}),
                                                       deflated(packet)))))
                  .xmp,
              packet);
    const ByteString iptc = iptcSet(5, "A title");
    std::string digits;
    for (const uint8_t byte : iptc) {
        digits += "0123456789ABCDEF"[byte >> 4];
        digits += "0123456789abcdef"[byte & 15];
        if (digits.size() % 7 == 0) digits += '\n';
    }
    const ByteString text =
        bytesOf("\niptc\n      " + std::to_string(iptc.size()) + "\n" + digits + "\n");
    EXPECT_EQ(
        blocksOf(foundInPng(chunk("tEXt", joined(bytesOf({"Raw profile type iptc\0", 22}), text))))
            .iptc,
        iptc);
}

TEST_F(MetadataContainers, WhatUnpacksToMoreThanIsKeptIsLeftOutWithAWord) {
    const ByteString huge(mostMetadataBytes * 5, ' ');
    const FoundMetadata found = foundInPng(
        chunk("iTXt", joined(bytesOf({"XML:com.adobe.xmp\0\1\0\0\0", 22}), deflated(huge))));
    EXPECT_EQ(found.orientation, 6);
    EXPECT_EQ(found.leftOut, "XMP, which is more than is kept of a picture");
}

// ---- What is wanted ----

TEST_F(MetadataContainers, ForTheOrientationAloneNothingElseIsTakenApart) {
    const ByteString damaged = chunk("iTXt", bytesOf({"XML:com.adobe.xmp\0\1\0\0\0short", 27}));
    constexpr ptrdiff_t endOfHeader = 33;
    const ByteString plain = bytesOf(plainFile("png"));
    ByteString png(plain.begin(), plain.begin() + endOfHeader);
    png = joined(joined(png, damaged), chunk("eXIf", uprightExif(6)));
    png.insert(png.end(), plain.begin() + endOfHeader, plain.end());
    const ByteString jpeg =
        jpegWithSegments(bytesOf(plainFile("jpg")),
                         {{0xE1, xmpSegment("<no packet>")}, {0xE1, exifSegment(uprightExif(6))}});
    for (const auto& [file, extension] : {std::pair(png, "png"), std::pair(jpeg, "jpg")}) {
        const FoundMetadata found =
            metadataIn(file, extension, mostMetadataBytes, MetadataWanted::orientation);
        EXPECT_EQ(found.orientation, 6);
        EXPECT_EQ(found.leftOut, "");
        EXPECT_TRUE(found.packed.empty());
        EXPECT_THAT(metadataIn(file, extension).leftOut, HasSubstr("XMP"));
    }
}

TEST_F(MetadataContainers, XmpOfVeryManyWordsIsLeftOutWithAWord) {
    std::string elements, attributes, items;
    for (int i = 0; i < 8100; ++i) {
        elements += "<odd:p" + std::to_string(i) + "/>";
        attributes += " odd:p" + std::to_string(i) + "='1'";
        items += "<rdf:li>xmp.did:" + std::to_string(i) + "</rdf:li>";
    }
    std::string withAttributes = xmpPacket("");
    withAttributes.insert(withAttributes.find(" xmlns:dc="), attributes);
    const std::string ofItems = xmpPacket("<photoshop:DocumentAncestors><rdf:Bag>" + items +
                                          "</rdf:Bag></photoshop:DocumentAncestors>");
    for (const std::string& packet : {xmpPacket(elements), withAttributes, ofItems}) {
        const bool isKept = packet == ofItems;
        const char* word = isKept ? "" : "XMP of more than 8000 properties";
        const FoundMetadata png = foundInPng(
            chunk("iTXt", joined(bytesOf({"XML:com.adobe.xmp\0\0\0\0\0", 22}), bytesOf(packet))));
        EXPECT_EQ(png.orientation, 6);
        EXPECT_EQ(png.leftOut, word);
        EXPECT_EQ(blocksOf(png).xmp.empty(), !isKept);
        ExifToMake exif;
        exif.image = {{orientationTag, asShort(6)}, {700, asBytes(bytesOf(packet))}};
        const FoundMetadata tiff = metadataIn(exif.bytes(), "tif");
        EXPECT_EQ(tiff.orientation, 6);
        EXPECT_EQ(tiff.leftOut, word);
        EXPECT_EQ(blocksOf(tiff).xmp.empty(), !isKept);
    }
}

}  // namespace
}  // namespace tessarine::tests
