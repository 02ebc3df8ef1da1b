#include <cstdlib>
#include <filesystem>
#include <thread>

#include <FreeImage.h>
#include <gmock/gmock.h>

#include "sample_files.h"

namespace tessarine::tests {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

/// A picture of one colour, 2 by 1.
void savePng(const std::string& path, RGBQUAD colour) {
    FIBITMAP* dib = FreeImage_Allocate(2, 1, 24);
    FreeImage_SetPixelColor(dib, 0, 0, &colour);
    FreeImage_SetPixelColor(dib, 1, 0, &colour);
    ASSERT_TRUE(FreeImage_Save(FIF_PNG, dib, path.c_str(), 0));
    FreeImage_Unload(dib);
}

std::string sgi8(uint32_t level) {
    FileBytes f;
    return f.be16({474}).u8({0, 1}).be16({2, 1, 1, 1}).zeros(500).u8({level}).str();
}

TEST(Loading, TheExtensionIsComparedInLowerCase) {
    const ScratchFolder folder;
    savePng(folder / "photo.PNG", {0, 0, 255, 0});
    for (const std::string extension : {"PNG", "png", "Png"})
        EXPECT_THAT(loadFile(folder / "photo.PNG", extension).colours, ElementsAre(red, red));
}

TEST(Loading, TheContentHasNoSay) {
    const ScratchFolder folder;
    for (const std::string extension :
         {"tga", "bmp", "jpg",  "tif", "psd", "pcx", "ras", "iff", "sgi", "dds",
          "pxr", "xpm", "raw",  "act", "pal", "oil", "lmp", "wal", "koa", "cut",
          "mng", "pcd", "wbmp", "ppm", "gif", "dib", "wmf", "emf"}) {
        const std::string path = folder / ("picture." + extension);
        savePng(path, {0, 0, 255, 0});
        EXPECT_FALSE(loadFile(path, extension).isThere) << extension;
    }
}

TEST(Loading, OnlyJngGoesByTheContent) {
    const ScratchFolder folder;
    savePng(folder / "picture.jng", {255, 0, 0, 0});
    EXPECT_THAT(loadFile(folder / "picture.jng", "jng").colours, ElementsAre(blue, blue));
}

TEST(Loading, ExtensionsOutsideTheTableGiveNothing) {
    const ScratchFolder folder;
    savePng(folder / "picture", {0, 0, 255, 0});
    for (const std::string extension : {"", "cur", "pnm", "rle", "pn", "pngx", "txt"})
        EXPECT_FALSE(loadFile(folder / "picture", extension).isThere) << extension;
}

TEST(Loading, TheFourExtensionsOfThePlatformAreNotInTheTable) {
    const ScratchFolder folder;
    const std::string path = folder / "picture.gif";
    for (const auto& [extension, bytes] : smallFiles())
        if (extension == "gif") writeAll(path, bytes);
    mFormat format;
    EXPECT_FALSE(LoadImageFile(format, path, "gif"));
    EXPECT_THAT(loadFile(path, "gif").colours, ElementsAre(red, green, blue, white));
    for (const std::string extension : {"wmf", "emf", "dib", "gif"})
        EXPECT_TRUE(isPlatformExtension(extension));
    for (const std::string extension : {"GIF", "png", ""})
        EXPECT_FALSE(isPlatformExtension(extension));
}

TEST(Loading, APictureOfThePlatformThatIsMissingOrDamagedFails) {
    const ScratchFolder folder;
    for (const std::string extension : {"gif", "dib", "wmf", "emf"}) {
        const std::string path = folder / ("picture." + extension);
        EXPECT_THROW(LoadPicture(path, extension), StatementFailed);
        writeAll(path, "this is no picture");
        EXPECT_THROW(LoadPicture(path, extension), StatementFailed);
        writeAll(path, "");
        EXPECT_THROW(LoadPicture(path, extension), StatementFailed);
    }
    EXPECT_THROW(LoadPicture(folder / "picture.gif", "png"), StatementFailed);
}

TEST(Loading, AFailureLeavesTheFiguresOfTheFileBefore) {
    const ScratchFolder folder;
    mFormat format;
    savePng(folder / "good.png", {0, 0, 255, 0});
    ASSERT_TRUE(LoadImageFile(format, folder / "good.png", "png"));
    EXPECT_EQ(format.loadedWidth, 2);
    EXPECT_EQ(format.loadedHeight, 1);
    EXPECT_EQ(format.loadedDepth, 24);
    writeAll(folder / "bad.png", "\x89PNG damaged");
    writeAll(folder / "bad.sgi", "damaged");
    EXPECT_FALSE(LoadImageFile(format, folder / "missing.png", "png"));
    EXPECT_FALSE(LoadImageFile(format, folder / "missing.pic", "pic"));
    EXPECT_FALSE(LoadImageFile(format, folder / "bad.png", "png"));
    EXPECT_FALSE(LoadImageFile(format, folder / "bad.sgi", "sgi"));
    EXPECT_FALSE(LoadImageFile(format, folder / "good.png", "cur"));
    EXPECT_FALSE(LoadImageFile(format, folder.path(), "png"));
    EXPECT_FALSE(LoadImageFile(format, folder.path(), "pcx"));
    EXPECT_EQ(format.loadedWidth, 2);
    EXPECT_EQ(format.loadedHeight, 1);
    EXPECT_EQ(format.loadedDepth, 24);
}

TEST(Loading, TheLibrarysLastMessageIsKept) {
    const ScratchFolder folder;
    writeAll(folder / "bad.jpg", "no JPEG");
    mFormat format;
    EXPECT_FALSE(LoadImageFile(format, folder / "bad.jpg", "jpg"));
    EXPECT_NE(format.lastFormatError, "");
}

TEST(Loading, NothingOfAnEarlierLoadIsMetByTheNext) {
    const ScratchFolder folder;
    writeAll(folder / "a.sgi", sgi8(10));
    writeAll(folder / "b.bw", sgi8(200));
    EXPECT_THAT(loadFile(folder / "a.sgi", "sgi").colours, ElementsAre(0x0A0A0Au));
    EXPECT_THAT(loadFile(folder / "b.bw", "bw").colours, ElementsAre(0xC8C8C8u));
}

TEST(Loading, NoFileIsMadeAndNoneButThePictureIsRead) {
    const ScratchFolder folder;
    const ScratchFolder elsewhere;
    const std::string sgi = folder / "a.sgi";
    writeAll(sgi, sgi8(10));
    // Names that the libraries are called with, since they go by extension.
    writeAll(elsewhere / "picture.sgi", sgi8(200));
    writeAll(elsewhere / "picture.bmp", "left behind");
    const fs::path before = fs::current_path();
    fs::current_path(elsewhere.path());
    setenv("TMPDIR", elsewhere.path().c_str(), 1);
    const Loaded loaded = loadFile(sgi, "sgi");
    unsetenv("TMPDIR");
    fs::current_path(before);
    EXPECT_THAT(loaded.colours, ElementsAre(0x0A0A0Au));
    EXPECT_EQ(readAll(elsewhere / "picture.bmp"), "left behind");
    EXPECT_EQ(std::distance(fs::directory_iterator(elsewhere.path()), fs::directory_iterator()), 2);
}

TEST(Loading, AFailureTellsItsClassAndItsReason) {
    const ScratchFolder folder;
    mFormat format;
    EXPECT_FALSE(LoadImageFile(format, folder / "missing.png", "png"));
    EXPECT_EQ(format.lastFileError, FileError::unreadable);
    EXPECT_EQ(format.lastFormatError, "No such file or directory");
    EXPECT_FALSE(LoadImageFile(format, folder.path(), "png"));
    EXPECT_EQ(format.lastFormatError, "it is a folder");
    writeAll(folder / "large.pcx", FileBytes()
                                       .u8({10, 5, 1, 8})
                                       .le16({0, 0, 65534, 65534, 72, 72})
                                       .zeros(48)
                                       .u8({0, 3})
                                       .le16({65535, 1})
                                       .zeros(58)
                                       .str());
    EXPECT_FALSE(LoadImageFile(format, folder / "large.pcx", "pcx"));
    EXPECT_EQ(format.lastFileError, FileError::tooLarge);
    EXPECT_EQ(format.lastFormatError, "the picture is too large: 65535 x 65535 pixels");
    savePng(folder / "good.png", {0, 0, 255, 0});
    EXPECT_TRUE(LoadImageFile(format, folder / "good.png", "png"));
    EXPECT_EQ(format.lastFileError, FileError::none);
}

TEST(Loading, ManyThreadsEachGetTheirOwnPixels) {
    const ScratchFolder folder;
    constexpr uint32_t count = 4;
    for (uint32_t i = 0; i < count; ++i) {
        FileBytes f;
        f.be16({474}).u8({0, 1}).be16({2, 2, 1, 1}).zeros(500).u8({i * 50, i * 50});
        writeAll(folder / (std::to_string(i) + ".sgi"), f.str());
        savePng(folder / (std::to_string(i) + ".png"), {0, 0, static_cast<BYTE>(i * 50), 0});
    }
    std::vector<std::thread> threads;
    std::vector<int> wrong(count, 0);
    for (uint32_t i = 0; i < count; ++i)
        threads.emplace_back([&, i] {
            const uint32_t level = i * 50;
            const std::string name = folder / std::to_string(i);
            for (int round = 0; round < 20; ++round) {
                const uint32_t grey = level << 16 | level << 8 | level;
                if (loadFile(name + ".sgi", "sgi").colours != Colours{grey, grey}) ++wrong[i];
                if (loadFile(name + ".png", "png").colours != Colours{level << 16, level << 16})
                    ++wrong[i];
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_THAT(wrong, testing::Each(0));
}

}  // namespace
}  // namespace tessarine::tests
