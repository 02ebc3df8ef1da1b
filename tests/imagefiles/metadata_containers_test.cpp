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

// ---- JPEG ----

// ---- PNG ----

}  // namespace
}  // namespace tessarine::tests
