#include <sys/mman.h>

#include <gmock/gmock.h>

#include "codec_fixture.h"
#include "imagefiles/metadata/blocks.h"
#include "support/exif.h"
#include "support/pictures.h"

// Metadata on its way between a program and its helper.

namespace tessarine::tests {
namespace {

using testing::HasSubstr;

/// A block that came with the last message, mapped.
class Mapped {
  public:
    Mapped(const Descriptor& file, uint64_t bytes) : bytes_(bytes) {
        start_ = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
    }
    ~Mapped() { ::munmap(start_, bytes_); }
    char* text() const { return static_cast<char*>(start_); }

  private:
    void* start_;
    uint64_t bytes_;
};

/// Serves a reading with metadata as a helper should.
void serveWithMetadata(HelperEndpoint& helper, const ReadRequest& request,
                       const std::string& metadata, ReadDone done) {
    std::vector<Descriptor> descriptors = std::move(helper.descriptors);
    helper.say(NeedBlock{request.number, side, side});
    const auto grant = helper.hearA<BlockGrant>();
    if (!grant) return;
    helper.fill(grant->block, side, side, teal);
    if (!metadata.empty())
        metadata.copy(Mapped(descriptors.back(), request.metadata.bytes).text(), metadata.size());
    done.number = request.number;
    done.width = done.height = side;
    done.depth = 24;
    done.blockId = grant->block.id;
    helper.say(done);
}

ReadDone doneWith(uint8_t orientation, uint32_t bytes, const std::string& leftOut = {}) {
    ReadDone done;
    done.orientation = orientation;
    done.metadataBytes = bytes;
    done.message = leftOut;
    return done;
}

TEST_F(CodecFilesTest, MetadataComesAsTheHelperPutItDown) {
    ScriptedHelpers helpers({answering([](HelperEndpoint& helper, const ReadRequest& request) {
        EXPECT_EQ(helper.descriptors.size(), 2U);
        EXPECT_NE(request.metadata.id, 0U);
        EXPECT_GE(request.metadata.bytes, mostMetadataBytes);
        serveWithMetadata(helper, request, "what it says", doneWith(8, 12, "a part\nof it"));
    })});
    CodecFiles files(with(helpers));
    const ReadOutcome outcome = files.readWithMetadata(picture, "png", MetadataWanted::all);
    expectGood(outcome);
    EXPECT_EQ(outcome.metadata.orientation, 8);
    EXPECT_EQ(outcome.metadata.packed, bytesOf("what it says"));
    EXPECT_EQ(outcome.metadata.leftOut, "a part?of it");
}

TEST_F(CodecFilesTest, AnOrdinaryReadingAsksForNoMetadata) {
    ScriptedHelpers helpers({answering([](HelperEndpoint& helper, const ReadRequest& request) {
        EXPECT_EQ(helper.descriptors.size(), 1U);
        EXPECT_EQ(request.metadata.id, 0U);
        helper.serve(request, side, side, teal);
    })});
    CodecFiles files(with(helpers));
    const ReadOutcome outcome = files.read(picture, "png");
    expectGood(outcome);
    EXPECT_EQ(outcome.metadata.orientation, 1);
    EXPECT_TRUE(outcome.metadata.packed.empty());
    EXPECT_EQ(outcome.metadata.leftOut, "");
}

TEST_F(CodecFilesTest, MetadataThatNobodyWantedIsALie) {
    for (const ReadDone& done : {doneWith(6, 0), doneWith(1, 1)})
        expectLie(
            [done](HelperEndpoint& helper, const ReadRequest& request) {
                serveWithMetadata(helper, request, {}, done);
            },
            done.metadataBytes > 0 ? "more metadata" : "how the picture lies");
}

TEST_F(CodecFilesTest, ForTheOrientationAloneNothingElseIsAskedForNorTaken) {
    for (const uint32_t bytes : {0U, 1U}) {
        ScriptedHelpers helpers(
            {answering([bytes](HelperEndpoint& helper, const ReadRequest& request) {
                 EXPECT_TRUE(request.orientationOnly);
                 EXPECT_NE(request.metadata.id, 0U);
                 serveWithMetadata(helper, request, {}, doneWith(8, bytes));
             }),
             serveAll});
        CodecFiles files(with(helpers));
        const ReadOutcome outcome =
            files.readWithMetadata(picture, "png", MetadataWanted::orientation);
        EXPECT_EQ(errorClass(outcome.error), bytes == 0 ? "" : "codec-died") << outcome.message;
        if (bytes == 0) {
            EXPECT_EQ(outcome.metadata.orientation, 8);
        }
    }
}

TEST_F(CodecFilesTest, MoreMetadataThanThereIsRoomAndOddOrientationsAreLies) {
    for (const ReadDone& done : {doneWith(1, mostMetadataBytes + 1), doneWith(1, ~uint32_t{0}),
                                 doneWith(0, 0), doneWith(9, 0), doneWith(255, 0)}) {
        ScriptedHelpers helpers(
            {answering([done](HelperEndpoint& helper, const ReadRequest& request) {
                 serveWithMetadata(helper, request, {}, done);
             }),
             serveAll});
        CodecFiles files(with(helpers));
        const ReadOutcome outcome = files.readWithMetadata(picture, "png", MetadataWanted::all);
        EXPECT_EQ(errorClass(outcome.error), "codec-died");
        EXPECT_THAT(outcome.message, HasSubstr("broke its rules"));
        expectGood(files.read(picture, "png"));
    }
}

TEST_F(CodecFilesTest, WithoutMemoryForMetadataThePictureIsReadAndAWordIsSaid) {
    const FileLimit limit(mostMetadataBytes / 2);
    ScriptedHelpers helpers({answering([](HelperEndpoint& helper, const ReadRequest& request) {
        EXPECT_EQ(request.metadata.id, 0U);
        helper.serve(request, side, side, teal);
    })});
    CodecFiles files(with(helpers));
    const ReadOutcome outcome = files.readWithMetadata(picture, "png", MetadataWanted::all);
    expectGood(outcome);
    EXPECT_THAT(outcome.metadata.leftOut, HasSubstr("memory does not suffice"));
}

TEST_F(CodecFilesTest, MetadataGoesToTheHelperWithThePicture) {
    ScriptedHelpers helpers({[](HelperEndpoint& helper) {
        helper.beReady();
        const auto request = helper.hearA<WriteRequest>();
        ASSERT_TRUE(request);
        ASSERT_EQ(helper.descriptors.size(), 3U);
        EXPECT_EQ(request->metadataBytes, 12U);
        EXPECT_TRUE(request->isTurned);
        EXPECT_TRUE(request->withoutLocation);
        EXPECT_EQ(std::string(Mapped(helper.descriptors[2], request->metadata.bytes).text(), 12),
                  "what it says");
        static_cast<void>(::write(helper.descriptors[0].get(), "written", 7));
        helper.say(WriteDone{request->number, FileError::none, "a part"});
        helper.hear();
    }});
    CodecFiles files(with(helpers));
    OutputFile output;
    ASSERT_TRUE(output.create(scratch / "out"));
    const WriteOutcome outcome = files.writeWithMetadata(
        Bitmap(3, 3), "jpg", 6, {bytesOf("what it says"), true, true}, output);
    EXPECT_EQ(errorClass(outcome.error), "") << outcome.message;
    EXPECT_EQ(outcome.leftOut, "a part");
}

// ---- With the helper itself ----

TEST(MetadataThroughAHelper, IsWhatThisProcessFindsAndAdds) {
    const ScratchFolder scratch;
    ExifToMake exif;
    exif.image = {{0x0112, asShort(6)}, {0x010F, asText("A maker of cameras")}};
    exif.photo = {{0xA002, asLong(4000)}};
    exif.gps = {{0x0001, asText("N")}};
    exif.thumbnail = bytesOf("a small picture");
    for (const auto& [extension, row] :
         {std::pair("jpg", 6), std::pair("png", 9), std::pair("tif", 11), std::pair("psd", 16)}) {
        CodecFiles::Options options;
        options.program = TESSARINE_CODEC;
        CodecFiles files(options);
        MetadataBlocks blocks;
        blocks.exif = exif.bytes();
        blocks.iptc = iptcSet(5, "A title");
        blocks.xmp = bytesOf(xmpPacket("<dc:format>image/jpeg</dc:format>"));
        blocks.icc = profile("RGB ");
        LeftOut none;
        const MetadataToAdd toAdd{packed(blocks, mostMetadataBytes, none), true, true};
        const Bitmap bitmap(randomBuffer(40, 30, 5));
        std::string written[2];
        FoundMetadata found[2];
        for (int i = 0; i < 2; ++i) {
            PictureFiles& way = i == 0 ? localFiles() : files;
            const std::string path = scratch / ("picture." + std::string(extension));
            OutputFile file;
            ASSERT_TRUE(file.create(path));
            const WriteOutcome outcome =
                way.writeWithMetadata(bitmap, extension, static_cast<int16_t>(row), toAdd, file);
            ASSERT_EQ(errorClass(outcome.error), "") << outcome.message;
            EXPECT_EQ(outcome.leftOut, "");
            ASSERT_TRUE(file.finish());
            written[i] = readFile(path);
            // Several readings in one helper.
            for (int again = 0; again < 3; ++again) {
                ReadOutcome read = way.readWithMetadata(path, extension);
                ASSERT_TRUE(read.bitmap) << read.message;
                found[i] = std::move(read.metadata);
            }
        }
        EXPECT_TRUE(written[0] == written[1]) << extension;
        EXPECT_EQ(found[0].packed, found[1].packed) << extension;
        EXPECT_FALSE(found[0].packed.empty()) << extension;
        EXPECT_EQ(found[0].leftOut, found[1].leftOut) << extension;
        EXPECT_EQ(found[1].orientation, 1) << extension;
    }
}

}  // namespace
}  // namespace tessarine::tests
