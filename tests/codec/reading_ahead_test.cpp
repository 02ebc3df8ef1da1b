#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <thread>
#include <unistd.h>

#include <gmock/gmock.h>

#include "codec_fixture.h"
#include "imagefiles/picture_source.h"
#include "support/misbehaviour.h"
#include "support/pictures.h"

// Files that are read before their turn, and what they give at it.

namespace tessarine::tests {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class ReadAhead : public CodecFilesTest {
  protected:
    ReadAhead() {
        for (uint32_t i = 0; i < 4; ++i)
            paths.push_back(pixmap("p" + std::to_string(i) + ".ppm", i + 1));
    }
    std::string pixmap(const std::string& name, uint32_t seed) const {
        writePixmap(scratch / name, randomBuffer(40, 30, seed));
        return scratch / name;
    }
    CodecFiles::Options real(const char* program = TESSARINE_CODEC) const {
        CodecFiles::Options options;
        options.program = program;
        options.settled = 0ns;
        return options;
    }
    std::vector<ExpectedFile> expected(size_t from, size_t count) const {
        std::vector<ExpectedFile> files;
        for (size_t i = from; i < std::min(from + count, paths.size()); ++i)
            files.push_back({paths[i], "ppm"});
        return files;
    }
    /// Helpers that count the files that they are given.
    struct Counting {
        std::atomic<int> reads = 0;
        ScriptedHelpers helpers{{[this](HelperEndpoint& helper) {
            helper.beReady();
            while (const auto read = helper.hearA<ReadRequest>()) {
                ++reads;
                helper.serve(*read, side, side, teal);
            }
        }}};
        void await(int count) const {
            for (int i = 0; reads < count && i < 5000; ++i)
                std::this_thread::sleep_for(1ms);
        }
    };
    CodecFiles::Options counted(Counting& counting) const {
        CodecFiles::Options options = with(counting.helpers);
        options.settled = 0ns;
        return options;
    }

