#include <algorithm>
#include <filesystem>
#include <map>
#include <set>

#include <gtest/gtest.h>

#include "../imagefiles/sample_files.h"
#include "driven_helper.h"
#include "imagefiles/format_table.h"
#include "imagefiles/picture_files.h"
#include "imagefiles/picture_source.h"
#include "support/pictures.h"

namespace tessarine::tests {
namespace {

namespace fs = std::filesystem;

/// The helpers of both kinds, which serve one file after the other.
class Helpers {
  public:
    HelperRead read(const std::string& path, const std::string& extension) {
        const bool isDrawing = extension == "wmf" || extension == "emf";
        DrivenHelper& helper = isDrawing ? drawing_ : files_;
        return helper.read(path, extension, {}, companionPaths(path, extension));
    }
    std::optional<WriteDone> write(const PixelBuffer& picture, const std::string& extension,
                                   int16_t formatIndex, int output) {
        return files_.write(picture, extension, formatIndex, output, {});
    }

  private:
    DrivenHelper files_;
    DrivenHelper drawing_{TESSARINE_CODEC, "drawing"};
};

void expectSameReading(Helpers& helpers, const std::string& path, const std::string& extension) {
    const ReadOutcome expected = localFiles().read(path, extension);
    const HelperRead actual = helpers.read(path, extension);
    ASSERT_TRUE(actual.done) << path;
    // A damaged header that asks for much memory gets it here, and then lacks the pixels.
    const bool isCutShort =
        actual.done->error == FileError::tooLarge && expected.error == FileError::unreadable;
    if (!isCutShort) {
        EXPECT_EQ(errorClass(actual.done->error), errorClass(expected.error))
            << path << ": " << actual.done->message << " / " << expected.message;
    }
    ASSERT_EQ(actual.picture.has_value(), expected.bitmap.has_value()) << path;
    if (!expected.bitmap) return;
    EXPECT_EQ(actual.done->depth, expected.depth) << path;
    // Whoever takes a helper's picture sees to its margin and fourth bytes.
    EXPECT_TRUE(Bitmap(*actual.picture) == *expected.bitmap) << path;
}

TEST(AHelper, IsReadyWithAWholeSandbox) {
    for (const char* kind : {"files", "drawing"}) {
        DrivenHelper helper(TESSARINE_CODEC, kind);
        ASSERT_TRUE(helper.ready) << kind;
        EXPECT_EQ(helper.ready->version, protocolVersion);
        EXPECT_EQ(helper.ready->refused, "") << kind;
    }
}

TEST(AHelper, ReadsWhatThisProcessReads) {
    const ScratchFolder folder;
    Helpers helpers;
    for (const auto& [extension, bytes] : smallFiles()) {
        const std::string path = folder / ("small." + extension);
        writeAll(path, bytes);
        expectSameReading(helpers, path, extension);
    }
}

TEST(AHelper, ReadsBackWhatItWroteInEveryFormat) {
    const ScratchFolder folder;
    Helpers helpers;
    for (const auto& [width, height] : {std::pair{1, 1}, {3, 200}, {640, 480}}) {
        const PixelBuffer picture = Bitmap(randomBuffer(width, height, 5)).pixels();
        for (int16_t row = 0; row < formatRowCount; ++row) {
            const std::string extension(formatTable()[static_cast<size_t>(row)].extension);
            const std::string path = folder / ("written." + extension);
            {
                const Descriptor output(
                    open(path.c_str(), O_CREAT | O_TRUNC | O_RDWR | O_CLOEXEC, 0600));
                const auto done = helpers.write(picture, extension, row, output.get());
                ASSERT_TRUE(done) << extension;
                EXPECT_EQ(errorClass(done->error), "") << extension << ": " << done->message;
            }
            OutputFile local;
            ASSERT_TRUE(local.create(folder / "local"));
            const WriteOutcome expected =
                localFiles().write(Bitmap(picture), extension, row, local);
            EXPECT_EQ(errorClass(expected.error), "") << extension << ": " << expected.message;
            ASSERT_TRUE(local.finish());
            EXPECT_TRUE(readAll(path) == readAll(folder / "local")) << extension;
            expectSameReading(helpers, path, extension);
        }
    }
}

TEST(AHelper, ReadsTheWholeCorpusAsThisProcessDoes) {
    const fs::path corpus = sharedFolder() / "corpus";
    if (!fs::is_directory(corpus)) GTEST_SKIP() << "the sample files of other programs are absent";
    Helpers helpers;
    size_t count = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(corpus)) {
        // Damaged files may take this process down, which is what helpers are for.
        if (!entry.is_regular_file() || entry.file_size() > 300'000 ||
            entry.path().parent_path().filename() == "malformed")
            continue;
        std::string extension = entry.path().extension().string();
        if (extension.empty() || extension == ".md") continue;
        extension.erase(0, 1);
        std::transform(extension.begin(), extension.end(), extension.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        expectSameReading(helpers, entry.path().string(), extension);
        ++count;
        if (HasFatalFailure()) return;
    }
    EXPECT_GT(count, 100u);
}

TEST(AHelper, AsksForOneBlockAndDecodesIntoIt) {
    const ScratchFolder folder;
    const std::string path = folder / "picture.ppm";
    writePixmap(path, randomBuffer(200, 100, 3));
    DrivenHelper helper;
    for (const uint64_t slack : {0, 1, 100000}) {
        DrivenHelper::Wishes wishes;
        wishes.slack = slack;
        const HelperRead result = helper.read(path, "ppm", wishes);
        ASSERT_TRUE(result.picture);
        EXPECT_EQ(result.blocksAsked, 1);
        EXPECT_EQ(firstDifference(*result.picture, readPixmap(path)), "");
    }
}

TEST(AHelper, ClearsABlockThatHeldAnotherPicture) {
    const ScratchFolder folder;
    const std::string path = folder / "picture.ppm";
    writePixmap(path, randomBuffer(70, 60, 3));
    DrivenHelper helper;
    const HelperRead first = helper.read(path, "ppm");
    for (int round = 0; round < 6; ++round) {
        writePixmap(
            path, drawBuffer(69, 59, [&](int32_t x, int32_t y) {
                return Pixel{static_cast<uint8_t>(x + round), static_cast<uint8_t>(y), 7, 0};
            }));
        const HelperRead result = helper.read(path, "ppm");
        ASSERT_TRUE(result.picture);
        EXPECT_TRUE(*result.picture == readPixmap(path)) << "the margin is not black";
    }
    EXPECT_TRUE(first.picture);
}

TEST(AHelper, TakesAPictureThatIsGivenNoBlockForTooLarge) {
    const ScratchFolder folder;
    const std::string path = folder / "picture.ppm";
    writePixmap(path, randomBuffer(200, 100, 3));
    DrivenHelper helper;
    DrivenHelper::Wishes wishes;
    wishes.deny = true;
    const HelperRead result = helper.read(path, "ppm", wishes);
    ASSERT_TRUE(result.done);
    EXPECT_EQ(errorClass(result.done->error), "too-large");
    EXPECT_TRUE(helper.read(path, "ppm").picture);
}

TEST(AHelper, TellsAnUnreadableFileAndGoesOn) {
    const ScratchFolder folder;
    const std::string damaged = folder / "damaged.png";
    writeAll(damaged, "no picture at all");
    const std::string good = folder / "good.ppm";
    writePixmap(good, randomBuffer(20, 10, 3));
    DrivenHelper helper;
    for (const char* extension : {"png", "jpg", "tga", "nonsense", ""}) {
        const HelperRead result = helper.read(damaged, extension);
        ASSERT_TRUE(result.done) << extension;
        EXPECT_EQ(errorClass(result.done->error), "unreadable") << extension;
        EXPECT_NE(result.done->message, "") << extension;
        EXPECT_TRUE(helper.read(good, "ppm").picture);
    }
}

TEST(AHelper, TellsAWritingThatFails) {
    DrivenHelper helper;
    const PixelBuffer picture = Bitmap(randomBuffer(300, 200, 3)).pixels();
    const Descriptor full(open("/dev/full", O_RDWR | O_CLOEXEC));
    ASSERT_TRUE(full);
    const auto failed = helper.write(picture, "bmp", 8, full.get(), {});
    ASSERT_TRUE(failed);
    EXPECT_EQ(errorClass(failed->error), "cannot-write");
    EXPECT_NE(failed->message, "");
    const Descriptor readOnly(open("/dev/null", O_RDONLY | O_CLOEXEC));
    const auto refused = helper.write(picture, "bmp", 8, readOnly.get(), {});
    ASSERT_TRUE(refused);
    EXPECT_EQ(errorClass(refused->error), "cannot-write");
    const Descriptor file = unnamedFile();
    const auto done = helper.write(picture, "bmp", 8, file.get(), {});
    ASSERT_TRUE(done);
    EXPECT_EQ(errorClass(done->error), "");
}

TEST(AHelper, DoesNotChangeThePictureThatItWrites) {
    DrivenHelper helper;
    const PixelBuffer picture = randomBuffer(64, 64, 9);  // fourth bytes are not 0
    const TestBlock block(picture.byteCount());
    std::memcpy(static_cast<void*>(block.pixels()), picture.block(), picture.byteCount());
    const Descriptor output = unnamedFile();
    for (int16_t row = 0; row < formatRowCount; ++row) {
        ASSERT_TRUE(helper.send(
            WriteRequest{1,
                         0,
                         uint64_t{1} << 30,
                         64,
                         64,
                         row,
                         {1, block.bytes()},
                         std::string(formatTable()[static_cast<size_t>(row)].extension)},
            {output.get(), block.file()}));
        ASSERT_TRUE(helper.receive());
        EXPECT_TRUE(block.picture(64, 64) == picture) << row;
    }
}

TEST(AHelper, LeavesNothingOpen) {
    const ScratchFolder folder;
    const std::string good = folder / "good.ppm";
    writePixmap(good, randomBuffer(90, 80, 3));
    const std::string bad = folder / "bad.png";
    writeAll(bad, "nothing");
    DrivenHelper helper;
    const fs::path opened = "/proc/" + std::to_string(helper.process()) + "/fd";
    const auto countOpen = [&] {
        return std::distance(fs::directory_iterator(opened), fs::directory_iterator());
    };
    std::error_code denied;
    if (fs::directory_iterator(opened, denied); denied)
        GTEST_SKIP() << "only root may look into a helper";
    const auto before = countOpen();
    const PixelBuffer picture = readPixmap(good);
    for (int round = 0; round < 50; ++round) {
        ASSERT_TRUE(helper.read(good, "ppm").picture);
        ASSERT_TRUE(helper.read(bad, "png").done);
        const Descriptor output = unnamedFile();
        ASSERT_TRUE(helper.write(picture, "png", 9, output.get(), {}));
    }
    EXPECT_EQ(countOpen(), before);
}

/// Everything that is no request ends the helper at once, with a status of its own.
class ARequestThatIsNone : public testing::Test {
  protected:
    void expectRefused(const ToHelper& message, const std::vector<int>& descriptors) {
        ASSERT_TRUE(helper.send(message, descriptors));
        EXPECT_TRUE(helper.isGone());
        EXPECT_EQ(helper.end(), helperRefuses);
    }
    WriteRequest writing(int32_t width, int32_t height, BlockRef block) const {
        return {1, 0, uint64_t{1} << 30, width, height, 8, block, "bmp"};
    }

