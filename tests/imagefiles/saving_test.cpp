#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/stat.h>

#include <IL/il.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "imagefiles/devil.h"
#include "imagefiles/judges.h"

namespace tessarine {
namespace {

namespace fs = std::filesystem;
using tests::holding;
using tests::readAll;
using tests::saveBy;
using tests::ScratchFolder;
using tests::writeAll;
using Status = SaveOutcome::Status;

const FormatRow& rowNamed(std::string_view shortName) {
    for (const FormatRow& row : formatTable())
        if (row.shortName == shortName) return row;
    throw std::out_of_range("no such row");
}

Bitmap smallPicture() { return Bitmap(tests::randomBuffer(7, 5, 1)); }

TEST(Saving, EveryRowSavesAndTellsTheSize) {
    const ScratchFolder folder;
    for (const FormatRow& row : formatTable()) {
        const std::string path =
            folder / std::string(row.shortName) + "." + std::string(row.extension);
        const SaveOutcome outcome = saveBy(row, smallPicture(), path);
        EXPECT_EQ(outcome.status, Status::saved) << row.text << ": " << outcome.message;
        EXPECT_EQ(outcome.message, "");
        EXPECT_EQ(outcome.bytes, static_cast<int64_t>(readAll(path).size())) << row.text;
        EXPECT_GT(outcome.bytes, 0) << row.text;
    }
}

TEST(Saving, KeepsATargetThatExistsWhereItMayNotBeOverwritten) {
    const ScratchFolder folder;
    for (const FormatRow& row : formatTable()) {
        const std::string path = folder / "kept." + std::string(row.extension);
        writeAll(path, "old");
        const auto date = fs::last_write_time(path) - std::chrono::hours(1);
        fs::last_write_time(path, date);
        const SaveOutcome outcome = saveBy(row, smallPicture(), path);
        EXPECT_EQ(outcome.status, Status::kept) << row.text;
        EXPECT_EQ(readAll(path), "old") << row.text;
        EXPECT_EQ(fs::last_write_time(path), date) << row.text;
    }
}

TEST(Saving, MakesNoFileBesidesTheTarget) {
    const ScratchFolder folder;
    const ScratchFolder elsewhere;
    const fs::path before = fs::current_path();
    fs::current_path(elsewhere.path());
    setenv("TMPDIR", elsewhere.path().c_str(), 1);
    for (const FormatRow& row : formatTable()) {
        // A name that the library is called with, since it goes by extension.
        const std::string madeUp = elsewhere / "picture." + std::string(row.extension);
        writeAll(madeUp, "old");
        const std::string path =
            folder / std::string(row.shortName) + "." + std::string(row.extension);
        EXPECT_EQ(saveBy(row, smallPicture(), path).status, Status::saved) << row.text;
        EXPECT_EQ(readAll(madeUp), "old") << row.text;
        fs::remove(madeUp);
        EXPECT_TRUE(fs::is_empty(elsewhere.path())) << row.text;
    }
    unsetenv("TMPDIR");
    fs::current_path(before);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()),
              formatRowCount);
}

TEST(Saving, OverwritingReplacesTheTargetByTheSameBytesAsANewFile) {
    const ScratchFolder folder;
    for (const FormatRow& row : formatTable()) {
        const std::string extension(row.extension);
        writeAll(folder / "old." + extension, std::string(100000, 'x'));
        ASSERT_EQ(saveBy(row, smallPicture(), folder / "old." + extension, true).status,
                  Status::saved);
        ASSERT_EQ(saveBy(row, smallPicture(), folder / "new." + extension, true).status,
                  Status::saved);
        EXPECT_EQ(readAll(folder / "old." + extension), readAll(folder / "new." + extension))
            << row.text;
    }
}

