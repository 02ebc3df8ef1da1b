#include <filesystem>
#include <thread>

#include <gtest/gtest.h>

#include "driven_helper.h"
#include "imagefiles/worker/build.h"
#include "support/files.h"
#include "support/misbehaviour.h"
#include "support/paths.h"
#include "support/pictures.h"

namespace tessarine::tests {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

/// A helper that does what a file says.
class Caged {
  public:
    explicit Caged(const std::string& kind = "files") : helper(TESSARINE_CODEC_MISBEHAVING, kind) {}

    HelperRead told(const std::string& words, const DrivenHelper::Wishes& wishes = {}) {
        writeAll(file(), misbehavingFile(words));
        return helper.read(file(), "jpg", wishes);
    }
    /// What became of trying something.
    std::string tried(const std::string& words) {
        const HelperRead result = told(words);
        return result.done ? result.done->message : "gone";
    }
    std::string file() const { return folder / "words.jpg"; }

    ScratchFolder folder;
    DrivenHelper helper;
};

class ACage : public testing::TestWithParam<const char*> {
  protected:
    void SetUp() override {
        if (isSanitized) GTEST_SKIP() << "sanitizers need more rights than a helper has";
    }
};

TEST_P(ACage, LetsNothingOut) {
    Caged caged(GetParam());
    for (const char* word : {"probe-socket", "probe-exec", "probe-ptrace", "probe-kill",
                             "probe-fork", "probe-setrlimit", "probe-limit-parent"})
        EXPECT_EQ(caged.tried(word), "EPERM") << word;
}

TEST_P(ACage, WritesNoFile) {
    Caged caged(GetParam());
    const std::string path = caged.folder / "new";
    EXPECT_EQ(caged.tried("probe-open-write " + path), "EPERM");
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_EQ(caged.tried("probe-open-write " + caged.file()), "EPERM");
    EXPECT_EQ(caged.tried("probe-unlink " + caged.file()), "EPERM");
    EXPECT_TRUE(std::filesystem::exists(caged.file()));
}

TEST_P(ACage, HasThreads) { EXPECT_EQ(Caged(GetParam()).tried("probe-thread"), "done"); }

TEST_P(ACage, HasNoStandardStreams) { EXPECT_EQ(Caged(GetParam()).tried("probe-output"), "0"); }

TEST_P(ACage, HoldsStreamsSocketAndItsOwnFiguresOpenAndNothingElse) {
    EXPECT_EQ(Caged(GetParam()).tried("probe-descriptors"), "5");
}

INSTANTIATE_TEST_SUITE_P(OfEachKind, ACage, testing::Values("files", "drawing"));

TEST(ACageOf, FilesOpensNothing) {
    if (isSanitized) GTEST_SKIP() << "sanitizers need more rights than a helper has";
    Caged caged("files");
    for (const char* path : {"/etc/hostname", "/usr/share", "/dev/null", "/"})
        EXPECT_EQ(caged.tried(std::string("probe-open ") + path), "EPERM") << path;
    EXPECT_EQ(caged.tried("probe-open " + caged.file()), "EPERM");
    EXPECT_EQ(caged.tried("probe-code"), "EPERM");
}

TEST(ACageOf, DrawingReadsWhereFontsAreAndNowhereElse) {
    if (isSanitized) GTEST_SKIP() << "sanitizers need more rights than a helper has";
    Caged caged("drawing");
    EXPECT_EQ(caged.tried("probe-open /etc/fonts/fonts.conf"), "done");
    EXPECT_EQ(caged.tried("probe-open /usr/share/fonts"), "done");
    for (const char* path : {"/etc/passwd", "/etc", "/proc/self/maps", "/"})
        EXPECT_EQ(caged.tried(std::string("probe-open ") + path), "EACCES") << path;
    EXPECT_EQ(caged.tried("probe-open " + caged.file()), "EACCES");
}

TEST(AHelpersMemory, IsNewToEachPicture) {
    if (isSanitized) GTEST_SKIP() << "sanitizers bring a heap of their own";
    Caged caged;
    EXPECT_EQ(caged.tried("probe-fresh-memory"), "0");
    EXPECT_EQ(caged.tried("probe-fresh-memory"), "0");
}

TEST(AHelpersMemory, EndsWhereThePictureMayHaveNoMore) {
    if (isSanitized) GTEST_SKIP() << "sanitizers need all address space";
    Caged caged;
    DrivenHelper::Wishes wishes;
    wishes.memoryBytes = uint64_t{200} << 20;
    const HelperRead result = caged.told("allocate", wishes);
    ASSERT_TRUE(result.done);
    EXPECT_EQ(errorClass(result.done->error), "too-large");
    // And it serves the next picture.
    const std::string good = caged.folder / "good.ppm";
    writePixmap(good, randomBuffer(90, 80, 3));
    EXPECT_TRUE(caged.helper.read(good, "ppm").picture);
}

TEST(AHelpersMemory, IsAskedForInVainByAHeaderThatPromisesTooMuch) {
    Caged caged;
    const std::string path = caged.folder / "large.ppm";
    writeAll(path, "P6\n20000 20000\n255\n");
    DrivenHelper::Wishes wishes;
    wishes.memoryBytes = uint64_t{200} << 20;
    const HelperRead result = caged.helper.read(path, "ppm", wishes);
    ASSERT_TRUE(result.done);
    EXPECT_NE(errorClass(result.done->error), "");
    EXPECT_EQ(result.blocksAsked, 0);
}

TEST(AHelpersTime, OfTheProcessorEndsByASignal) {
    Caged caged;
    DrivenHelper::Wishes wishes;
    wishes.seconds = 1;
    const auto start = steady_clock::now();
    EXPECT_FALSE(caged.told("spin", wishes).done);
    const std::optional<int> end = caged.helper.end();
    EXPECT_TRUE(end == -SIGXCPU || end == -SIGALRM) << end.value_or(0);
    EXPECT_LT(steady_clock::now() - start, 20s);
}

TEST(AHelpersTime, OnTheWallEndsByASignal) {
    Caged caged;
    DrivenHelper::Wishes wishes;
    wishes.seconds = 0.5;
    const auto start = steady_clock::now();
    EXPECT_FALSE(caged.told("hang", wishes).done);
    EXPECT_EQ(caged.helper.end(), -SIGALRM);
    EXPECT_GE(steady_clock::now() - start, 500ms);
    EXPECT_LT(steady_clock::now() - start, 20s);
}

TEST(AHelpersTime, BeginsAnewWithEachPicture) {
    Caged caged;
    const std::string good = caged.folder / "good.ppm";
    writePixmap(good, randomBuffer(90, 80, 3));
    DrivenHelper::Wishes wishes;
    wishes.seconds = 0.4;
    const auto start = steady_clock::now();
    int served = 0;
    for (; steady_clock::now() - start < 1500ms; ++served) {
        ASSERT_TRUE(caged.helper.read(good, "ppm", wishes).picture)
            << served << " served, ended with " << caged.helper.end().value_or(0);
        std::this_thread::sleep_for(10ms);
    }
    // An idle helper is under no clock.
    std::this_thread::sleep_for(600ms);
    EXPECT_TRUE(caged.helper.read(good, "ppm", wishes).picture);
    EXPECT_GT(served, 3);
}

TEST(AHelpersTime, StandsWhileTheProgramLooksForABlock) {
    Caged caged;
    const std::string good = caged.folder / "good.ppm";
    writePixmap(good, randomBuffer(90, 80, 3));
    const Descriptor file(open(good.c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_TRUE(caged.helper.send(ReadRequest{1, 0.4, uint64_t{1} << 30, 0, "ppm"}, {file.get()}));
    const auto asked = caged.helper.receive();
    ASSERT_TRUE(asked && std::holds_alternative<NeedBlock>(*asked));
    std::this_thread::sleep_for(800ms);
    const TestBlock block(blockBytesFor(90, 80));
    ASSERT_TRUE(caged.helper.send(BlockGrant{1, {1, block.bytes()}}, {block.file()}));
    const auto done = caged.helper.receive();
    ASSERT_TRUE(done && std::holds_alternative<ReadDone>(*done));
    EXPECT_TRUE(block.picture(90, 80) == readPixmap(good));
}

}  // namespace
}  // namespace tessarine::tests
