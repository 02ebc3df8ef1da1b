#include <filesystem>

#include <gmock/gmock.h>

#include "batch/batch.h"
#include "batch/texts.h"
#include "support/paths.h"
#include "support/pictures.h"
#include "support/recorder.h"

// The run over whoever reads and writes its pictures.

namespace tessarine::tests {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using Status = PictureReport::Status;

/// Answers as it is told, and as this process itself where it is told nothing.
class ToldFiles : public PictureFiles {
  public:
    ReadOutcome read(const std::string& path, const std::string& extension) override {
        calls.push_back("read " + fileNameOf(path) + " as " + extension);
        if (readError == FileError::none) return localFiles().read(path, extension);
        ReadOutcome outcome;
        outcome.error = readError;
        outcome.message = "so it is told";
        return outcome;
    }
    WriteOutcome write(const Bitmap& picture, const std::string& extension, int16_t formatIndex,
                       OutputFile& file) override {
        calls.push_back("write as " + extension + " of row " + std::to_string(formatIndex));
        if (writeError == FileError::none)
            return localFiles().write(picture, extension, formatIndex, file);
        // What a writer leaves that ends half way.
        file.write("half", 4);
        return {writeError, "so it is told"};
    }

    FileError readError = FileError::none;
    FileError writeError = FileError::none;
    std::vector<std::string> calls;
};

class Seam : public testing::Test {
  protected:
    Seam() {
        fs::create_directory(out);
        batch.txtDestination = out;
        batch.txtName = "Sample";
        batch.cboFormat.index = 8;
        const std::string path = scratch / "grey.ppm";
        writePixmap(path, drawBuffer(5, 4, [](int32_t, int32_t) { return Pixel{9, 9, 9, 0}; }));
        batch.lvSelected.push_back({fileNameOf(path), extensionOf(path), path, folderOf(path)});
    }
    const PictureReport& entry() const { return batch.report.entries().at(0); }

    ScratchFolder scratch;
    std::string out = scratch / "out";
    Recorder platform;
    ToldFiles files;
    cBatch batch{platform, files};
};

constexpr FileError readErrors[] = {FileError::tooLarge, FileError::timedOut, FileError::codecDied};
constexpr FileError writeErrors[] = {FileError::tooLarge, FileError::timedOut, FileError::codecDied,
                                     FileError::cannotWrite};

TEST_F(Seam, BothRunsReadAndWriteThroughItOncePerPicture) {
    const auto calls = ElementsAre("read grey.ppm as ppm", "write as bmp of row 8");
    batch.BatchEach();
    EXPECT_THAT(files.calls, calls);
    EXPECT_EQ(entry().status, Status::saved);
    files.calls.clear();
    batch.chkOverwrite = 1;
    batch.CmdBatchAll();
    EXPECT_THAT(files.calls, calls);
    EXPECT_EQ(entry().status, Status::saved);
}

TEST_F(Seam, ThePreviewReadsThroughItOnBothRoutes) {
    batch.ShowImageDetails(batch.lvSelected[0].Tag);
    batch.ShowImageDetails(scratch / "missing.GIF");
    EXPECT_THAT(files.calls, ElementsAre("read grey.ppm as ppm", "read missing.GIF as gif"));
}

TEST_F(Seam, TheIndependentRunTellsTheClassOfAFailedReadingAndWritesNothing) {
    for (const FileError error : readErrors) {
        files.readError = error;
        batch.BatchEach();
        EXPECT_EQ(entry().status, Status::failed);
        EXPECT_EQ(entry().error, errorClass(error));
        EXPECT_EQ(entry().message, "so it is told");
        EXPECT_TRUE(fs::is_empty(out));
    }
}

TEST_F(Seam, TheWindowsRunTellsTheClassAndSavesThePictureBefore) {
    batch.chkOverwrite = 1;
    for (const FileError error : readErrors) {
        files.readError = error;
        batch.CmdBatchAll();
        EXPECT_EQ(entry().status, Status::failed);
        EXPECT_EQ(entry().error, errorClass(error));
        EXPECT_EQ(entry().message,
                  "so it is told; the picture before it was processed in its place");
        EXPECT_TRUE(fs::exists(out + "/Sample1.bmp"));
    }
}

TEST_F(Seam, BothRunsTellTheClassOfAFailedWritingAndLeaveNothingHalf) {
    for (const FileError error : writeErrors) {
        files.writeError = error;
        batch.BatchEach();
        EXPECT_EQ(entry().status, Status::failed);
        EXPECT_EQ(entry().error, errorClass(error));
        EXPECT_EQ(entry().message, "so it is told");
        EXPECT_TRUE(fs::is_empty(out));
        batch.CmdBatchAll();
        EXPECT_EQ(entry().error, errorClass(error));
        EXPECT_EQ(entry().message, "so it is told");
        EXPECT_TRUE(fs::is_empty(out));
    }
}

TEST(ErrorClass, HasAWordForEachFailure) {
    EXPECT_EQ(errorClass(FileError::none), "");
    EXPECT_EQ(errorClass(FileError::unreadable), "unreadable");
    EXPECT_EQ(errorClass(FileError::tooLarge), "too-large");
    EXPECT_EQ(errorClass(FileError::timedOut), "timed-out");
    EXPECT_EQ(errorClass(FileError::codecDied), "codec-died");
    EXPECT_EQ(errorClass(FileError::cannotWrite), "cannot-write");
}

}  // namespace
}  // namespace tessarine::tests
