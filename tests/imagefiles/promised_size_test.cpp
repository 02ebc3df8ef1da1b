#include <chrono>
#include <filesystem>
#include <set>

#include <gtest/gtest.h>

#include "imagefiles/decode.h"
#include "imagefiles/decoding.h"
#include "sample_files.h"

namespace tessarine::tests {
namespace {

namespace fs = std::filesystem;

Bytes bytesOf(const std::string& text) {
    return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

/// A header, and little behind it.
struct Bomb {
    std::string name;
    std::string extension;
    uint64_t side;
    std::string bytes;
};

constexpr uint32_t huge = 100000;
constexpr uint32_t longest = 65535;

std::string jpegBomb() {
    FileBytes f;
    f.be16({0xFFD8, 0xFFE0, 16}).text(std::string("JFIF\0", 5)).u8({1, 1, 0, 0, 1, 0, 1, 0, 0});
    f.be16({0xFFDB, 67}).u8({0});
    for (int i = 0; i < 64; ++i)
        f.u8({1});
    f.be16({0xFFC2, 17}).u8({8}).be16({65500, 65500}).u8({3, 1, 0x22, 0, 2, 0x11, 0, 3, 0x11, 0});
    return f.be16({0xFFDA, 12}).u8({3, 1, 0, 2, 0, 3, 0, 0, 0, 0}).zeros(64).str();
}

std::string tiffBomb() {
    FileBytes f;
    f.text("II").le16({42}).le32({8}).le16({8});
    const auto entry = [&](uint32_t tag, uint32_t kind, uint32_t value) {
        f.le16({tag, kind}).le32({1, value});
    };
    entry(256, 4, huge);
    entry(257, 4, huge);
    entry(258, 3, 8);
    entry(259, 3, 1);
    entry(262, 3, 1);
    entry(273, 4, 200);
    entry(278, 4, huge);
    entry(279, 4, 64);
    return f.le32({0}).zeros(200).str();
}

std::string gifBomb() {
    FileBytes f;
    f.text("GIF89a").le16({4, 4}).u8({0x80, 0, 0}).zeros(6).u8({0x21, 0xF9, 4, 0, 0, 0, 0, 0});
    return f.u8({0x2C}).le16({0, 0, longest, longest}).u8({0, 2, 1, 0x44, 0, 0x3B}).str();
}

std::string bmpBomb(uint32_t compression) {
    FileBytes f;
    f.text("BM").le32({0, 0, 54, 40, huge, huge}).le16({1, compression == 1 ? 8u : 24u});
    return f.le32({compression, 0, 0, 0, 0, 0}).zeros(2000).str();
}

std::vector<Bomb> bombs() {
    const auto chunked = [](uint32_t first, const std::string& name, const std::string& header) {
        FileBytes f;
        f.u8({first}).text(name).u8({13, 10, 26, 10}).be32({13}).text(header);
        return f.be32({huge, huge}).u8({8, 2, 0, 0, 0}).be32({0}).zeros(64).str();
    };
    const std::string psd =
        FileBytes().text("8BPS").be16({1}).zeros(6).be16({3}).be32({huge, huge}).be16({8, 3}).str();
    const std::string psdRest(64, '\0');
    FileBytes pcx;
    pcx.u8({10, 5, 1, 8}).le16({0, 0, longest - 1, longest - 1, 72, 72}).zeros(48);
    pcx.u8({0, 3}).le16({longest, 1}).zeros(58 + 64);
    FileBytes dds;
    dds.text("DDS ").le32({124, 0x1007, huge, huge, 6, 0, 0}).zeros(44);
    dds.le32({32, 0x40, 0, 24, 0xFF0000, 0xFF00, 0xFF, 0}).zeros(84);
    FileBytes ilbm;
    ilbm.text("ILBM");
    ilbm.chunk("BMHD", FileBytes().be16({longest, longest}).zeros(4).u8({8, 0, 1}).zeros(9).str());
    ilbm.chunk("BODY", std::string(64, '\0'));
    return {
        {"Png", "png", huge, chunked(0x89, "PNG", "IHDR")},
        {"Jpeg", "jpg", 65500, jpegBomb()},
        {"Tiff", "tif", huge, tiffBomb()},
        {"Bmp", "bmp", huge, bmpBomb(0)},
        {"BmpWithRuns", "bmp", huge, bmpBomb(1)},
        {"Dib", "dib", huge, bmpBomb(0).substr(14)},
        {"Psd", "psd", huge, psd + psdRest},
        {"Targa", "tga", longest,
         FileBytes().u8({0, 0, 10}).zeros(9).le16({longest, longest}).u8({24, 0}).zeros(64).str()},
        {"Bitmap", "pbm", huge, "P4\n# wide and high\n100000 100000\n" + psdRest},
        {"Greymap", "pgm", huge, "P5 100000 100000 255\n" + psdRest},
        {"Pixmap", "ppm", huge, "P6 100000 100000 255\n" + psdRest},
        {"PlainBitmap", "pbm", huge, "P1 100000 100000 1 0 1"},
        {"Gif", "gif", longest, gifBomb()},
        {"Pcx", "pcx", longest, pcx.str()},
        {"Dcx", "dcx", longest, FileBytes().le32({0x3ADE68B1, 12, 0}).text(pcx.str()).str()},
        {"Ras", "ras", huge,
         FileBytes().be32({0x59A66A95, huge, huge, 24, 0, 2, 0, 0}).zeros(64).str()},
        {"Sgi", "sgi", longest,
         FileBytes().be16({474}).u8({1, 1}).be16({3, longest, longest, 3}).zeros(600).str()},
        {"Dds", "dds", huge, dds.str()},
        {"Ilbm", "iff", longest, FileBytes().chunk("FORM", ilbm.str()).str()},
        {"Jng", "jng", huge, chunked(0x8B, "JNG", "JHDR")},
        {"Wbmp", "wbmp", huge,
         FileBytes().u8({0, 0, 0x86, 0x8D, 0x20, 0x86, 0x8D, 0x20}).zeros(64).str()},
        {"Pic", "pic", longest,
         FileBytes().be32({0x5380F634, 0}).zeros(80).text("PICT").be16({longest, longest}).str()},
        {"Xpm", "xpm", huge, "/* XPM */ static char* x[] = {\"100000 100000 1 1\"};"},
        {"Raw", "raw", huge, FileBytes().le32({huge, huge, 1}).u8({3, 1}).zeros(64).str()},
    };
}

class Bombs : public testing::TestWithParam<Bomb> {};

TEST_P(Bombs, TellTheSizeThatTheyPromise) {
    const Bomb& bomb = GetParam();
    const std::optional<PromisedSize> promised =
        promisedSize({bytesOf(bomb.bytes), {}}, bomb.extension);
    ASSERT_TRUE(promised);
    EXPECT_EQ(promised->width, bomb.side);
    EXPECT_EQ(promised->height, bomb.side);
}

TEST_P(Bombs, AreFoundTooLargeAtOnce) {
    const Bomb& bomb = GetParam();
    const auto start = std::chrono::steady_clock::now();
    const ReadOutcome outcome = decodePicture({bytesOf(bomb.bytes), {}}, bomb.extension);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
    EXPECT_FALSE(outcome.bitmap);
    EXPECT_EQ(outcome.error, FileError::tooLarge);
    const std::string side = std::to_string(bomb.side);
    EXPECT_EQ(outcome.message, "the picture is too large: " + side + " x " + side + " pixels");
}

INSTANTIATE_TEST_SUITE_P(All, Bombs, testing::ValuesIn(bombs()),
                         [](const auto& bomb) { return bomb.param.name; });

TEST(PromisedSize, OfSmallFilesIsTheirSize) {
    for (const auto& [extension, bytes] : smallFiles()) {
        const std::optional<PromisedSize> promised = promisedSize({bytesOf(bytes), {}}, extension);
        ASSERT_TRUE(promised) << extension;
        EXPECT_EQ(promised->width, 2u) << extension;
        EXPECT_EQ(promised->height, 2u) << extension;
    }
}

TEST(PromisedSize, OfDamagedHeadersIsTakenForNothingOrANumber) {
    for (const auto& [extension, bytes] : smallFiles()) {
        EXPECT_FALSE(promisedSize({{}, {}}, extension)) << extension;
        for (size_t length = 1; length < bytes.size(); ++length)
            promisedSize({bytesOf(bytes).first(length), {}}, extension);
    }
    EXPECT_FALSE(promisedSize({bytesOf("anything"), {}}, "txt"));
    EXPECT_FALSE(promisedSize({bytesOf("anything"), {}}, ""));
}

TEST(PromisedSize, TheExtensionMayBeInCapitals) {
    EXPECT_TRUE(promisedSize({bytesOf("P5 3 2 255\n123456"), {}}, "PGM"));
}

TEST(PromisedSize, OfEverySampleFileIsWhatIsDecoded) {
    const fs::path folder = sharedFolder() / "corpus";
    if (!fs::exists(folder)) GTEST_SKIP() << "the sample files are not here";
    // Colour tables have no pixels of their own, and drawings without a size none before they are
    // drawn.
    const std::set<std::string> sizeless{"act", "pal", "wmf"};
    size_t compared = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        const std::string path = entry.path();
        std::string extension = entry.path().extension();
        if (!entry.is_regular_file() || extension.empty() || entry.file_size() > 300000 ||
            path.find("/malformed/") != std::string::npos)
            continue;
        extension.erase(0, 1);
        const std::string bytes = readAll(path);
        std::vector<std::string> beside;
        for (const std::string& companion : companionPaths(path, extension))
            beside.push_back(fs::exists(companion) ? readAll(companion) : "");
        PictureSource source{bytesOf(bytes), {}};
        for (const std::string& companion : beside)
            source.companions.push_back(bytesOf(companion));
        const ReadOutcome outcome = decodePicture(source, extension);
        if (!outcome.bitmap) continue;
        const std::optional<PromisedSize> promised = promisedSize(source, extension);
        if (!promised) {
            EXPECT_TRUE(sizeless.contains(extension)) << path;
            continue;
        }
        ++compared;
        EXPECT_EQ(promised->width, static_cast<uint64_t>(outcome.bitmap->width())) << path;
        EXPECT_EQ(promised->height, static_cast<uint64_t>(outcome.bitmap->height())) << path;
    }
    EXPECT_GT(compared, 200u);
}

TEST(DecodePicture, ThrowsNothingAndTellsTheClass) {
    const ReadOutcome unknown = decodePicture({bytesOf("anything"), {}}, "txt");
    EXPECT_EQ(unknown.error, FileError::unreadable);
    EXPECT_EQ(unknown.message, "no format has this extension");
    const ReadOutcome damaged = decodePicture({bytesOf("\x89PNG damaged"), {}}, "png");
    EXPECT_EQ(damaged.error, FileError::unreadable);
    const ReadOutcome empty = decodePicture({}, "psd");
    EXPECT_EQ(empty.error, FileError::unreadable);
    const ReadOutcome good = decodePicture({bytesOf("P5 3 2 255\n123456"), {}}, "PGM");
    EXPECT_EQ(good.error, FileError::none);
    ASSERT_TRUE(good.bitmap);
    EXPECT_EQ(good.bitmap->width(), 3);
    EXPECT_EQ(good.depth, 8);
}

TEST(DecodePicture, APictureOfNoSizeIsUnreadableWhateverItsKind) {
    // A Targa of 0 by 512 or 512 by 0 pixels: the library takes it for want of memory.
    for (const char kind : {0, 1, 2, 3, 9, 10, 11, 32})
        for (const size_t side : {13u, 15u}) {
            std::string file(44, 0);
            file[2] = kind;
            file[side] = 2;
            file[16] = 8;
            const ReadOutcome outcome = decodePicture({bytesOf(file), {}}, "tga");
            EXPECT_EQ(outcome.error, FileError::unreadable) << int{kind} << " " << side;
        }
}

TEST(DecodePicture, WantOfMemoryIsTooLarge) {
    // a source of blocks that has none to give
    setBlockSource(
        [](int32_t, int32_t) -> std::shared_ptr<Pixel> { throw MemoryFailed("no block is left"); });
    const ReadOutcome outcome = decodePicture({bytesOf("P1 2 1 1 0"), {}}, "pbm");
    const ReadOutcome byLibrary = decodePicture({bytesOf("P5 3 2 255\n123456"), {}}, "pgm");
    setBlockSource(nullptr);
    EXPECT_EQ(outcome.error, FileError::tooLarge);
    EXPECT_EQ(outcome.message, "no block is left");
    EXPECT_EQ(byLibrary.error, FileError::tooLarge);
    EXPECT_TRUE(decodePicture({bytesOf("P1 2 1 1 0"), {}}, "pbm").bitmap);
}

TEST(Companions, AreAskedForByTheFormatsThatKeepTheirColoursElsewhere) {
    const std::vector<std::string> cut{"/a/b.pal", "/a/b.PAL", "/a/b.Pal"};
    EXPECT_EQ(companionPaths("/a/b.CUT", "CUT"), cut);
    EXPECT_EQ(companionPaths("/a/b.lmp", "lmp"), std::vector<std::string>{"/a/palette.lmp"});
    EXPECT_EQ(companionPaths("b.mdl", "mdl"), std::vector<std::string>{"palette.lmp"});
    EXPECT_TRUE(companionPaths("/a/b.png", "png").empty());
}

}  // namespace
}  // namespace tessarine::tests
