#include <fcntl.h>
#include <sys/stat.h>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "imagefiles/metadata.h"
#include "imagefiles/metadata/blocks.h"
#include "imagefiles/picture_files.h"
#include "pixels/orientation.h"
#include "runner_fixture.h"
#include "support/exif.h"

// What files say beyond their pixels.

namespace tessarine::tests {
namespace {

using nlohmann::json;
using testing::HasSubstr;

class RunnerMetadata : public Runner {
  protected:
    /// A JPEG with EXIF that has it lie on its side, XMP, IPTC, a profile, and a time of its own.
    std::string photograph(const std::string& name, uint16_t orientation = 6) {
        ExifToMake exif;
        exif.image = {{0x0112, asShort(orientation)}, {0x010F, asText("A maker of cameras")}};
        exif.photo = {{0xA002, asLong(40)}, {0xA003, asLong(30)}};
        exif.gps = {{0x0001, asText("N")}, {0x0002, asRationals({{48, 1}, {51, 1}, {29, 1}})}};
        exif.thumbnail = bytesOf("a small picture");
        return jpeg(name,
                    {{0xE1, exifSegment(exif.bytes())},
                     {0xE1, xmpSegment(xmpPacket("<photoshop:City>Cityville</photoshop:City>"))},
                     {0xED, iptcSegment(joined(iptcSet(5, "A title"), iptcSet(90, "Cityville")))},
                     {0xE2, profileSegment(profile("RGB "), 1, 1)}});
    }
    std::string jpeg(const std::string& name,
                     const std::vector<std::pair<uint8_t, ByteString>>& segments) {
        const std::string path = in + "/" + name;
        OutputFile file;
        EXPECT_TRUE(file.create(path));
        const WriteOutcome written =
            localFiles().write(Bitmap(randomBuffer(40, 30, 5)), "jpg", 7, file);
        EXPECT_EQ(errorClass(written.error), "");
        EXPECT_TRUE(file.finish());
        const ByteString made = jpegWithSegments(bytesOf(readFile(path)), segments);
        writeFile(path, {made.begin(), made.end()});
        const timespec times[2] = {{1000000000, 0}, {1234567890, 123456789}};
        EXPECT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
        return path;
    }
    std::vector<json> reported(std::vector<std::string> words) {
        words.insert(words.begin(), {"--to", out, "--report", "-", "--quiet"});
        const Finished end = run(std::move(words));
        status = end.status;
        std::vector<json> entries;
        for (const std::string& line : linesOf(end.out))
            entries.push_back(json::parse(line));
        entries.pop_back();
        return entries;
    }
    FoundMetadata foundIn(const std::string& output) const {
        const std::string bytes = readFile(out + "/" + output);
        return metadataIn(bytesOf(bytes), output.substr(output.rfind('.') + 1));
    }
    static MetadataBlocks blocksOf(const FoundMetadata& found) {
        return unpacked(found.packed).value();
    }

