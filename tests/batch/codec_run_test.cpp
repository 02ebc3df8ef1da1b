#include <filesystem>

#include <gmock/gmock.h>

#include "batch/batch.h"
#include "batch/texts.h"
#include "imagefiles/codec/codec_files.h"
#include "imagefiles/format_table.h"
#include "support/children.h"
#include "support/misbehaviour.h"
#include "support/paths.h"
#include "support/pictures.h"
#include "support/program.h"
#include "support/recorder.h"

// The engine's runs through helper processes.

namespace tessarine::tests {
namespace {

namespace fs = std::filesystem;
using Status = PictureReport::Status;

class RunThroughHelpers : public testing::Test {
  protected:
    RunThroughHelpers() {
        for (const char* folder : {"in", "out", "local"})
            fs::create_directory(scratch / folder);
    }
    static CodecFiles::Options misbehaving() {
        CodecFiles::Options options;
        options.program = TESSARINE_CODEC_MISBEHAVING;
        options.wishes = {1.0, uint64_t{256} << 20};
        return options;
    }
    std::string good(const std::string& name, uint32_t seed) const {
        const std::string path = scratch / ("in/" + name);
        writePixmap(path, randomBuffer(31, 17, seed));
        return path;
    }
    std::string bad(const std::string& name, const std::string& word) const {
        const std::string path = scratch / ("in/" + name);
        writeFile(path, misbehavingFile(word));
        return path;
    }
    /// Fills a program's basket and has it save into a folder.
    void prepare(cBatch& batch, const std::string& folder, int32_t formatRow,
                 const std::vector<std::string>& paths) const {
        batch.txtDestination = scratch / folder;
        batch.txtName = "Sample";
        batch.chkOverwrite = 1;
        batch.cboFormat.index = formatRow;
        for (const std::string& path : paths)
            batch.lvSelected.push_back({fileNameOf(path), extensionOf(path), path, folderOf(path)});
    }
    std::string output(const std::string& folder, int number, const std::string& extension) const {
        return readFile(scratch / (folder + "/Sample" + std::to_string(number) + "." + extension));
    }

    const ScratchFolder scratch;
    Recorder platform;
};

TEST_F(RunThroughHelpers, EveryFormatHasTheBytesThatThisProcessWouldWrite) {
    const std::vector<std::string> paths{good("a.ppm", 1), good("b.ppm", 2)};
    CodecFiles::Options options;
    options.program = TESSARINE_CODEC;
    CodecFiles files(options);
    for (int32_t row = 0; row < formatRowCount; ++row) {
        cBatch throughHelpers(platform, files);
        prepare(throughHelpers, "out", row, paths);
        throughHelpers.BatchEach();
        cBatch inProcess(platform, localFiles());
        prepare(inProcess, "local", row, paths);
        inProcess.BatchEach();
        const std::string extension = throughHelpers.formatExtension();
        for (int number = 1; number <= 2; ++number) {
            EXPECT_FALSE(output("out", number, extension).empty()) << extension;
            EXPECT_EQ(output("out", number, extension), output("local", number, extension))
                << extension;
        }
    }
    EXPECT_EQ(children().size(), 1U);
}

TEST_F(RunThroughHelpers, APictureThatKillsItsReaderFailsAloneInIndependentMode) {
    CodecFiles files(misbehaving());
    cBatch batch(platform, files);
    prepare(batch, "out", 8,
            {good("a.ppm", 1), bad("b.ppm", "crash"), bad("c.ppm", "hang"), good("d.ppm", 2)});
    batch.BatchEach();
    const auto& entries = batch.report.entries();
    ASSERT_EQ(entries.size(), 4U);
    EXPECT_EQ(entries[0].status, Status::saved);
    EXPECT_EQ(entries[1].error, "codec-died");
    EXPECT_EQ(entries[2].error, "timed-out");
    EXPECT_EQ(entries[3].status, Status::saved);
    EXPECT_TRUE(output("out", 2, "bmp").empty());
    EXPECT_FALSE(output("out", 4, "bmp").empty());
}

TEST_F(RunThroughHelpers, InWindowModeThePictureBeforeIsProcessedAgain) {
    CodecFiles files(misbehaving());
    cBatch batch(platform, files);
    prepare(batch, "out", 8, {good("a.ppm", 1), bad("b.ppm", "abort"), good("c.ppm", 2)});
    batch.CmdBatchAll();
    const auto& entries = batch.report.entries();
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_EQ(entries[1].error, "codec-died");
    EXPECT_EQ(output("out", 2, "bmp"), output("out", 1, "bmp"));
    EXPECT_EQ(entries[2].status, Status::saved);
    EXPECT_NE(output("out", 3, "bmp"), output("out", 1, "bmp"));
}

TEST_F(RunThroughHelpers, APictureThatKillsItsWriterLeavesNoFileAndTheNextIsSaved) {
    for (const char* word : {"crash", "hang", "lie-number"}) {
        const std::string killing = scratch / "in/k.ppm";
        writePixmap(killing, misbehavingPicture(word));
        CodecFiles files(misbehaving());
        cBatch batch(platform, files);
        prepare(batch, "out", 8, {killing, good("a.ppm", 1)});
        batch.BatchEach();
        const auto& entries = batch.report.entries();
        ASSERT_EQ(entries.size(), 2U);
        EXPECT_EQ(entries[0].error, std::string(word) == "hang" ? "timed-out" : "codec-died");
        EXPECT_EQ(entries[1].status, Status::saved);
        EXPECT_EQ(std::distance(fs::directory_iterator(scratch / "out"), {}), 1) << word;
    }
}

}  // namespace
}  // namespace tessarine::tests