TEST(Saving, AFailingSaveLosesTheOldTarget) {
    const ScratchFolder folder;
    for (const std::string name : {"a.gif", "a.jpg", "a.png"}) {
        writeAll(folder / name, "old");
        mFormat format;
        PictureHolder nothing;
        const std::string extension = name.substr(2);
        const int16_t row = extension == "gif" ? 0 : extension == "jpg" ? 6 : 9;
        const SaveOutcome outcome =
            SaveImageFile(format, nothing, extension, folder / name, true, row);
        EXPECT_EQ(outcome.status, Status::failed) << name;
        EXPECT_NE(outcome.message, "") << name;
        EXPECT_FALSE(fs::exists(folder / name)) << name;
    }
}

TEST(Saving, APathThatCannotBeWrittenFailsAndSaysWhy) {
    const ScratchFolder folder;
    for (const FormatRow& row : formatTable()) {
        const std::string path = folder / "missing/a." + std::string(row.extension);
        const SaveOutcome outcome = saveBy(row, smallPicture(), path, true);
        EXPECT_EQ(outcome.status, Status::failed) << row.text;
        EXPECT_EQ(outcome.error, FileError::cannotWrite) << row.text;
        EXPECT_THAT(outcome.message, testing::HasSubstr("No such file or directory")) << row.text;
    }
}

TEST(Saving, AFolderOfTheTargetsNameStaysAndFails) {
    const ScratchFolder folder;
    for (const std::string name : {"gif64", "jpg-good", "bmp"}) {
        const FormatRow& row = rowNamed(name);
        const std::string path = folder / "a." + std::string(row.extension);
        fs::create_directory(path);
        EXPECT_EQ(saveBy(row, smallPicture(), path, true).status, Status::failed) << name;
        EXPECT_TRUE(fs::is_directory(path)) << name;
        EXPECT_EQ(saveBy(row, smallPicture(), path, false).status, Status::kept) << name;
    }
}

TEST(Saving, ADeviceIsNeverReplaced) {
    const ScratchFolder folder;
    const std::string path = folder / "a.png";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(saveBy(rowNamed("png"), smallPicture(), path, true).status, Status::failed);
    EXPECT_TRUE(fs::is_fifo(path));
}

TEST(Saving, ALinkIsReplacedAndNotFollowed) {
    const ScratchFolder folder;
    writeAll(folder / "precious", "old");
    fs::create_symlink(folder / "precious", folder / "a.jpg");
    fs::create_symlink(folder / "nowhere", folder / "b.jpg");
    EXPECT_EQ(saveBy(rowNamed("jpg-good"), smallPicture(), folder / "b.jpg").status, Status::kept);
    EXPECT_EQ(saveBy(rowNamed("jpg-good"), smallPicture(), folder / "a.jpg", true).status,
              Status::saved);
    EXPECT_EQ(readAll(folder / "precious"), "old");
    EXPECT_FALSE(fs::is_symlink(folder / "a.jpg"));
    EXPECT_FALSE(fs::exists(folder / "nowhere"));
}

TEST(Saving, AnExtensionOutsideTheTableWritesNothingButLosesTheOldTarget) {
    const ScratchFolder folder;
    for (const std::string extension : {"", "webp", "PNG", "jpeg", "tiff"}) {
        const std::string path = folder / "a." + extension;
        writeAll(path, "old");
        mFormat format;
        PictureHolder holder = holding(smallPicture());
        EXPECT_EQ(SaveImageFile(format, holder, extension, path, true, 6).status, Status::failed)
            << extension;
        EXPECT_FALSE(fs::exists(path)) << extension;
    }
}

TEST(Saving, AnIndexOfAnotherRouteWritesNoGifAndNoJpeg) {
    const ScratchFolder folder;
    for (const int16_t index : {-1, 3, 8, 18, 32767}) {
        mFormat format;
        PictureHolder holder = holding(smallPicture());
        EXPECT_EQ(SaveImageFile(format, holder, "gif", folder / "a.gif", true, index).status,
                  Status::failed);
        EXPECT_FALSE(fs::exists(folder / "a.gif")) << index;
    }
    for (const int16_t index : {-1, 2, 8, 18}) {
        mFormat format;
        PictureHolder holder = holding(smallPicture());
        EXPECT_EQ(SaveImageFile(format, holder, "jpg", folder / "a.jpg", true, index).status,
                  Status::failed);
        EXPECT_FALSE(fs::exists(folder / "a.jpg")) << index;
    }
}

