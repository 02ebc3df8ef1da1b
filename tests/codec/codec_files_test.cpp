#include <atomic>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <stdexcept>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include <gmock/gmock.h>

#include "codec_fixture.h"
#include "imagefiles/codec/requests.h"
#include "pixels/failures.h"

// The program's side, with threads in place of helper processes that say what a table tells.

namespace tessarine::tests {
namespace {

using namespace std::chrono_literals;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using Clock = std::chrono::steady_clock;

TEST_F(CodecFilesTest, APictureIsReadIntoMemoryOfTheProgram) {
    ScriptedHelpers helpers({serveAll});
    CodecFiles files(with(helpers));
    for (int i = 0; i < 5; ++i)
        expectGood(files.read(picture, "png"));
    EXPECT_EQ(helpers.kinds.size(), 1U);
}

TEST_F(CodecFilesTest, MetafilesHaveAHelperOfTheirOwn) {
    ScriptedHelpers helpers({serveAll});
    CodecFiles files(with(helpers));
    for (const char* extension : {"png", "WMF", "emf", "dib", "wmf"})
        expectGood(files.read(picture, extension));
    EXPECT_THAT(helpers.kinds, ElementsAre(HelperKind::files, HelperKind::drawing));
}

TEST_F(CodecFilesTest, TheHelperIsToldTheExtensionAndTheWishes) {
    ReadRequest heard;
    std::string bytes(10, ' ');
    ScriptedHelpers helpers({answering([&](HelperEndpoint& helper, const ReadRequest& request) {
        heard = request;
        static_cast<void>(::read(helper.descriptors.at(0).get(), bytes.data(), bytes.size()));
        helper.serve(request, side, side, teal);
    })});
    CodecFiles::Options options = with(helpers);
    options.wishes = {7.5, uint64_t{300} << 20};
    CodecFiles files(options);
    expectGood(files.read(picture, "PnG"));
    EXPECT_EQ(heard.extension, "PnG");
    EXPECT_EQ(heard.seconds, 7.5);
    EXPECT_EQ(heard.memoryBytes, uint64_t{300} << 20);
    EXPECT_EQ(bytes, "some bytes");
}

TEST_F(CodecFilesTest, AMissingFileAFolderAndAPipeAreUnreadableAndAskNobody) {
    ScriptedHelpers helpers({[](HelperEndpoint& helper) {
        helper.beReady();
        EXPECT_FALSE(helper.hear().has_value());
    }});
    CodecFiles files(with(helpers));
    ASSERT_EQ(::mkfifo((scratch / "pipe.png").c_str(), 0600), 0);
    for (const std::string& path :
         {scratch / "none.png", scratch.path().string(), scratch / "pipe.png"}) {
        const ReadOutcome outcome = files.read(path, "png");
        EXPECT_EQ(errorClass(outcome.error), "unreadable") << path;
        EXPECT_FALSE(outcome.message.empty());
    }
}

TEST_F(CodecFilesTest, ErrorsOfAReadingComeWithTheirReason) {
    for (const FileError error :
         {FileError::unreadable, FileError::tooLarge, FileError::timedOut}) {
        ScriptedHelpers helpers({answering([&](HelperEndpoint& helper, const ReadRequest& request) {
            helper.say(ReadDone{request.number, error, 0, 0, 0, 0, "a reason\x1b[31m"});
        })});
        CodecFiles files(with(helpers));
        const ReadOutcome outcome = files.read(picture, "png");
        EXPECT_EQ(outcome.error, error);
        EXPECT_EQ(outcome.message, "a reason?[31m");
    }
}

TEST_F(CodecFilesTest, ASizeBeyondTheMemoryIsNotGranted) {
    for (const auto& [width, height] :
         {std::pair(100000, 100000), std::pair(1 << 30, 1 << 30), std::pair(20000, 20000)}) {
        ScriptedHelpers helpers({answering(
            [&, w = width, h = height](HelperEndpoint& helper, const ReadRequest& request) {
                helper.serve(request, w, h, teal);
            })});
        CodecFiles::Options options = with(helpers);
        options.wishes.memoryBytes = uint64_t{1} << 30;
        CodecFiles files(options);
        EXPECT_EQ(errorClass(files.read(picture, "png").error), "too-large") << width;
        EXPECT_EQ(helpers.kinds.size(), 1U);
    }
}

TEST_F(CodecFilesTest, WhereTheSizeOfFilesLeavesNoRoomForThePictureThatIsTheReason) {
    ScriptedHelpers helpers({answering([&](HelperEndpoint& helper, const ReadRequest& request) {
        helper.serve(request, 1000, 1000, teal);
    })});
    CodecFiles files(with(helpers));
    const ReadOutcome outcome = [&] {
        const FileLimit limit(100'000);
        return files.read(picture, "png");
    }();
    EXPECT_EQ(errorClass(outcome.error), "too-large");
    EXPECT_THAT(outcome.message, HasSubstr("ulimit -f"));
}

TEST_F(CodecFilesTest, ToWritingTheSizeOfFilesIsAReasonToo) {
    ScriptedHelpers helpers({serveAll});
    CodecFiles files(with(helpers));
    OutputFile output;
    ASSERT_TRUE(output.create(scratch / "out"));
    const WriteOutcome outcome = [&] {
        const FileLimit limit(100'000);
        return files.write(Bitmap(1000, 1000), "bmp", 8, output);
    }();
    EXPECT_EQ(errorClass(outcome.error), "too-large");
    EXPECT_THAT(outcome.message, HasSubstr("ulimit -f"));
}

TEST_F(CodecFilesTest, WhateverGoesWrongIsToldAndNotThrown) {
    ScriptedHelpers helpers({serveAll});
    CodecFiles::Options options = with(helpers);
    options.number = []() -> uint32_t { throw std::runtime_error("no number is to be had"); };
    CodecFiles files(options);
    ReadOutcome outcome;
    EXPECT_NO_THROW(outcome = files.read(picture, "png"));
    EXPECT_NE(errorClass(outcome.error), "");
    EXPECT_EQ(outcome.message, "no number is to be had");
}

TEST_F(CodecFilesTest, APipeIsNotOpenedAtAll) {
    ScriptedHelpers helpers({serveAll});
    CodecFiles files(with(helpers));
    const std::string pipe = scratch / "pipe.png";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    std::atomic<bool> isLetGo = false;
    // Who writes to a pipe waits until somebody reads from it.
    std::thread writer([&] {
        const Descriptor end(::open(pipe.c_str(), O_WRONLY | O_CLOEXEC));
        isLetGo = true;
    });
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(errorClass(files.read(pipe, "png").error), "unreadable");
        std::this_thread::sleep_for(5ms);
    }
    EXPECT_FALSE(isLetGo);
    const Descriptor reader(::open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    writer.join();
}

TEST_F(CodecFilesTest, AllBlocksOfAPictureTogetherStayWithinTheMemory) {
    std::vector<bool> granted;
    ScriptedHelpers helpers({answering([&](HelperEndpoint& helper, const ReadRequest& request) {
        for (int i = 0; i < 4; ++i) {
            helper.say(NeedBlock{request.number, 1000, 1000});
            const auto grant = helper.hearA<BlockGrant>();
            granted.push_back(grant && grant->block.id != 0);
        }
        helper.say(ReadDone{request.number, FileError::tooLarge, 0, 0, 0, 0, ""});
    })});
    CodecFiles::Options options = with(helpers);
    options.wishes.memoryBytes = 10'000'000;
    CodecFiles files(options);
    files.read(picture, "png");
    EXPECT_THAT(granted, ElementsAre(true, true, false, false));
}

// ---- Ends ----

TEST_F(CodecFilesTest, AHelperThatDiesCostsOnePictureAndIsNotTriedAgainWithIt) {
    ScriptedHelpers helpers({[](HelperEndpoint& helper) {
                                 helper.beReady();
                                 helper.hear();
                             },
                             serveAll});
    helpers.end = {HelperEnd::How::signalled, SIGSEGV};
    CodecFiles files(with(helpers));
    const ReadOutcome outcome = files.read(picture, "png");
    EXPECT_EQ(errorClass(outcome.error), "codec-died");
    EXPECT_THAT(outcome.message, HasSubstr("SIGSEGV"));
    EXPECT_EQ(helpers.kinds.size(), 1U);
    expectGood(files.read(picture, "png"));
}

TEST_F(CodecFilesTest, AHelperThatRunsOutOfTimeTimedOut) {
    for (const int signal : {SIGXCPU, SIGALRM}) {
        ScriptedHelpers helpers({[](HelperEndpoint& helper) {
            helper.beReady();
            helper.hear();
        }});
        helpers.end = {HelperEnd::How::signalled, signal};
        CodecFiles files(with(helpers));
        const ReadOutcome outcome = files.read(picture, "png");
        EXPECT_EQ(errorClass(outcome.error), "timed-out");
        EXPECT_THAT(outcome.message, HasSubstr("second"));
    }
}

TEST_F(CodecFilesTest, AHelperThatSaysNothingTimesOutAfterTheTimeWished) {
    ScriptedHelpers helpers({answering([](HelperEndpoint&, const ReadRequest&) {}), serveAll});
    CodecFiles::Options options = with(helpers);
    options.wishes.seconds = 0.3;
    CodecFiles files(options);
    const auto start = Clock::now();
    const ReadOutcome outcome = files.read(picture, "png");
    EXPECT_EQ(errorClass(outcome.error), "timed-out");
    EXPECT_THAT(outcome.message, HasSubstr("0.3 seconds"));
    EXPECT_GE(Clock::now() - start, 300ms);
    EXPECT_LT(Clock::now() - start, 5s);
    expectGood(files.read(picture, "png"));
}

TEST_F(CodecFilesTest, WithoutAWishAPictureHasThreeTimesItsProcessorTime) {
    EXPECT_DOUBLE_EQ(patienceFor(1000000, {}).count(), 3 * limitsFor(1000000, {}).seconds);
    EXPECT_DOUBLE_EQ(patienceFor(1000000, {20.0, {}}).count(), 20);
}

TEST_F(CodecFilesTest, AHelperThatMadeRoomForAFreshOneIsReplacedInSilence) {
    ScriptedHelpers helpers({[](HelperEndpoint& helper) {
                                 helper.beReady();
                                 helper.serve(*helper.hearA<ReadRequest>(), side, side, teal);
                             },
                             [](HelperEndpoint& helper) {
                                 helper.beReady();
                                 // Ends with the request still unread.
                                 pollfd entry{helper.socket(), POLLIN, 0};
                                 ::poll(&entry, 1, 10000);
                             },
                             serveAll});
    helpers.end = {HelperEnd::How::exited, 0};
    CodecFiles files(with(helpers));
    expectGood(files.read(picture, "png"));
    expectGood(files.read(picture, "png"));
    EXPECT_EQ(helpers.kinds.size(), 3U);
}

TEST_F(CodecFilesTest, HelpersThatNeverTakeAPictureAreNotStartedForEver) {
    ScriptedHelpers helpers({[](HelperEndpoint& helper) { helper.beReady(); }});
    CodecFiles files(with(helpers));
    const ReadOutcome outcome = files.read(picture, "png");
    EXPECT_EQ(errorClass(outcome.error), "codec-died");
    EXPECT_THAT(outcome.message, HasSubstr("before it took the picture"));
    EXPECT_LT(helpers.kinds.size(), 10U);
}

TEST_F(CodecFilesTest, WhereNoHelperStartsEachPictureTellsSo) {
    CodecFiles::Options options;
    options.program = scratch / "nothing";
    CodecFiles files(options);
    for (int i = 0; i < 2; ++i) {
        const ReadOutcome outcome = files.read(picture, "png");
        EXPECT_EQ(errorClass(outcome.error), "codec-died");
        EXPECT_THAT(outcome.message, HasSubstr("cannot be started: No such file"));
    }
}

TEST_F(CodecFilesTest, AHelperOfAnotherVersionIsNotAsked) {
    ScriptedHelpers helpers({[](HelperEndpoint& helper) {
        helper.say(Ready{protocolVersion + 1, {}});
        EXPECT_FALSE(helper.hear().has_value());
    }});
    CodecFiles files(with(helpers));
    EXPECT_THAT(files.read(picture, "png").message, HasSubstr("version"));
}

TEST_F(CodecFilesTest, WhatTheSystemDoesNotGrantIsToldOnce) {
    ScriptedHelpers helpers({[](HelperEndpoint& helper) {
        helper.beReady("no folder restriction\n");
        helper.serve(*helper.hearA<ReadRequest>(), side, side, teal);
    }});
    helpers.end = {HelperEnd::How::exited, 0};
    CodecFiles::Options options = with(helpers);
    std::vector<std::string> notices;
    options.onNotice = [&](const std::string& text) { notices.push_back(text); };
    CodecFiles files(options);
    for (int i = 0; i < 3; ++i)
        expectGood(files.read(picture, "png"));
    EXPECT_THAT(notices, ElementsAre(AllOf(HasSubstr("the kernel refuses"),
                                           HasSubstr("no folder restriction?"))));
}

// ---- Waiting ----

TEST_F(CodecFilesTest, AWaitThatGrowsLongLetsOthersHaveATurn) {
    ScriptedHelpers helpers({answering([](HelperEndpoint& helper, const ReadRequest& request) {
        std::this_thread::sleep_for(500ms);
        helper.serve(request, side, side, teal);
    })});
    CodecFiles::Options options = with(helpers);
    int turns = 0;
    options.onWaiting = [&] { ++turns; };
    CodecFiles files(options);
    expectGood(files.read(picture, "png"));
    EXPECT_GE(turns, 1);
    EXPECT_LE(turns, 8);
}

TEST_F(CodecFilesTest, AShortWaitIsNotInterrupted) {
    ScriptedHelpers helpers({serveAll});
    CodecFiles::Options options = with(helpers);
    int turns = 0;
    options.onWaiting = [&] { ++turns; };
    CodecFiles files(options);
    const auto start = Clock::now();
    expectGood(files.read(picture, "png"));
    if (Clock::now() - start < 200ms) {
        EXPECT_EQ(turns, 0);
    }
}

TEST_F(CodecFilesTest, APictureReadWhileAnotherOneIsWaitedForHasAHelperOfItsOwn) {
    std::function<void()> inner;
    ScriptedHelpers helpers({answering([](HelperEndpoint& helper, const ReadRequest& request) {
                                 std::this_thread::sleep_for(600ms);
                                 helper.serve(request, side, side, teal);
                             }),
                             serveAll});
    CodecFiles::Options options = with(helpers);
    options.onWaiting = [&inner] {
        if (inner) std::exchange(inner, {})();
    };
    CodecFiles files(options);
    int innerPictures = 0;
    inner = [&] {
        expectGood(files.read(picture, "png"));
        ++innerPictures;
    };
    expectGood(files.read(picture, "png"));
    EXPECT_EQ(innerPictures, 1);
    EXPECT_EQ(helpers.kinds.size(), 2U);
}

TEST_F(CodecFilesTest, PicturesAreReadOnSeveralThreads) {
    ScriptedHelpers helpers({serveAll});
    CodecFiles files(with(helpers));
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 20; ++i)
                expectGood(files.read(picture, "png"));
        });
    for (std::thread& thread : threads)
        thread.join();
}

// ---- Writing ----

TEST_F(CodecFilesTest, APictureThatWasReadIsHandedOnWithoutACopy) {
    BlockRef read;
    BlockRef written;
    ScriptedHelpers helpers({[&](HelperEndpoint& helper) {
        helper.beReady();
        const auto request = helper.hearA<ReadRequest>();
        helper.say(NeedBlock{request->number, side, side});
        read = helper.hearA<BlockGrant>()->block;
        helper.fill(read, side, side, teal);
        helper.say(ReadDone{request->number, FileError::none, side, side, 24, read.id, {}});
        const auto write = helper.hearA<WriteRequest>();
        written = write->block;
        static_cast<void>(::write(helper.descriptors.at(0).get(), "x", 1));
        helper.say(WriteDone{write->number, FileError::none, {}});
        helper.hear();
    }});
    CodecFiles files(with(helpers));
    const ReadOutcome outcome = files.read(picture, "png");
    expectGood(outcome);
    OutputFile output;
    ASSERT_TRUE(output.create(scratch / "out"));
    EXPECT_EQ(errorClass(files.write(*outcome.bitmap, "bmp", 8, output).error), "");
    EXPECT_EQ(read, written);
}

TEST_F(CodecFilesTest, AnotherPictureIsHandedOverAsItIs) {
    Pixel last;
    ScriptedHelpers helpers({[&](HelperEndpoint& helper) {
        helper.beReady();
        const auto write = helper.hearA<WriteRequest>();
        EXPECT_EQ(write->width, 5);
        EXPECT_EQ(write->height, 4);
        EXPECT_EQ(write->formatIndex, 8);
        EXPECT_EQ(write->extension, "bmp");
        void* memory = ::mmap(nullptr, write->block.bytes, PROT_READ, MAP_SHARED,
                              helper.descriptors.at(1).get(), 0);
        last = static_cast<const Pixel*>(memory)[5 * 9 + 6];
        ::munmap(memory, write->block.bytes);
        static_cast<void>(::write(helper.descriptors.at(0).get(), "written", 7));
        helper.say(WriteDone{write->number, FileError::none, {}});
        helper.hear();
    }});
    CodecFiles files(with(helpers));
    Bitmap bitmap(5, 4);
    bitmap.writableRow(3)[4] = teal;
    OutputFile output;
    ASSERT_TRUE(output.create(scratch / "out"));
    EXPECT_EQ(errorClass(files.write(bitmap, "bmp", 8, output).error), "");
    EXPECT_TRUE(output.finish());
    EXPECT_EQ(output.size(), 7);
    EXPECT_EQ(readFile(scratch / "out"), "written");
    EXPECT_EQ(last, teal);
}

TEST_F(CodecFilesTest, AWritingThatFailsTellsItsReason) {
    ScriptedHelpers helpers({[](HelperEndpoint& helper) {
        helper.beReady();
        const auto request = helper.hearA<WriteRequest>();
        helper.say(WriteDone{request->number, FileError::cannotWrite, "the disk is full"});
        const auto second = helper.hearA<WriteRequest>();
        helper.say(WriteDone{second->number, FileError::cannotWrite,
                             std::string("cannot write the file ") + nameOfOutput + ": why"});
        helper.hear();
    }});
    CodecFiles files(with(helpers));
    OutputFile output;
    ASSERT_TRUE(output.create(scratch / "out"));
    const WriteOutcome outcome = files.write(Bitmap(3, 3), "bmp", 8, output);
    EXPECT_EQ(errorClass(outcome.error), "cannot-write");
    EXPECT_EQ(outcome.message, "the disk is full");
    EXPECT_EQ(files.write(Bitmap(3, 3), "bmp", 8, output).message,
              "cannot write the file " + (scratch / "out: why"));
}

TEST_F(CodecFilesTest, NothingIsWrittenToAFileThatIsNotOpenNorOfAPictureThatIsNone) {
    ScriptedHelpers helpers({serveAll});
    CodecFiles files(with(helpers));
    OutputFile closed;
    EXPECT_EQ(errorClass(files.write(Bitmap(3, 3), "bmp", 8, closed).error), "cannot-write");
    OutputFile output;
    ASSERT_TRUE(output.create(scratch / "out"));
    EXPECT_EQ(errorClass(files.write(Bitmap(), "bmp", 8, output).error), "cannot-write");
}

}  // namespace
}  // namespace tessarine::tests
