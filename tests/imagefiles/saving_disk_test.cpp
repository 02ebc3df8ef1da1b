// What becomes of saves on a full disk, and whether files depend on anything but the pixels.

#include <csignal>
#include <cstring>
#include <filesystem>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

#include "imagefiles/judges.h"
#include "support/other_disks.h"

namespace tessarine {
namespace {

namespace fs = std::filesystem;
using tests::inChild;
using tests::mountSmallDisk;
using tests::noDisk;
using tests::readAll;
using tests::saveBy;
using tests::ScratchFolder;
using Status = SaveOutcome::Status;

/// Saves in a child on a disk of 64 KiB. \return 0 where the save fails, says that the disk is
/// full and leaves no file
int saveOnFullDisk(const FormatRow& row, const Bitmap& picture, bool fillFirst) {
    const ScratchFolder folder;
    return inChild([&] {
        const std::string disk = folder.path().string();
        if (!mountSmallDisk(disk, "size=64k")) return noDisk;
        if (fillFirst) {
            FILE* filler = std::fopen((disk + "/filler").c_str(), "wb");
            std::setvbuf(filler, nullptr, _IONBF, 0);
            while (std::fputc('x', filler) != EOF) {
            }
            std::fclose(filler);
        }
        const std::string path = disk + "/a." + std::string(row.extension);
        const SaveOutcome outcome = saveBy(row, picture, path);
        if (outcome.status != Status::failed) return 1;
        if (outcome.message.find(std::strerror(ENOSPC)) == std::string::npos) return 2;
        return fs::exists(path) ? 3 : 0;
    });
}

TEST(SavingOnAFullDisk, IsFoundOutWhereThePictureDoesNotFit) {
    const Bitmap noise(tests::randomBuffer(400, 300, 5));
    const Bitmap muchNoise(tests::randomBuffer(1600, 1200, 5));
    for (const FormatRow& row : formatTable()) {
        const Bitmap& picture = row.route == SaveRoute::jpeg ? muchNoise : noise;
        const int result = saveOnFullDisk(row, picture, false);
        if (result == noDisk) GTEST_SKIP() << "no small disk can be mounted here";
        EXPECT_EQ(result, 0) << row.text;
    }
}

TEST(SavingOnAFullDisk, IsFoundOutWhereNotEvenTheFirstBytesFit) {
    const Bitmap picture(tests::randomBuffer(2, 2, 5));
    for (const FormatRow& row : formatTable()) {
        const int result = saveOnFullDisk(row, picture, true);
        if (result == noDisk) GTEST_SKIP() << "no small disk can be mounted here";
        EXPECT_EQ(result, 0) << row.text;
    }
}

/// Files of all rows in a folder, made by a process whose free memory holds a pattern of its own.
int saveAllRows(const std::string& folder, const Bitmap& picture, int pattern) {
    return inChild([&] {
        for (size_t size = 16; size < 1U << 20; size += size / 8) {
            void* memory = std::malloc(size);
            std::memset(memory, pattern, size);
            std::free(memory);
        }
        for (const FormatRow& row : formatTable()) {
            const std::string name(row.shortName);
            const std::string path = folder + "/" + name + "." + std::string(row.extension);
            if (saveBy(row, picture, path).status != Status::saved) return 1;
        }
        return 0;
    });
}

TEST(SavedFiles, DependOnThePixelsAlone) {
    const Bitmap picture(tests::randomBuffer(31, 21, 9));
    const ScratchFolder folder;
    constexpr int processes = 20;
    for (int i = 0; i < processes; ++i) {
        const std::string own = folder / std::to_string(i);
        fs::create_directory(own);
        ASSERT_EQ(saveAllRows(own, picture, 0x11 * (i + 1)), 0);
        // So that a time of day in a file would differ.
        if (i == 0) sleep(1);
    }
    for (const auto& entry : fs::directory_iterator(folder / "0")) {
        const std::string name = entry.path().filename().string();
        const std::string expected = readAll(entry.path().string());
        for (int i = 1; i < processes; ++i)
            EXPECT_TRUE(readAll(folder / std::to_string(i) + "/" + name) == expected)
                << name << " of process " << i;
    }
}

TEST(SavedFiles, DoNotDependOnTheSaveBefore) {
    const Bitmap picture(tests::randomBuffer(24, 16, 2));
    const ScratchFolder folder;
    for (const FormatRow& before : formatTable())
        for (const FormatRow& row : formatTable()) {
            const std::string extension(row.extension);
            saveBy(before, Bitmap(tests::randomBuffer(9, 4, 4)),
                   folder / "before." + std::string(before.extension), true);
            ASSERT_EQ(saveBy(row, picture, folder / "a." + extension, true).status, Status::saved);
            ASSERT_EQ(saveBy(row, picture, folder / "b." + extension, true).status, Status::saved);
            EXPECT_TRUE(readAll(folder / "a." + extension) == readAll(folder / "b." + extension))
                << row.text << " after " << before.text;
        }
}

}  // namespace
}  // namespace tessarine
