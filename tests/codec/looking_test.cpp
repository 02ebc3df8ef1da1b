#include <filesystem>

#include <gmock/gmock.h>

#include "codec_fixture.h"

// Looks at headers, which decode nothing.

namespace tessarine::tests {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

const std::string samples = TESSARINE_SOURCE_DIR "/samples/";

class Looking : public CodecFilesTest {
  protected:
    Looking() : files(realHelper()) {}

    static CodecFiles::Options realHelper() {
        CodecFiles::Options options;
        options.program = TESSARINE_CODEC;
        return options;
    }
    std::string file(const std::string& name, const std::string& bytes) const {
        writeFile(folder / name, bytes);
        return folder / name;
    }
    LookOutcome look(const std::string& path) {
        return files.lookAt(path, fs::path(path).extension().string().substr(1));
    }
    void expectAsRead(const std::string& path) {
        const LookOutcome looked = look(path);
        const ReadOutcome read = files.read(path, fs::path(path).extension().string().substr(1));
        ASSERT_TRUE(read.bitmap.has_value()) << path << ": " << read.message;
        EXPECT_EQ(errorClass(looked.error), "") << path << ": " << looked.message;
        EXPECT_EQ(looked.width, read.bitmap->width()) << path;
        EXPECT_EQ(looked.height, read.bitmap->height()) << path;
    }
    void expectError(const std::string& path, const std::string& error, const std::string& words) {
        const LookOutcome looked = look(path);
        EXPECT_EQ(errorClass(looked.error), error) << path;
        EXPECT_THAT(looked.message, HasSubstr(words)) << path;
        EXPECT_EQ(looked.width, 0);
        EXPECT_EQ(looked.height, 0);
    }
    /// What comes of a look that a helper answers so.
    LookOutcome answered(std::function<void(HelperEndpoint&, const ReadRequest&)> answer) const {
        ScriptedHelpers helpers({answering(std::move(answer))});
        return CodecFiles(with(helpers)).lookAt(picture, "ppm");
    }

    const ScratchFolder folder;
    CodecFiles files;
};

TEST_F(Looking, TellsTheSizeThatReadingGives) {
    for (const char* name :
         {"aurora.tif", "drops.bmp", "dunes.sgi", "fruit.jpeg", "milky-way.tga", "mountains.jpg",
          "rose-window.gif", "sea.png", "tartan.pcx", "toys.psd"})
        expectAsRead(samples + name);
}

TEST_F(Looking, FindsASizeThatStandsFarBehind) {
    const std::string jpeg = readFile(samples + "mountains.jpg");
    std::string far = jpeg.substr(0, 2);
    for (int i = 0; i < 8; ++i)
        far += std::string("\xFF\xE5\xFF\xFF", 4) + std::string(0xFFFF - 2, 'x');
    ASSERT_GT(far.size(), size_t{1} << 18);
    expectAsRead(file("far.jpg", far + jpeg.substr(2)));
}

TEST_F(Looking, DecodesWhereNoHeaderTells) {
    // A drawing of one rectangle, in units of a window that a record in it tells.
    const std::vector<uint16_t> drawing{
        1,
        9,
        0x300,  // a metafile, its header's words, its version
        9 + 5 + 7 + 3,
        0,
        0,  // words of the file, objects
        7,
        0,
        0,  // words of the longest record
        5,
        0,
        0x020C,
        60,
        80,  // the window's height and width
        7,
        0,
        0x041B,
        50,
        70,
        10,
        10,  // a rectangle
        3,
        0,
        0,  // the end
    };
    std::string bytes;
    for (const uint16_t word : drawing)
        bytes += {static_cast<char>(word & 255), static_cast<char>(word >> 8)};
    expectAsRead(file("drawing.wmf", bytes));
}

TEST_F(Looking, TakesTheHeadersWordForPixelsThatAreNotThere) {
    const std::string png = readFile(samples + "sea.png");
    const std::string cut = file("cut.png", png.substr(0, 200));
    const LookOutcome whole = look(samples + "sea.png");
    const LookOutcome looked = look(cut);
    EXPECT_EQ(errorClass(looked.error), "") << looked.message;
    EXPECT_EQ(looked.width, whole.width);
    EXPECT_EQ(looked.height, whole.height);
}

TEST_F(Looking, TellsWhyThereIsNoSize) {
    expectError(folder / "none.jpg", "unreadable", "No such file");
    fs::create_directory(folder / "folder.jpg");
    expectError(folder / "folder.jpg", "unreadable", "it is a folder");
    expectError(file("empty.koa", ""), "unreadable", "the file is empty");
    expectError(file("text.jpg", "This is no picture at all."), "unreadable", "");
    expectError(file("huge.pgm", "P5 200000 200000 255\n"), "too-large", "memory");
    // The helper is as good as before.
    expectAsRead(samples + "sea.png");
}

TEST_F(Looking, AsksForTheSizeAloneAndBelievesOnlyWhatCanBe) {
    bool sizeOnly = false;
    const LookOutcome good = answered([&](HelperEndpoint& helper, const ReadRequest& request) {
        sizeOnly = request.sizeOnly;
        helper.say(ReadDone{request.number, FileError::none, 30, 20, 0, 0, {}});
    });
    EXPECT_TRUE(sizeOnly);
    EXPECT_EQ(errorClass(good.error), "") << good.message;
    EXPECT_EQ(good.width, 30);
    EXPECT_EQ(good.height, 20);

    const auto expectDied = [](const LookOutcome& looked, const std::string& words) {
        EXPECT_EQ(errorClass(looked.error), "codec-died");
        EXPECT_THAT(looked.message, HasSubstr(words));
    };
    expectDied(answered([](HelperEndpoint& helper, const ReadRequest& request) {
                   helper.say(NeedBlock{request.number, 8, 8});
               }),
               "nobody had asked");
    expectDied(answered([](HelperEndpoint& helper, const ReadRequest& request) {
                   helper.say(ReadDone{request.number, FileError::none, 0, 8, 0, 0, {}});
               }),
               "a size that no picture can have");
    expectDied(answered([](HelperEndpoint& helper, const ReadRequest& request) {
                   helper.say(ReadDone{request.number, FileError::none, 8, 8, 0, 7, {}});
               }),
               "a size that no picture can have");
    expectDied(answered([](HelperEndpoint& helper, const ReadRequest& request) {
                   helper.say(ReadDone{request.number, FileError::codecDied, 0, 0, 0, 0, "x"});
               }),
               "not its own");
    expectDied(answered([](HelperEndpoint& helper, const ReadRequest& request) {
                   helper.say(ReadDone{request.number + 1, FileError::none, 8, 8, 0, 0, {}});
               }),
               "nobody had asked");
}

}  // namespace
}  // namespace tessarine::tests