    int status = 0;
};

TEST_F(RunnerMetadata, IsNotKeptWithoutBeingAskedFor) {
    const std::string photo = photograph("a.jpg");
    const std::string bare = jpeg("b.jpg", {});
    ASSERT_EQ(run({"--to", out, "--format", "jpg-good", photo, bare}).status, 0);
    EXPECT_EQ(readFile(out + "/Sample1.jpg"), readFile(out + "/Sample2.jpg"));
    EXPECT_TRUE(foundIn("Sample1.jpg").packed.empty());
    struct stat file {};
    ASSERT_EQ(::stat((out + "/Sample1.jpg").c_str(), &file), 0);
    EXPECT_NE(file.st_mtim.tv_sec, 1234567890);
}

TEST_F(RunnerMetadata, StrippingAloneChangesNoByte) {
    const std::string photo = photograph("a.jpg");
    for (const char* format : {"jpg-good", "png", "tif", "psd"}) {
        ASSERT_EQ(run({"--to", out, "--format", format, "--name", "A", photo}).status, 0);
        ASSERT_EQ(
            run({"--to", out, "--format", format, "--name", "B", "--strip-location", photo}).status,
            0);
        const std::string extension = std::string(format).substr(0, 3);
        EXPECT_EQ(readFile(out + "/A1." + extension), readFile(out + "/B1." + extension));
    }
}

TEST_F(RunnerMetadata, APictureWithoutMetadataIsTheSameWithAllOptions) {
    const std::string bare = jpeg("b.jpg", {});
    const std::string grey = Runner::grey("c.ppm", 90);
    for (const char* format : {"jpg-good", "png", "tif", "psd", "gif256", "tga"}) {
        ASSERT_EQ(run({"--to", out, "--format", format, "--name", "A", bare, grey}).status, 0);
        ASSERT_EQ(run({"--to", out, "--format", format, "--name", "B", "--keep-metadata",
                       "--auto-orient", "--strip-location", bare, grey})
                      .status,
                  0);
        const std::string extension = std::string(format).substr(0, 3);
        for (const char* number : {"1.", "2."})
            EXPECT_EQ(readFile(out + "/A" + number + extension),
                      readFile(out + "/B" + number + extension))
                << format;
    }
}

TEST_F(RunnerMetadata, IsKeptWithTheTimeOfTheFile) {
    const std::string photo = photograph("a.jpg");
    const auto entries = reported({"--format", "jpg-good", "--keep-metadata", photo});
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0]["status"], "saved");
    EXPECT_EQ(entries[0]["message"], "");
    EXPECT_EQ(entries[0]["bytes"], fs::file_size(out + "/Sample1.jpg"));
    const FoundMetadata found = foundIn("Sample1.jpg");
    EXPECT_EQ(found.orientation, 6);  // as it lies
    const MetadataBlocks blocks = blocksOf(found);
    const ExifRead exif(blocks.exif);
    EXPECT_EQ(exif.image.at(0x010F).value, asText("A maker of cameras").value);
    EXPECT_FALSE(exif.gps.empty());
    EXPECT_FALSE(exif.hasThumbnail);
    EXPECT_EQ(blocks.iptc, joined(iptcSet(5, "A title"), iptcSet(90, "Cityville")));
    EXPECT_THAT(std::string(blocks.xmp.begin(), blocks.xmp.end()), HasSubstr("Cityville"));
    EXPECT_EQ(blocks.icc, profile("RGB "));
    struct stat file {};
    ASSERT_EQ(::stat((out + "/Sample1.jpg").c_str(), &file), 0);
    EXPECT_EQ(file.st_mtim.tv_sec, 1234567890);
    EXPECT_EQ(file.st_mtim.tv_nsec, 123456789);
}

TEST_F(RunnerMetadata, TheTimeOfTheFileIsKeptInAllFormats) {
    const std::string photo = photograph("a.jpg");
    for (int row = 0; row < 18; ++row) {
        const std::string name = "R" + std::to_string(row) + "_";
        ASSERT_EQ(run({"--to", out, "--name", name, "--format", std::to_string(row),
                       "--keep-metadata", photo})
                      .status,
                  0);
    }
    EXPECT_EQ(outputs().size(), 18U);
    for (const std::string& output : outputs()) {
        struct stat file {};
        ASSERT_EQ(::stat((out + "/" + output).c_str(), &file), 0);
        EXPECT_EQ(file.st_mtim.tv_sec, 1234567890) << output;
    }
}

TEST_F(RunnerMetadata, PicturesAreTurnedUprightBeforeTheFunctions) {
    std::vector<std::string> photos;
    for (uint16_t orientation = 1; orientation <= 8; ++orientation)
        photos.push_back(photograph(std::to_string(orientation) + ".jpg", orientation));
    std::vector<std::string> words{"--format", "bmp", "--auto-orient", "--jobs", "3"};
    words.insert(words.end(), photos.begin(), photos.end());
    const auto entries = reported(words);
    ASSERT_EQ(entries.size(), 8U);
    const PixelBuffer picture = localFiles().read(photos[0], "jpg").bitmap->pixels();
    for (int32_t orientation = 1; orientation <= 8; ++orientation) {
        const json& entry = entries[static_cast<size_t>(orientation - 1)];
        EXPECT_EQ(entry["width"], orientation > 4 ? 30 : 40);
        EXPECT_EQ(entry["height"], orientation > 4 ? 40 : 30);
        const std::string output = out + "/Sample" + std::to_string(orientation) + ".bmp";
        EXPECT_TRUE(readBitmapFile(output) == turnedUpright(picture, orientation)) << orientation;
    }
}

TEST_F(RunnerMetadata, ATurnedPictureSaysThatItIsUprightAndHowLargeItIs) {
    const std::string photo = photograph("a.jpg");
    ASSERT_EQ(run({"--to", out, "--format", "jpg-good", "--auto-orient", "--keep-metadata",
                   "--jobs", "1", photo})
                  .status,
              0);
    const FoundMetadata found = foundIn("Sample1.jpg");
    EXPECT_EQ(found.orientation, 1);
    const ExifRead exif(blocksOf(found).exif);
    EXPECT_EQ(ExifRead::numberIn(exif.photo, 0xA002), 30U);
    EXPECT_EQ(ExifRead::numberIn(exif.photo, 0xA003), 40U);
}

