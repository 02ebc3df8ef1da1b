#include <chrono>
#include <cstdio>
#include <filesystem>
#include <map>
#include <thread>

#include <gmock/gmock.h>

#include "imagefiles/codec/codec_files.h"
#include "support/children.h"
#include "support/misbehaviour.h"
#include "support/paths.h"
#include "support/pictures.h"
#include "support/program.h"

// Helper processes that do on command what decoders do on bad days.

namespace tessarine::tests {
namespace {

using namespace std::chrono_literals;
using testing::AnyOf;
using testing::HasSubstr;
using Clock = std::chrono::steady_clock;

constexpr int16_t bmpRow = 8;

class Misbehaving : public testing::Test {
  protected:
    Misbehaving() { writePixmap(good, randomBuffer(30, 20, 1)); }

    static CodecFiles::Options options() {
        CodecFiles::Options options;
        options.program = TESSARINE_CODEC_MISBEHAVING;
        options.wishes = {1.0, uint64_t{256} << 20};
        return options;
    }
    std::string bad(const std::string& word) const {
        const std::string path = scratch / (word + ".ppm");
        writeFile(path, misbehavingFile(word));
        return path;
    }
    void expectGood(CodecFiles& files) const {
        const ReadOutcome outcome = files.read(good, "ppm");
        ASSERT_TRUE(outcome.bitmap.has_value()) << outcome.message;
        EXPECT_EQ(firstDifference(outcome.bitmap->pixels(), readPixmap(good)), "");
    }

    const ScratchFolder scratch;
    const std::string good = scratch / "good.ppm";
};

/// What each word costs the picture that names it, and a part of what is said of it.
struct Cost {
    FileError error;
    std::string words;
};
const std::map<std::string, Cost> costs{
    {"crash", {FileError::codecDied, "SIGSEGV"}},
    {"abort", {FileError::codecDied, "SIGABRT"}},
    {"exit", {FileError::codecDied, "status 7"}},
    {"hang", {FileError::timedOut, "second"}},
    {"spin", {FileError::timedOut, "second"}},
    {"allocate", {helpersHaveMemoryLimits ? FileError::tooLarge : FileError::timedOut, ""}},
    {"lie-size", {FileError::codecDied, "broke its rules"}},
    {"lie-block", {FileError::codecDied, "broke its rules"}},
    {"lie-number", {FileError::codecDied, "broke its rules"}},
    {"lie-early", {FileError::codecDied, "broke its rules"}},
    {"silent-close", {FileError::codecDied, "ended the conversation"}},
};

TEST_F(Misbehaving, EachWayCostsOnePictureAndTheNextOneIsRead) {
    CodecFiles files(options());
    for (const auto& [word, cost] : costs) {
        const auto start = Clock::now();
        const ReadOutcome outcome = files.read(bad(word), "ppm");
        EXPECT_EQ(errorClass(outcome.error), errorClass(cost.error)) << word << outcome.message;
        EXPECT_THAT(outcome.message, HasSubstr(cost.words)) << word;
        EXPECT_FALSE(outcome.bitmap.has_value());
        EXPECT_LT(Clock::now() - start, 20s) << word;
        expectGood(files);
    }
}

TEST_F(Misbehaving, AWriterThatMisbehavesCostsOnePicture) {
    CodecFiles files(options());
    for (const auto& [word, cost] : costs) {
        // These are about reading.
        if (word == "lie-size" || word == "lie-block" || word == "lie-early") continue;
        OutputFile output;
        ASSERT_TRUE(output.create(scratch / "out.bmp"));
        const WriteOutcome outcome =
            files.write(Bitmap(misbehavingPicture(word)), "bmp", bmpRow, output);
        EXPECT_EQ(errorClass(outcome.error), errorClass(cost.error)) << word << outcome.message;
        EXPECT_THAT(outcome.message, HasSubstr(cost.words)) << word;
        output.discard();
        expectGood(files);
    }
}

TEST_F(Misbehaving, AFloodCostsItsPictureOnly) {
    CodecFiles files(options());
    for (int i = 0; i < 10; ++i) {
        // It begins with an answer, which may be heard before the next one is there.
        EXPECT_NE(errorClass(files.read(bad("flood"), "ppm").error), "");
        expectGood(files);
    }
}

TEST_F(Misbehaving, NoHelperIsLeft) {
    {
        CodecFiles files(options());
        for (const char* word : {"crash", "hang", "silent-close", "flood"})
            files.read(bad(word), "ppm");
        expectGood(files);
        EXPECT_EQ(children().size(), 1U);
    }
    EXPECT_TRUE(children().empty());
}

TEST_F(Misbehaving, AHeaderOfAHundredThousandByAHundredThousandIsRefusedAtOnce) {
    writeFile(scratch / "huge.ppm", "P6 100000 100000 255\n" + std::string(10000, 'x'));
    CodecFiles::Options defaults;
    defaults.program = TESSARINE_CODEC;
    CodecFiles files(defaults);
    expectGood(files);
    const auto start = Clock::now();
    const ReadOutcome outcome = files.read(scratch / "huge.ppm", "ppm");
    const auto took = std::chrono::duration<double, std::milli>(Clock::now() - start);
    RecordProperty("milliseconds", std::to_string(took.count()));
    std::printf("refused in %.1f ms: %s\n", took.count(), outcome.message.c_str());
    EXPECT_THAT(std::string(errorClass(outcome.error)), AnyOf("too-large", "unreadable"));
    EXPECT_LT(took, 10s);
}

TEST_F(Misbehaving, AHelperThatRenewsItselfIsNotNoticed) {
    CodecFiles::Options defaults;
    defaults.program = TESSARINE_CODEC;
    CodecFiles files(defaults);
    for (int i = 0; i < 2100; ++i)
        ASSERT_TRUE(files.read(good, "ppm").bitmap.has_value()) << i;
}

}  // namespace
}  // namespace tessarine::tests