TEST(Saving, TheTenOtherFormatsGoByExtensionAlone) {
    const ScratchFolder folder;
    mFormat format;
    PictureHolder holder = holding(smallPicture());
    EXPECT_EQ(SaveImageFile(format, holder, "png", folder / "a.png", true, 17).status,
              Status::saved);
    EXPECT_EQ(readAll(folder / "a.png").substr(1, 3), "PNG");
}

TEST(Saving, OddNamesAreWrittenAsTheyAre) {
    const ScratchFolder folder;
    const std::string names[] = {"with blank ",    "B\xc3\xa4umchen \xe6\x9c\xa8",
                                 "\xff\xfe-bytes", "v2.1.final",
                                 "-dash",          "%s%n",
                                 "tab\tnew\nline", ".hidden.png"};
    for (const FormatRow& row : formatTable())
        for (const std::string& name : names) {
            const std::string path = folder / name + "." + std::string(row.extension);
            fs::remove(path);
            const SaveOutcome outcome = saveBy(row, smallPicture(), path);
            EXPECT_EQ(outcome.status, Status::saved) << row.text << name << outcome.message;
            EXPECT_EQ(static_cast<int64_t>(readAll(path).size()), outcome.bytes);
        }
}

TEST(Saving, CapitalsInThePathsExtensionChangeNothing) {
    const ScratchFolder folder;
    for (const FormatRow& row : formatTable()) {
        std::string capitals(row.extension);
        for (char& c : capitals)
            c = static_cast<char>(std::toupper(c));
        ASSERT_EQ(saveBy(row, smallPicture(), folder / "a." + capitals, true).status,
                  Status::saved);
        ASSERT_EQ(
            saveBy(row, smallPicture(), folder / "a." + std::string(row.extension), true).status,
            Status::saved);
        EXPECT_EQ(readAll(folder / "a." + capitals),
                  readAll(folder / "a." + std::string(row.extension)))
            << row.text;
    }
}

TEST(Saving, ASideThatAHeaderDoesNotHoldFails) {
    const ScratchFolder folder;
    const Bitmap wide(65536, 1);
    const Bitmap high(1, 65536);
    for (const std::string name : {"gif256", "jpg-good", "tga", "pcx", "sgi"}) {
        const FormatRow& row = rowNamed(name);
        for (const Bitmap& picture : {wide, high}) {
            const std::string path = folder / "a." + std::string(row.extension);
            const SaveOutcome outcome = saveBy(row, picture, path);
            EXPECT_EQ(outcome.status, Status::failed) << name;
            EXPECT_NE(outcome.message, "") << name;
            EXPECT_FALSE(fs::exists(path)) << name;
        }
    }
}

TEST(Saving, LeavesDevilsOwnWritingAsItWas) {
    const ScratchFolder folder;
    ASSERT_EQ(saveBy(rowNamed("tga"), smallPicture(), folder / "a.tga").status, Status::saved);
    const std::lock_guard lock(devilLock());
    ILuint image = 0;
    ilGenImages(1, &image);
    ilBindImage(image);
    ASSERT_EQ(ilLoadImage((folder / "a.tga").c_str()), 1);
    EXPECT_EQ(ilSave(IL_BMP, (folder / "plain").c_str()), 1);
    EXPECT_EQ(ilSave(IL_BMP, (folder / "plain").c_str()), 0) << "it overwrites by itself";
    ilDeleteImages(1, &image);
    EXPECT_EQ(
        tests::firstDifference(tests::readBitmapFile(folder / "plain"), smallPicture().pixels()),
        "");
}

TEST(Saving, SaysNothingOnStandardErrorOrOutput) {
    const ScratchFolder folder;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    for (const FormatRow& row : formatTable()) {
        saveBy(row, smallPicture(), folder / "a." + std::string(row.extension), true);
        saveBy(row, smallPicture(), folder / "missing/a." + std::string(row.extension), true);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace tessarine
