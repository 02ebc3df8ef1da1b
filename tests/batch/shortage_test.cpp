#include "pixels/shortage.h"

#include <filesystem>
#include <new>
#include <string>

#include <gmock/gmock.h>

#include "batch/texts.h"
#include "chain_fixture.h"
#include "support/files.h"
#include "support/paths.h"

// Runs whose functions find no memory: what failed is left out, and no run calls the result saved.

namespace tessarine::tests {
namespace {

namespace fs = std::filesystem;
using Status = PictureReport::Status;

constexpr int32_t resize = 59;
constexpr int32_t negative = 51;

class Shortage : public ChainFixture {
  protected:
    Shortage() {
        fs::create_directory(out);
        batch.txtDestination = out;
        batch.txtName = "Sample";
        batch.cboFormat.index = 8;
        for (const char* name : {"first.ppm", "second.ppm"}) {
            const std::string path = scratch / name;
            writePixmap(path, picture);
            batch.lvSelected.push_back({name, extensionOf(path), path, folderOf(path)});
        }
        addRow(resize, {"20", "10", "0", "0", "0", "False"});
        addRow(negative);
    }
    ~Shortage() override { setBlockSource(nullptr); }

    /// No new picture has memory while row 1 is applied to the first picture.
    void letTheFirstResizeFail(BlockSource source = [](int32_t, int32_t) -> std::shared_ptr<Pixel> {
        failForMemory("none is left");
    }) {
        platform.onGiveWay = {
            {}, [source] { setBlockSource(source); }, [] { setBlockSource(nullptr); }};
    }
    const PictureReport& entry(size_t number) const {
        return batch.report.entries().at(number - 1);
    }

    ScratchFolder scratch;
    std::string out = scratch / "out";
    const PixelBuffer picture = Bitmap(randomBuffer(8, 6, 1)).pixels();
};

TEST_F(Shortage, ByItselfAPictureThatMissedAFunctionIsNotSavedAndTheNextIs) {
    letTheFirstResizeFail();
    batch.BatchEach();
    EXPECT_EQ(entry(1).status, Status::failed);
    EXPECT_EQ(entry(1).error, "too-large");
    EXPECT_EQ(entry(1).message, "memory does not suffice for what is to be done to the picture");
    EXPECT_FALSE(fs::exists(out + "/Sample1.bmp"));
    EXPECT_EQ(entry(2).status, Status::saved);
    EXPECT_EQ(readBitmapFile(out + "/Sample2.bmp").width(), 20);
}

TEST_F(Shortage, ByItselfAPictureWhoseFunctionRunsOutOfSmallMemoryFailsToo) {
    batch.lvSelected.pop_back();
    letTheFirstResizeFail(
        [](int32_t, int32_t) -> std::shared_ptr<Pixel> { throw std::bad_alloc(); });
    batch.BatchEach();
    EXPECT_EQ(entry(1).status, Status::failed);
    EXPECT_EQ(entry(1).error, "too-large");
    EXPECT_TRUE(fs::is_empty(out));
}

TEST_F(Shortage, InTheWindowsRunAPictureThatMissedAFunctionIsSavedAndTold) {
    letTheFirstResizeFail();
    batch.CmdBatchAll();
    EXPECT_EQ(entry(1).status, Status::failed);
    EXPECT_EQ(entry(1).error, "too-large");
    EXPECT_EQ(entry(1).message,
              "memory does not suffice for what is to be done to the picture; it was saved without "
              "that");
    EXPECT_TRUE(fs::exists(out + "/Sample1.bmp"));
    EXPECT_THAT(batch.RTF, testing::HasSubstr(" Processed Image Saved as Sample1.bmp"));
    EXPECT_EQ(entry(2).status, Status::saved);
    EXPECT_EQ(readBitmapFile(out + "/Sample2.bmp").width(), 20);
}

TEST_F(Shortage, AnOutputThatIsKeptIsKeptAllTheSame) {
    writeAll(out + "/Sample1.bmp", "old");
    letTheFirstResizeFail();
    batch.CmdBatchAll();
    EXPECT_EQ(entry(1).status, Status::kept);
    EXPECT_EQ(entry(1).error, "");
}

}  // namespace
}  // namespace tessarine::tests