    std::vector<std::string> paths;
};

TEST_F(ReadAhead, WhatWasReadAheadIsGivenAtItsTurnAndReadOnce) {
    Counting counting;
    CodecFiles files(counted(counting));
    files.expect(expected(0, 2));
    counting.await(2);
    EXPECT_EQ(counting.reads, 2);
    expectGood(files.read(paths[0], "ppm"));
    expectGood(files.read(paths[1], "ppm"));
    EXPECT_EQ(counting.reads, 2);
    expectGood(files.read(paths[0], "ppm"));
    EXPECT_EQ(counting.reads, 3) << "it is given once";
}

TEST_F(ReadAhead, PicturesAreThoseOfReadingAtTheirTurn) {
    CodecFiles files(real());
    for (size_t i = 0; i < paths.size(); ++i) {
        const ReadOutcome outcome = files.read(paths[i], "ppm");
        files.expect(expected(i + 1, 2));
        ASSERT_TRUE(outcome.bitmap.has_value()) << outcome.message;
        EXPECT_EQ(firstDifference(outcome.bitmap->pixels(), readPixmap(paths[i])), "");
    }
}

TEST_F(ReadAhead, AFileThatChangedInItsPlaceIsReadAnew) {
    Counting counting;
    CodecFiles files(counted(counting));
    files.expect(expected(0, 1));
    counting.await(1);
    std::this_thread::sleep_for(20ms);
    pixmap("p0.ppm", 99);
    expectGood(files.read(paths[0], "ppm"));
    EXPECT_EQ(counting.reads, 2);
}

TEST_F(ReadAhead, AnotherFileInItsPlaceIsReadAnewAndOneThatIsGoneFails) {
    CodecFiles files(real());
    files.expect(expected(0, 2));
    std::this_thread::sleep_for(100ms);
    const std::string other = pixmap("other.ppm", 98);
    fs::rename(other, paths[0]);
    fs::remove(paths[1]);
    const ReadOutcome outcome = files.read(paths[0], "ppm");
    ASSERT_TRUE(outcome.bitmap.has_value());
    EXPECT_EQ(firstDifference(outcome.bitmap->pixels(), readPixmap(paths[0])), "");
    EXPECT_EQ(files.read(paths[1], "ppm").error, FileError::unreadable);
}

TEST_F(ReadAhead, ALinkThatLeadsElsewhereMeanwhileIsFollowedAnew) {
    Counting counting;
    const std::string link = scratch / "link.ppm";
    fs::create_symlink(paths[0], link);
    CodecFiles files(counted(counting));
    files.expect({{link, "ppm"}});
    counting.await(1);
    fs::remove(link);
    fs::create_symlink(paths[1], link);
    expectGood(files.read(link, "ppm"));
    EXPECT_EQ(counting.reads, 2);
}

TEST_F(ReadAhead, AFileThatComesLaterIsReadAtItsTurn) {
    CodecFiles files(real());
    files.expect({{scratch / "later.ppm", "ppm"}});
    std::this_thread::sleep_for(50ms);
    const std::string later = pixmap("later.ppm", 5);
    EXPECT_TRUE(files.read(later, "ppm").bitmap.has_value());
}

TEST_F(ReadAhead, AFileBesideItThatComesLaterCountsToo) {
    Counting counting;
    const std::vector<std::string> beside = companionPaths(scratch / "a.cut", "cut");
    ASSERT_FALSE(beside.empty());
    writeFile(scratch / "a.cut", "some bytes");
    CodecFiles files(counted(counting));
    files.expect({{scratch / "a.cut", "cut"}});
    counting.await(1);
    writeFile(beside[0], "a palette");
    expectGood(files.read(scratch / "a.cut", "cut"));
    EXPECT_EQ(counting.reads, 2);
}

TEST_F(ReadAhead, AFileThatChangedJustBeforeItWasOpenedIsNotTrusted) {
    Counting counting;
    CodecFiles::Options options = counted(counting);
    options.settled = 1h;
    CodecFiles files(options);
    files.expect(expected(0, 1));
    counting.await(1);
    expectGood(files.read(paths[0], "ppm"));
    EXPECT_EQ(counting.reads, 2);
}

TEST_F(ReadAhead, OneExtensionsReadingIsNotAnothers) {
    Counting counting;
    CodecFiles files(counted(counting));
    files.expect(expected(0, 1));
    counting.await(1);
    expectGood(files.read(paths[0], "png"));
    EXPECT_EQ(counting.reads, 2);
}

TEST_F(ReadAhead, ItsTurnWaitsForAReadingUnderWayAndTheWindowLives) {
    std::atomic<int> ticks = 0;
    std::atomic<int> reads = 0;
    ScriptedHelpers helpers({[&](HelperEndpoint& helper) {
        helper.beReady();
        while (const auto read = helper.hearA<ReadRequest>()) {
            ++reads;
            std::this_thread::sleep_for(600ms);
            helper.serve(*read, side, side, teal);
        }
    }});
    CodecFiles::Options options = with(helpers);
    options.settled = 0ns;
    const std::thread::id here = std::this_thread::get_id();
    options.onWaiting = [&] {
        EXPECT_EQ(std::this_thread::get_id(), here);
        ++ticks;
    };
    CodecFiles files(options);
    files.expect(expected(0, 1));
    for (int i = 0; reads < 1 && i < 5000; ++i)
        std::this_thread::sleep_for(1ms);
    expectGood(files.read(paths[0], "ppm"));
    EXPECT_EQ(reads, 1);
    EXPECT_GT(ticks, 0);
}

TEST_F(ReadAhead, WhatIsDroppedEndsAtOnceThoughItsHelperHangs) {
    writeFile(paths[0], misbehavingFile("hang"));
    CodecFiles::Options options = real(TESSARINE_CODEC_MISBEHAVING);
    options.wishes.seconds = 60;
    const auto start = std::chrono::steady_clock::now();
    {
        CodecFiles files(options);
        files.expect(expected(0, 2));
        std::this_thread::sleep_for(200ms);
        files.expect({});
        EXPECT_TRUE(files.read(paths[1], "ppm").bitmap.has_value());
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, 20s);
}

TEST_F(ReadAhead, MisbehaviourTellsTheSameClassAsAtItsTurnAndIsNotTriedAgain) {
    for (const char* word : {"crash", "hang", "lie-size", "exit"}) {
        writeFile(paths[0], misbehavingFile(word));
        CodecFiles::Options options = real(TESSARINE_CODEC_MISBEHAVING);
        options.wishes = {0.5, uint64_t{256} << 20};
        CodecFiles files(options);
        const FileError atItsTurn = files.read(paths[0], "ppm").error;
        files.expect(expected(0, 2));
        EXPECT_EQ(files.read(paths[0], "ppm").error, atItsTurn) << word;
        EXPECT_TRUE(files.read(paths[1], "ppm").bitmap.has_value()) << word;
    }
}

TEST_F(ReadAhead, WithoutMemoryForTwoEachComesInAtItsTurn) {
    Counting counting;
    CodecFiles::Options options = counted(counting);
    options.budget = 1;
    CodecFiles files(options);
    files.prepareFor(3);
    for (size_t i = 0; i < paths.size(); ++i) {
        expectGood(files.read(paths[i], "ppm"));
        files.expect(expected(i + 1, 2));
        std::this_thread::sleep_for(30ms);
    }
    files.expect({});
}

}  // namespace
}  // namespace tessarine::tests
