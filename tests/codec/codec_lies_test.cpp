#include <chrono>
#include <filesystem>
#include <future>
#include <sys/socket.h>
#include <thread>

#include <gmock/gmock.h>

#include "codec_fixture.h"
#include "imagefiles/codec/requests.h"

// Helpers that break their rules.

namespace tessarine::tests {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

// ---- Lies ----

TEST_F(CodecFilesTest, ASizeWithoutPixelsIsALie) {
    for (const auto& [width, height] : {std::pair(0, 5), std::pair(5, -1)})
        expectLie(
            [w = width, h = height](HelperEndpoint& helper, const ReadRequest& request) {
                helper.say(NeedBlock{request.number, w, h});
            },
            "no size");
}

TEST_F(CodecFilesTest, ASizeThatTheBlockDoesNotHoldIsALie) {
    for (const auto& [width, height] :
         {std::pair(5000, 5000), std::pair(0, 8), std::pair(-8, 8), std::pair(1 << 30, 1)})
        expectLie(
            [w = width, h = height](HelperEndpoint& helper, const ReadRequest& request) {
                helper.say(NeedBlock{request.number, side, side});
                const auto grant = helper.hearA<BlockGrant>();
                helper.say(
                    ReadDone{request.number, FileError::none, w, h, 24, grant->block.id, {}});
            },
            "a size that its picture cannot have");
}

TEST_F(CodecFilesTest, ABlockThatWasNotGrantedIsALie) {
    for (const uint32_t id : {0U, 1000U})
        expectLie(
            [id](HelperEndpoint& helper, const ReadRequest& request) {
                helper.say(NeedBlock{request.number, side, side});
                helper.hear();
                helper.say(ReadDone{request.number, FileError::none, side, side, 24, id, {}});
            },
            "where it was not to");
}

TEST_F(CodecFilesTest, ABlockOfAnEarlierPictureIsALie) {
    ScriptedHelpers helpers(
        {[](HelperEndpoint& helper) {
             helper.beReady();
             const auto first = helper.hearA<ReadRequest>();
             helper.say(NeedBlock{first->number, side, side});
             const auto grant = helper.hearA<BlockGrant>();
             helper.fill(grant->block, side, side, teal);
             helper.say(
                 ReadDone{first->number, FileError::none, side, side, 24, grant->block.id, {}});
             const auto second = helper.hearA<ReadRequest>();
             helper.say(
                 ReadDone{second->number, FileError::none, side, side, 24, grant->block.id, {}});
             helper.hear();
         },
         serveAll});
    CodecFiles files(with(helpers));
    const ReadOutcome first = files.read(picture, "png");
    expectGood(first);
    EXPECT_EQ(errorClass(files.read(picture, "png").error), "codec-died");
    expectGood(first);
    expectGood(files.read(picture, "png"));
}

TEST_F(CodecFilesTest, AWrongNumberIsALie) {
    expectLie(
        [](HelperEndpoint& helper, const ReadRequest& request) {
            helper.say(NeedBlock{request.number + 1, side, side});
        },
        "nobody had asked");
    expectLie(
        [](HelperEndpoint& helper, const ReadRequest& request) {
            helper.say(ReadDone{request.number - 1, FileError::unreadable, 0, 0, 0, 0, {}});
        },
        "nobody had asked");
}

TEST_F(CodecFilesTest, AnAnswerOfAnotherKindIsALie) {
    expectLie([](HelperEndpoint& helper, const ReadRequest&) { helper.beReady(); },
              "nobody had asked");
    expectLie(
        [](HelperEndpoint& helper, const ReadRequest& request) {
            helper.say(WriteDone{request.number, FileError::none, {}});
        },
        "nobody had asked");
}

TEST_F(CodecFilesTest, AnErrorThatIsNotTheHelpersIsALie) {
    for (const FileError error : {FileError::codecDied, FileError::cannotWrite})
        expectLie(
            [error](HelperEndpoint& helper, const ReadRequest& request) {
                helper.say(ReadDone{request.number, error, 0, 0, 0, 0, {}});
            },
            "not its own");
}

TEST_F(CodecFilesTest, ADepthThatNoPictureHasIsALie) {
    for (const int16_t depth : {int16_t{-1}, int16_t{1000}})
        expectLie(
            [depth](HelperEndpoint& helper, const ReadRequest& request) {
                helper.say(NeedBlock{request.number, side, side});
                const auto grant = helper.hearA<BlockGrant>();
                helper.say(ReadDone{
                    request.number, FileError::none, side, side, depth, grant->block.id, {}});
            },
            "depth");
}

TEST_F(CodecFilesTest, MoreThanSixteenBlocksAreALie) {
    int granted = 0;
    expectLie(
        [&granted](HelperEndpoint& helper, const ReadRequest& request) {
            for (;;) {
                helper.say(NeedBlock{request.number, 1, 1});
                if (!helper.hearA<BlockGrant>()) return;
                ++granted;
            }
        },
        "too many");
    EXPECT_EQ(granted, 16);
}

TEST_F(CodecFilesTest, WhatIsNoMessageIsALie) {
    for (const Packet& packet :
         {Packet{}, Packet{0}, Packet{99, 1, 2}, Packet(4096, 0xFF), Packet(5000, 4), Packet{6, 1}})
        expectLie(
            [packet](HelperEndpoint& helper, const ReadRequest&) {
                // An empty packet cannot be told from an end.
                const Packet sent = packet.empty() ? Packet{0} : packet;
                ::send(helper.socket(), sent.data(), sent.size(), MSG_NOSIGNAL);
            },
            "no message");
}

TEST_F(CodecFilesTest, DescriptorsFromAHelperAreNotTaken) {
    const auto open = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    ScriptedHelpers helpers({answering([](HelperEndpoint& helper, const ReadRequest& request) {
        sendPacket(helper.socket(), packetOf(ToProgram(NeedBlock{request.number, side, side})),
                   {0, 0, 0});
        const auto grant = helper.hearA<BlockGrant>();
        helper.fill(grant->block, side, side, teal);
        sendPacket(helper.socket(),
                   packetOf(ToProgram(ReadDone{
                       request.number, FileError::none, side, side, 24, grant->block.id, {}})),
                   {0, 0});
        helper.descriptors.clear();
    })});
    const auto before = open();
    CodecFiles files(with(helpers));
    expectGood(files.read(picture, "png"));
    // Both ends of the socket are here, and the block is kept for later; the helper's thread may
    // still be closing its own.
    for (int i = 0; i < 200 && open() > before + 3; ++i)
        std::this_thread::sleep_for(10ms);
    EXPECT_LE(open(), before + 3);
}

TEST_F(CodecFilesTest, MoreThanAnAnswerIsALie) {
    // The number is known here beforehand, so that both are there when the first one is heard.
    std::promise<void> spoken;
    ScriptedHelpers helpers({[&](HelperEndpoint& helper) {
                                 helper.beReady();
                                 for (int i = 0; i < 2; ++i)
                                     helper.say(ReadDone{7, FileError::unreadable, 0, 0, 0, 0, {}});
                                 spoken.set_value();
                                 while (helper.hear())
                                     ;
                             },
                             serveAll});
    CodecFiles::Options options = with(helpers);
    options.number = [] { return 7U; };
    CodecFiles files(options);
    spoken.get_future().wait();
    const ReadOutcome outcome = files.read(picture, "png");
    EXPECT_EQ(errorClass(outcome.error), "codec-died");
    EXPECT_THAT(outcome.message, HasSubstr("more than was asked"));
    expectGood(files.read(picture, "png"));
}

TEST_F(CodecFilesTest, AHelperThatTalksUnaskedIsReplacedAndThePictureIsRead) {
    std::promise<void> wordGiven;
    std::promise<void> spoken;
    ScriptedHelpers helpers({answering([&](HelperEndpoint& helper, const ReadRequest& request) {
                                 helper.serve(request, side, side, teal);
                                 wordGiven.get_future().wait();
                                 helper.say(ReadDone{request.number, FileError::unreadable, 0, 0, 0,
                                                     0, "a lie in advance"});
                                 spoken.set_value();
                             }),
                             serveAll});
    CodecFiles files(with(helpers));
    expectGood(files.read(picture, "png"));
    wordGiven.set_value();
    spoken.get_future().wait();
    expectGood(files.read(picture, "png"));
    EXPECT_EQ(helpers.kinds.size(), 2U);
}

TEST_F(CodecFilesTest, AnAnswerToAnEarlierPictureDoesNotCostThisOne) {
    ScriptedHelpers helpers(
        {[](HelperEndpoint& helper) {
             helper.beReady();
             const auto first = helper.hearA<ReadRequest>();
             helper.serve(*first, side, side, teal);
             helper.hear();
             helper.say(ReadDone{first->number, FileError::unreadable, 0, 0, 0, 0, "a late lie"});
             helper.hear();
         },
         serveAll});
    CodecFiles files(with(helpers));
    expectGood(files.read(picture, "png"));
    expectGood(files.read(picture, "png"));
    EXPECT_EQ(helpers.kinds.size(), 2U);
}

TEST_F(CodecFilesTest, NumbersOfRequestsCannotBeForeseen) {
    std::vector<uint32_t> numbers;
    ScriptedHelpers helpers({[&](HelperEndpoint& helper) {
        helper.beReady();
        while (const auto request = helper.hearA<ReadRequest>()) {
            numbers.push_back(request->number);
            helper.serve(*request, side, side, teal);
        }
    }});
    {
        CodecFiles files(with(helpers));
        for (int i = 0; i < 4; ++i)
            expectGood(files.read(picture, "png"));
    }
    ASSERT_EQ(numbers.size(), 4U);
    EXPECT_NE(numbers[1] - numbers[0], numbers[2] - numbers[1]);
    EXPECT_NE(numbers[2] - numbers[1], numbers[3] - numbers[2]);
}

TEST_F(CodecFilesTest, WhatIsLeftInTheMarginIsNoPartOfThePicture) {
    ScriptedHelpers helpers({answering([](HelperEndpoint& helper, const ReadRequest& request) {
        helper.say(NeedBlock{request.number, side, side});
        const auto grant = helper.hearA<BlockGrant>();
        helper.flood(grant->block, {9, 9, 9, 9});
        helper.say(ReadDone{request.number, FileError::none, side, side, 24, grant->block.id, {}});
    })});
    CodecFiles files(with(helpers));
    const ReadOutcome outcome = files.read(picture, "png");
    ASSERT_TRUE(outcome.bitmap.has_value());
    const PixelBuffer& pixels = outcome.bitmap->pixels();
    for (int32_t y = -2; y < side + 2; ++y)
        for (int32_t x = -2; x < side + 2; ++x) {
            const bool inside = x >= 0 && y >= 0 && x < side && y < side;
            EXPECT_EQ(pixels.at(x, y), inside ? Pixel({9, 9, 9, 0}) : Pixel{});
        }
}

TEST_F(CodecFilesTest, LiesAboutAWriting) {
    expectWriteLie([](HelperEndpoint& helper, const WriteRequest& request) {
        helper.say(WriteDone{request.number, FileError::none, {}});  // and wrote nothing
    });
    expectWriteLie([](HelperEndpoint& helper, const WriteRequest& request) {
        helper.say(WriteDone{request.number + 1, FileError::none, {}});
    });
    expectWriteLie([](HelperEndpoint& helper, const WriteRequest& request) {
        helper.say(NeedBlock{request.number, side, side});
    });
    for (const FileError error : {FileError::unreadable, FileError::codecDied})
        expectWriteLie([error](HelperEndpoint& helper, const WriteRequest& request) {
            helper.say(WriteDone{request.number, error, {}});
        });
}

// ---- Texts ----

TEST(TextsOfHelpers, AreCutAndWithoutControlCharacters) {
    EXPECT_EQ(printable("plain caf\xC3\xA9"), "plain caf\xC3\xA9");
    EXPECT_EQ(printable("a\nb\x1b[0m\x7f"), "a?b?[0m?");
    EXPECT_EQ(printable("\xC2\x9B"
                        "0m"),
              "?0m");
    EXPECT_EQ(printable("\xFF\xC3(\xED\xA0\x80"),
              "?"
              "?(???");
    EXPECT_EQ(printable("\xE2\x82"), "??");
    EXPECT_EQ(printable(std::string(2000, 'x')).size(), 503U);
    EXPECT_EQ(printable(""), "");
}

}  // namespace
}  // namespace tessarine::tests