    DrivenHelper helper;
    Descriptor file = unnamedFile();
};

TEST_F(ARequestThatIsNone, RandomBytes) {
    ASSERT_TRUE(sendPacket(helper.socket(), {200, 1, 2, 3}, {}));
    EXPECT_TRUE(helper.isGone());
    EXPECT_EQ(helper.end(), helperRefuses);
}

TEST_F(ARequestThatIsNone, AnAnswer) {
    ASSERT_TRUE(sendPacket(helper.socket(), packetOf(ToProgram(Ready{1, ""})), {}));
    EXPECT_EQ(helper.end(), helperRefuses);
}

TEST_F(ARequestThatIsNone, AGrantThatNobodyAskedFor) { expectRefused(BlockGrant{1, {}}, {}); }

TEST_F(ARequestThatIsNone, AReadingWithoutAFile) {
    expectRefused(ReadRequest{1, 0, uint64_t{1} << 30, 0, "png"}, {});
}

TEST_F(ARequestThatIsNone, AReadingWithAFileTooMany) {
    expectRefused(ReadRequest{1, 0, uint64_t{1} << 30, 0, "png"}, {file.get(), file.get()});
}

TEST_F(ARequestThatIsNone, ACompanionOfAFormatWithoutCompanions) {
    expectRefused(ReadRequest{1, 0, uint64_t{1} << 30, 1, "png"}, {file.get(), file.get()});
}

TEST_F(ARequestThatIsNone, AWritingWithoutABlock) {
    expectRefused(writing(8, 8, {1, 1 << 20}), {file.get()});
}

TEST_F(ARequestThatIsNone, APictureWithoutASize) {
    const TestBlock block(1 << 20);
    expectRefused(writing(0, 8, {1, block.bytes()}), {file.get(), block.file()});
}

TEST_F(ARequestThatIsNone, ABlockThatIsTooSmallForItsPicture) {
    const TestBlock block(4096);
    expectRefused(writing(640, 480, {1, block.bytes()}), {file.get(), block.file()});
}

TEST_F(ARequestThatIsNone, ABlockThatIsSmallerThanItIsSaidToBe) {
    const TestBlock block(4096);
    expectRefused(writing(640, 480, {1, uint64_t{1} << 30}), {file.get(), block.file()});
}

TEST_F(ARequestThatIsNone, ABlockThatCouldStillShrink) {
    const TestBlock block(1 << 20, F_SEAL_GROW | F_SEAL_SEAL);
    expectRefused(writing(8, 8, {1, block.bytes()}), {file.get(), block.file()});
}

TEST_F(ARequestThatIsNone, MetadataWithoutItsBlock) {
    expectRefused(ReadRequest{1, 0, uint64_t{1} << 30, 0, "png", {2, 1 << 24}}, {file.get()});
}

TEST_F(ARequestThatIsNone, ABlockOfMetadataThatCouldStillShrink) {
    const TestBlock block(1 << 20);
    const TestBlock loose(1 << 20, F_SEAL_GROW | F_SEAL_SEAL);
    WriteRequest request = writing(8, 8, {1, block.bytes()});
    request.metadata = {2, loose.bytes()};
    request.metadataBytes = 100;
    expectRefused(request, {file.get(), block.file(), loose.file()});
}

TEST_F(ARequestThatIsNone, MetadataBeyondItsBlock) {
    const TestBlock block(1 << 20);
    const TestBlock small(4096);
    WriteRequest request = writing(8, 8, {1, block.bytes()});
    request.metadata = {2, small.bytes()};
    request.metadataBytes = 5000;
    expectRefused(request, {file.get(), block.file(), small.file()});
}

TEST_F(ARequestThatIsNone, ABlockThatIsAnOrdinaryFile) {
    ASSERT_EQ(ftruncate(file.get(), 1 << 20), 0);
    expectRefused(writing(8, 8, {1, 1 << 20}), {file.get(), file.get()});
}

TEST_F(ARequestThatIsNone, AWrongAnswerToTheQuestionForABlock) {
    const ScratchFolder folder;
    const std::string path = folder / "picture.ppm";
    writePixmap(path, randomBuffer(200, 100, 3));
    const Descriptor picture(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    const TestBlock small(4096);
    const TestBlock large(1 << 20);
    const std::vector<std::pair<ToHelper, std::vector<int>>> wrong{
        {BlockGrant{2, {1, large.bytes()}}, {large.file()}},                // of another request
        {BlockGrant{1, {1, large.bytes()}}, {}},                            // without the block
        {BlockGrant{1, {}}, {large.file()}},                                // none, but with it
        {BlockGrant{1, {1, small.bytes()}}, {small.file()}},                // too small
        {BlockGrant{1, {1, large.bytes()}}, {small.file()}},                // smaller than told
        {ReadRequest{2, 0, uint64_t{1} << 30, 0, "ppm"}, {picture.get()}},  // no grant at all
    };
    for (const auto& [message, descriptors] : wrong) {
        DrivenHelper one;
        ASSERT_TRUE(one.send(ReadRequest{1, 0, uint64_t{1} << 30, 0, "ppm"}, {picture.get()}));
        const auto asked = one.receive();
        ASSERT_TRUE(asked && std::holds_alternative<NeedBlock>(*asked));
        ASSERT_TRUE(one.send(message, descriptors));
        EXPECT_TRUE(one.isGone());
        EXPECT_EQ(one.end(), helperRefuses);
    }
}

TEST(AHelper, KnowsABlockByMoreThanItsNumber) {
    DrivenHelper helper;
    const PixelBuffer first = Bitmap(randomBuffer(40, 30, 1)).pixels();
    const PixelBuffer second = Bitmap(randomBuffer(40, 30, 2)).pixels();
    std::vector<std::string> written;
    for (const PixelBuffer* picture : {&first, &second}) {
        const TestBlock block(picture->byteCount());
        std::memcpy(static_cast<void*>(block.pixels()), picture->block(), picture->byteCount());
        const Descriptor output = unnamedFile();
        ASSERT_TRUE(
            helper.send(WriteRequest{1, 0, uint64_t{1} << 30, 40, 30, 8, {1, block.bytes()}, "bmp"},
                        {output.get(), block.file()}));
        ASSERT_TRUE(helper.receive());
        written.push_back(contentsOf(output));
    }
    EXPECT_FALSE(written[0].empty());
    EXPECT_NE(written[0], written[1]);
}

}  // namespace
}  // namespace tessarine::tests
