#include <filesystem>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <FreeImage.h>
#include <gmock/gmock.h>

#include "imagefiles/temp_folder.h"
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

TEST(Loading, NoFileOfAnEarlierLoadIsMetByTheNext) {
    const ScratchFolder folder;
    writeAll(folder / "a.sgi", sgi8(10));
    writeAll(folder / "b.bw", sgi8(200));
    EXPECT_THAT(loadFile(folder / "a.sgi", "sgi").colours, ElementsAre(0x0A0A0Au));
    EXPECT_THAT(loadFile(folder / "b.bw", "bw").colours, ElementsAre(0xC8C8C8u));
    EXPECT_TRUE(fs::is_empty(TempFolder()));
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

TEST(TempFolder, IsThisProcesssOwnAndPrivate) {
    const std::string folder = TempFolder();
    EXPECT_EQ(folder.back(), '/');
    EXPECT_EQ(folder, TempFolder());
    struct stat status {};
    ASSERT_EQ(stat(folder.c_str(), &status), 0);
    EXPECT_TRUE(S_ISDIR(status.st_mode));
    EXPECT_EQ(status.st_mode & 0777, 0700u);
}

TEST(TempFolder, GivesEachLoadANewEmptyFolderAndTakesItAway) {
    std::string kept;
    {
        const LoadFolder first;
        const LoadFolder second;
        kept = first.path();
        EXPECT_NE(first.path(), second.path());
        EXPECT_TRUE(fs::is_empty(first.path()));
        EXPECT_EQ(first.path().find(TempFolder()), 0u);
        writeAll(first.path() + "4546643", "left behind");
    }
    EXPECT_FALSE(fs::exists(kept));
}

TEST(TempFolder, OfAForkedProcessIsAnotherAndGoesWithIt) {
    const std::string ours = TempFolder();
    const ScratchFolder folder;
    const std::string note = folder / "note";
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const std::string theirs = TempFolder();
        writeAll(theirs + "t65s8s98", "left behind");
        writeAll(note, theirs);
        std::exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    const std::string theirs = readAll(note);
    ASSERT_NE(theirs, "");
    EXPECT_NE(theirs, ours);
    EXPECT_FALSE(fs::exists(theirs));
    EXPECT_TRUE(fs::exists(ours));
}

}  // namespace
}  // namespace tessarine::tests