TEST_F(RunnerMetadata, TurningAloneKeepsNothing) {
    const std::string photo = photograph("a.jpg");
    ASSERT_EQ(run({"--to", out, "--format", "jpg-good", "--auto-orient", photo}).status, 0);
    EXPECT_TRUE(foundIn("Sample1.jpg").packed.empty());
}

TEST_F(RunnerMetadata, OfWhatTurningDoesNotNeedNothingIsTold) {
    ExifToMake exif;
    exif.image = {{0x0112, asShort(6)}};
    const std::string photo = jpeg("a.jpg", {{0xE1, exifSegment(exif.bytes())},
                                             {0xE1, xmpSegment("<no packet>")},
                                             {0xE2, profileSegment(profile("CMYK"), 1, 1)}});
    const auto turned = reported({"--format", "bmp", "--auto-orient", photo});
    EXPECT_EQ(turned[0]["message"], "");
    EXPECT_EQ(turned[0]["width"], 30);
    const auto kept =
        reported({"--format", "bmp", "--overwrite", "--auto-orient", "--keep-metadata", photo});
    EXPECT_THAT(kept[0]["message"].get<std::string>(), HasSubstr("XMP, which is damaged"));
}

TEST_F(RunnerMetadata, WithoutLocationNoPlaceIsLeft) {
    const std::string photo = photograph("a.jpg");
    ASSERT_EQ(
        run({"--to", out, "--format", "jpg-good", "--keep-metadata", "--strip-location", photo})
            .status,
        0);
    const std::string file = readFile(out + "/Sample1.jpg");
    EXPECT_EQ(file.find("Cityville"), std::string::npos);
    const MetadataBlocks blocks = blocksOf(foundIn("Sample1.jpg"));
    EXPECT_TRUE(ExifRead(blocks.exif).gps.empty());
    EXPECT_EQ(blocks.iptc, iptcSet(5, "A title"));
    EXPECT_EQ(blocks.icc, profile("RGB "));
}

TEST_F(RunnerMetadata, DamageCostsTheMetadataAndNotThePicture) {
    const std::string damaged = jpeg("d.jpg", {{0xE1, exifSegment(bytesOf("nothing of the kind"))},
                                               {0xED, iptcSegment(iptcSet(5, "A title"))},
                                               {0xE2, profileSegment(profile("CMYK"), 1, 1)}});
    const auto entries =
        reported({"--format", "jpg-good", "--keep-metadata", "--auto-orient", damaged});
    EXPECT_EQ(status, 0);
    EXPECT_EQ(entries[0]["status"], "saved");
    EXPECT_EQ(entries[0]["error"], "");
    EXPECT_EQ(entries[0]["message"],
              "left out of the metadata: EXIF, which is damaged; the colour profile: it is for "
              "CMYK, and the picture is written in RGB");
    EXPECT_EQ(blocksOf(foundIn("Sample1.jpg")).iptc, iptcSet(5, "A title"));
}

TEST_F(RunnerMetadata, OutputsDoNotHangOnTheNumberOfJobs) {
    std::vector<std::string> words{"--format", "jpg-good", "--keep-metadata", "--auto-orient"};
    for (int i = 0; i < 12; ++i)
        words.push_back(photograph(std::to_string(i) + ".jpg", static_cast<uint16_t>(i % 8 + 1)));
    std::vector<std::string> one = words, many = words;
    one.insert(one.begin(), {"--name", "One", "--jobs", "1", "--to", out});
    many.insert(many.begin(), {"--name", "Many", "--jobs", "4", "--to", out});
    ASSERT_EQ(run(one).status, 0);
    ASSERT_EQ(run(many).status, 0);
    for (int i = 1; i <= 12; ++i)
        EXPECT_EQ(readFile(out + "/One" + std::to_string(i) + ".jpg"),
                  readFile(out + "/Many" + std::to_string(i) + ".jpg"));
}

TEST_F(RunnerMetadata, TheWindowsRunRefusesAllThree) {
    const std::string photo = photograph("a.jpg");
    for (const char* option : {"--auto-orient", "--keep-metadata", "--strip-location"})
        expectRefused(runTo({"--mode", "window", option, photo}), 2,
                      {option, "--mode independent"});
}

}  // namespace
}  // namespace tessarine::tests
