#include "imagefiles/jpeg.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <FreeImage.h>
#include <gtest/gtest.h>

#include "imagefiles/decode.h"
#include "imagefiles/decoders.h"
#include "imagefiles/dib_pixels.h"
#include "imagefiles/format_bridges.h"
#include "imagefiles/image_library.h"
#include "imagefiles/judges.h"
#include "support/paths.h"

namespace tessarine {
namespace {

namespace fs = std::filesystem;
using tests::readAll;

using Dib = std::unique_ptr<FIBITMAP, void (*)(FIBITMAP*)>;

constexpr int greyOnly = 1 << 30;

/// What the file library writes.
std::string writtenByLibrary(const Bitmap& picture, int flags) {
    mFormat format;
    const OpenLibrary library(format);
    FIBITMAP* made = nullptr;
    format.FreeImage_DIB_From_BMP(picture, made);
    const Dib whole(made, &FreeImage_Unload);
    const bool isGrey = (flags & greyOnly) != 0;
    const Dib dib(
        isGrey ? FreeImage_ConvertTo8Bits(whole.get()) : FreeImage_ConvertTo24Bits(whole.get()),
        &FreeImage_Unload);
    const std::unique_ptr<FIMEMORY, void (*)(FIMEMORY*)> memory(FreeImage_OpenMemory(nullptr, 0),
                                                                &FreeImage_CloseMemory);
    EXPECT_TRUE(FreeImage_SaveToMemory(FIF_JPEG, dib.get(), memory.get(), flags & ~greyOnly));
    BYTE* bytes = nullptr;
    DWORD count = 0;
    FreeImage_AcquireMemory(memory.get(), &bytes, &count);
    return {reinterpret_cast<const char*>(bytes), count};
}

std::string writtenHere(const Bitmap& picture, int quality) {
    const tests::ScratchFolder folder;
    OutputFile file;
    EXPECT_TRUE(file.create(folder / "picture.jpg"));
    writeJpeg(picture, quality, file);
    EXPECT_TRUE(file.finish());
    return readAll(folder / "picture.jpg");
}

Bytes bytesOf(const std::string& text) {
    return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

std::optional<Decoded> readByLibrary(const std::string& file) {
    mFormat format;
    const OpenLibrary library(format);
    const Dib dib(loadDib(bytesOf(file), FIF_JPEG, JPEG_ACCURATE), &FreeImage_Unload);
    if (dib == nullptr) return std::nullopt;
    Decoded decoded{Bitmap(bitmapOfDib(dib.get()).takePixels()),
                    static_cast<int16_t>(FreeImage_GetBPP(dib.get()))};
    return decoded;
}

std::optional<Decoded> readHere(const std::string& file) {
    std::optional<Decoded> decoded = takeOverJpeg({bytesOf(file), {}});
    if (decoded) decoded->bitmap = Bitmap(std::move(decoded->bitmap).takePixels());
    return decoded;
}

/// Sizes that fill blocks of 8 and 16 and those that do not, with noise and with soft shapes.
std::vector<Bitmap> pictures() {
    std::vector<Bitmap> all;
    for (const auto& [width, height] :
         {std::pair{1, 1}, {2, 3}, {7, 5}, {16, 16}, {17, 33}, {64, 48}, {201, 9}})
        all.emplace_back(tests::randomBuffer(width, height, static_cast<uint32_t>(width)));
    Bitmap soft(150, 101);
    for (int32_t y = 0; y < soft.height(); ++y)
        for (int32_t x = 0; x < soft.width(); ++x)
            soft.writableRow(y)[x] = {static_cast<uint8_t>(x), static_cast<uint8_t>(2 * y),
                                      static_cast<uint8_t>(x + y), 0};
    all.push_back(soft);
    return all;
}

TEST(Jpeg, WritesTheBytesThatTheFileLibraryWrites) {
    for (const Bitmap& picture : pictures())
        for (const auto& [flag, quality] : {std::pair{JPEG_QUALITYBAD, 10},
                                            {JPEG_QUALITYAVERAGE, 25},
                                            {JPEG_QUALITYNORMAL, 50},
                                            {JPEG_QUALITYGOOD, 75},
                                            {JPEG_QUALITYSUPERB, 100}})
            EXPECT_TRUE(writtenHere(picture, quality) == writtenByLibrary(picture, flag))
                << picture.width() << " by " << picture.height() << ", quality " << quality;
}

TEST(Jpeg, ReadsThePixelsThatTheFileLibraryReads) {
    for (const Bitmap& picture : pictures())
        for (const int flags :
             {JPEG_QUALITYGOOD, JPEG_QUALITYSUPERB | JPEG_SUBSAMPLING_444,
              JPEG_QUALITYNORMAL | JPEG_SUBSAMPLING_422, JPEG_QUALITYNORMAL | JPEG_SUBSAMPLING_411,
              JPEG_QUALITYBAD | JPEG_PROGRESSIVE, JPEG_QUALITYGOOD | JPEG_OPTIMIZE,
              JPEG_QUALITYGOOD | greyOnly}) {
            const std::string file = writtenByLibrary(picture, flags);
            const std::optional<Decoded> expected = readByLibrary(file);
            const std::optional<Decoded> decoded = readHere(file);
            ASSERT_TRUE(expected && decoded) << flags;
            EXPECT_EQ(decoded->depth, expected->depth) << flags;
            EXPECT_TRUE(decoded->bitmap == expected->bitmap)
                << picture.width() << " by " << picture.height() << ", flags " << flags;
        }
}

TEST(Jpeg, LeavesDamagedFilesToTheFileLibrary) {
    const std::string whole = writtenByLibrary(pictures().back(), JPEG_QUALITYGOOD);
    const std::string cut = whole.substr(0, whole.size() * 2 / 3);
    EXPECT_FALSE(readHere(cut));
    const std::optional<Decoded> expected = readByLibrary(cut);
    ReadOutcome outcome = decodePicture({bytesOf(cut), {}}, "jpg");
    ASSERT_TRUE(expected && outcome.bitmap);
    EXPECT_TRUE(Bitmap(std::move(*outcome.bitmap).takePixels()) == expected->bitmap);
}

TEST(Jpeg, ReadsRealPhotographsAsTheFileLibraryDoes) {
    const fs::path corpus = tests::sharedFolder() / "corpus";
    if (!fs::is_directory(corpus)) GTEST_SKIP() << "there are no sample files here";
    int readByBoth = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(corpus)) {
        const std::string extension = entry.path().extension();
        if (extension != ".jpg" && extension != ".jpeg") continue;
        const std::string file = readAll(entry.path());
        // What the file promises may be more than memory can hold; the reader looks at that first.
        if (!decodePicture({bytesOf(file), {}}, "jpg").bitmap) continue;
        const std::optional<Decoded> decoded = readHere(file);
        if (!decoded) continue;
        const std::optional<Decoded> expected = readByLibrary(file);
        ASSERT_TRUE(expected) << entry.path();
        EXPECT_EQ(decoded->depth, expected->depth) << entry.path();
        EXPECT_TRUE(decoded->bitmap == expected->bitmap) << entry.path();
        ++readByBoth;
    }
    EXPECT_GT(readByBoth, 20);
}

}  // namespace
}  // namespace tessarine
