#pragma once

#include <gmock/gmock.h>

#include "imagefiles/format_table.h"
#include "imagefiles/metadata.h"
#include "imagefiles/metadata/blocks.h"
#include "imagefiles/picture_files.h"
#include "support/exif.h"
#include "support/paths.h"
#include "support/pictures.h"
#include "support/program.h"

namespace tessarine::tests {

inline constexpr uint16_t orientationTag = 0x0112;
inline constexpr uint16_t widthTag = 0xA002;
inline constexpr uint16_t heightTag = 0xA003;
inline constexpr uint16_t makerTag = 0x927C;

inline int16_t rowOf(const std::string& extension) {
    int16_t row = 0;
    while (formatTable()[static_cast<size_t>(row)].extension != extension)
        ++row;
    return extension == "jpg" ? 6 : row;
}

inline MetadataBlocks blocksOf(const FoundMetadata& found) {
    const auto blocks = unpacked(found.packed);
    EXPECT_TRUE(blocks.has_value());
    return blocks.value_or(MetadataBlocks());
}

/// The EXIF of a camera, with a thumbnail, a maker's part and a place.
inline ExifToMake cameraExif() {
    ExifToMake exif;
    exif.image = {{0x010F, asText("A maker of cameras")},
                  {orientationTag, asShort(6)},
                  {0x011A, asRationals({{300, 1}})},
                  {0x011B, asRationals({{300, 1}})},
                  {0x0128, asShort(2)}};
    exif.photo = {{0x829A, asRationals({{1, 250}})},
                  {0x9003, asText("2024:05:06 07:08:09")},
                  {makerTag, asBytes(bytesOf("a part that nobody but its maker reads"))},
                  {widthTag, asLong(4000)},
                  {heightTag, asShort(3000)}};
    exif.gps = {{0x0001, asText("N")}, {0x0002, asRationals({{48, 1}, {51, 1}, {29, 1}})}};
    exif.thumbnail = bytesOf("a small picture of what was there before");
    return exif;
}

class MetadataTest : public testing::Test {
  protected:
    /// A file of 40 by 30 pixels.
    std::string plainFile(const std::string& extension) {
        const std::string path = scratch / ("plain." + extension);
        OutputFile file;
        EXPECT_TRUE(file.create(path));
        const WriteOutcome written =
            localFiles().write(Bitmap(randomBuffer(40, 30, 5)), extension, rowOf(extension), file);
        EXPECT_EQ(errorClass(written.error), "") << written.message;
        EXPECT_TRUE(file.finish());
        return readFile(path);
    }
    FoundMetadata foundIn(const std::vector<std::pair<uint8_t, ByteString>>& segments) {
        return metadataIn(jpegWithSegments(bytesOf(plainFile("jpg")), segments), "jpg");
    }
    /// Writes a picture of 20 by 10 pixels with metadata. \return what is found in the file
    FoundMetadata again(const MetadataToAdd& metadata, const std::string& extension) {
        const std::string path = scratch / ("again." + extension);
        OutputFile file;
        EXPECT_TRUE(file.create(path));
        const WriteOutcome written = localFiles().writeWithMetadata(
            Bitmap(randomBuffer(20, 10, 9)), extension, rowOf(extension), metadata, file);
        EXPECT_EQ(errorClass(written.error), "") << written.message;
        leftOut = written.leftOut;
        EXPECT_TRUE(file.finish());
        written_ = bytesOf(readFile(path));
        const ReadOutcome read = localFiles().readWithMetadata(path, extension);
        EXPECT_TRUE(read.bitmap) << extension << ": " << read.message;
        return read.metadata;
    }
    MetadataBlocks adjusted(const MetadataBlocks& blocks, bool isTurned, bool withoutLocation) {
        LeftOut none;
        return blocksOf(
            again({packed(blocks, mostMetadataBytes, none), isTurned, withoutLocation}, "jpg"));
    }
    ExifRead adjustedExif(const ExifToMake& exif, bool isTurned, bool withoutLocation) {
        MetadataBlocks blocks;
        blocks.exif = exif.bytes();
        return ExifRead(adjusted(blocks, isTurned, withoutLocation).exif);
    }

    const ScratchFolder scratch;
    std::string leftOut;
    ByteString written_;
};

}  // namespace tessarine::tests
