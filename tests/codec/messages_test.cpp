#include "imagefiles/codec/messages.h"

#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>

namespace tessarine::tests {
namespace {

const std::vector<ToHelper>& requests() {
    static const std::vector<ToHelper> all{
        ReadRequest{7, 2.5, uint64_t{3} << 33, 5, "PsD", {12, 13}},
        ReadRequest{0xFFFFFFFF, 0, 0, 0, ""},
        WriteRequest{8,
                     0.25,
                     1,
                     640,
                     -480,
                     -3,
                     {9, uint64_t{1} << 39},
                     "jpg",
                     {14, 4096},
                     4000,
                     true,
                     false},
        BlockGrant{10, {11, 4096}},
        BlockGrant{10, {}},
        ReadRequest{8, 1, uint64_t{1} << 30, 1, "cut", {}, true},
        ReadRequest{9, 1, uint64_t{1} << 30, 0, "jpg", {3, 4096}, false, true},
    };
    return all;
}

const std::vector<ToProgram>& answers() {
    static const std::vector<ToProgram> all{
        Ready{1, "no folder restriction"},
        NeedBlock{3, 1, 0x7FFFFFFF},
        ReadDone{4, FileError::none, 20, 30, 24, 5, "", 6, 70000},
        ReadDone{4, FileError::timedOut, -1, 0, -32768, 0, "took its time"},
        WriteDone{6, FileError::cannotWrite, "no space left"},
    };
    return all;
}

template <class Message>
auto read(const Message& message) {
    if constexpr (std::is_same_v<Message, ToHelper>)
        return messageToHelper(packetOf(message));
    else
        return messageToProgram(packetOf(message));
}

TEST(Messages, EveryRequestArrivesAsItWasSent) {
    for (const ToHelper& request : requests()) {
        const std::optional<ToHelper> got = read(request);
        ASSERT_TRUE(got);
        EXPECT_EQ(got->index(), request.index());
        EXPECT_EQ(packetOf(*got), packetOf(request));
    }
    const auto reading = std::get<ReadRequest>(*read(requests()[0]));
    EXPECT_EQ(reading.number, 7u);
    EXPECT_EQ(reading.seconds, 2.5);
    EXPECT_EQ(reading.memoryBytes, uint64_t{3} << 33);
    EXPECT_EQ(reading.companions, 5u);
    EXPECT_EQ(reading.extension, "PsD");
    EXPECT_EQ(reading.metadata, (BlockRef{12, 13}));
    EXPECT_FALSE(reading.sizeOnly || reading.orientationOnly);
    const auto looking = std::get<ReadRequest>(*read(requests()[5]));
    EXPECT_EQ(looking.extension, "cut");
    EXPECT_TRUE(looking.sizeOnly && !looking.orientationOnly);
    const auto turning = std::get<ReadRequest>(*read(requests()[6]));
    EXPECT_EQ(turning.extension, "jpg");
    EXPECT_TRUE(turning.orientationOnly && !turning.sizeOnly);
    const auto writing = std::get<WriteRequest>(*read(requests()[2]));
    EXPECT_EQ(writing.number, 8u);
    EXPECT_EQ(writing.seconds, 0.25);
    EXPECT_EQ(writing.memoryBytes, 1u);
    EXPECT_EQ(writing.width, 640);
    EXPECT_EQ(writing.height, -480);
    EXPECT_EQ(writing.formatIndex, -3);
    EXPECT_EQ(writing.block, (BlockRef{9, uint64_t{1} << 39}));
    EXPECT_EQ(writing.extension, "jpg");
    EXPECT_EQ(writing.metadata, (BlockRef{14, 4096}));
    EXPECT_EQ(writing.metadataBytes, 4000u);
    EXPECT_TRUE(writing.isTurned);
    EXPECT_FALSE(writing.withoutLocation);
    const auto grant = std::get<BlockGrant>(*read(requests()[3]));
    EXPECT_EQ(grant.number, 10u);
    EXPECT_EQ(grant.block, (BlockRef{11, 4096}));
}

TEST(Messages, EveryAnswerArrivesAsItWasSent) {
    for (const ToProgram& answer : answers()) {
        const std::optional<ToProgram> got = read(answer);
        ASSERT_TRUE(got);
        EXPECT_EQ(got->index(), answer.index());
        EXPECT_EQ(packetOf(*got), packetOf(answer));
    }
    const auto ready = std::get<Ready>(*read(answers()[0]));
    EXPECT_EQ(ready.version, 1u);
    EXPECT_EQ(ready.refused, "no folder restriction");
    const auto need = std::get<NeedBlock>(*read(answers()[1]));
    EXPECT_EQ(need.number, 3u);
    EXPECT_EQ(need.width, 1);
    EXPECT_EQ(need.height, 0x7FFFFFFF);
    const auto done = std::get<ReadDone>(*read(answers()[3]));
    EXPECT_EQ(done.number, 4u);
    EXPECT_EQ(done.error, FileError::timedOut);
    EXPECT_EQ(done.width, -1);
    EXPECT_EQ(done.depth, -32768);
    EXPECT_EQ(done.message, "took its time");
    const auto whole = std::get<ReadDone>(*read(answers()[2]));
    EXPECT_EQ(whole.blockId, 5u);
    EXPECT_EQ(whole.height, 30);
    EXPECT_EQ(whole.orientation, 6);
    EXPECT_EQ(whole.metadataBytes, 70000u);
    const auto written = std::get<WriteDone>(*read(answers()[4]));
    EXPECT_EQ(written.error, FileError::cannotWrite);
    EXPECT_EQ(written.message, "no space left");
}

/// What a packet of this length is when it is cut: only a text may be shorter.
template <class Message, class Take>
void expectCutsRefused(const Message& message, size_t textBytes, bool endsWithText, Take take) {
    const Packet packet = packetOf(message);
    for (size_t length = 0; length < packet.size(); ++length) {
        const bool cutsText = endsWithText && length >= packet.size() - textBytes;
        EXPECT_EQ(take(Bytes(packet.data(), length)).has_value(), cutsText)
            << "kind " << int{packet[0]} << ", " << length << " of " << packet.size();
    }
    Packet longer = packet;
    longer.push_back(0);
    EXPECT_EQ(take(longer).has_value(), endsWithText) << "kind " << int{packet[0]};
}

TEST(Messages, APacketThatEndsEarlyOrLateIsNoMessage) {
    expectCutsRefused(requests()[0], 3, true, messageToHelper);
    expectCutsRefused(requests()[2], 3, true, messageToHelper);
    expectCutsRefused(requests()[3], 0, false, messageToHelper);
    expectCutsRefused(requests()[5], 3, true, messageToHelper);
    expectCutsRefused(answers()[0], 21, true, messageToProgram);
    expectCutsRefused(answers()[1], 0, false, messageToProgram);
    expectCutsRefused(answers()[3], 13, true, messageToProgram);
    expectCutsRefused(answers()[4], 13, true, messageToProgram);
}

TEST(Messages, NobodyTakesWhatIsMeantForTheOtherSide) {
    for (const ToHelper& request : requests())
        EXPECT_FALSE(messageToProgram(packetOf(request)));
    for (const ToProgram& answer : answers())
        EXPECT_FALSE(messageToHelper(packetOf(answer)));
}

TEST(Messages, ValuesThatDoNotExistAreRefused) {
    for (const double seconds : {-1.0, std::numeric_limits<double>::infinity(), std::nan("")})
        EXPECT_FALSE(read(ToHelper(ReadRequest{1, seconds, 0, 0, "bmp"}))) << seconds;
    Packet done = packetOf(ToProgram(WriteDone{6, FileError::cannotWrite, ""}));
    done[5] = static_cast<uint8_t>(FileError::cannotWrite) + 1;
    EXPECT_FALSE(messageToProgram(done));
    EXPECT_FALSE(messageToProgram({}));
    // The last byte but the three of the extension is a flag.
    Packet writing = packetOf(requests()[2]);
    writing[writing.size() - 4] = 2;
    EXPECT_FALSE(messageToHelper(writing));
    for (int kind = 0; kind < 256; ++kind) {
        if (kind >= 1 && kind <= 7) continue;
        Packet packet(64);
        packet[0] = static_cast<uint8_t>(kind);
        EXPECT_FALSE(messageToHelper(packet)) << kind;
        EXPECT_FALSE(messageToProgram(packet)) << kind;
    }
}

TEST(Messages, ALongTextIsCutOnSendingAndRefusedOnReceiving) {
    const ToProgram sent = WriteDone{1, FileError::unreadable, std::string(5000, 'a')};
    const Packet packet = packetOf(sent);
    EXPECT_LE(packet.size(), longestPacket);
    EXPECT_EQ(std::get<WriteDone>(*messageToProgram(packet)).message,
              std::string(longestText, 'a'));
    Packet longer = packet;
    longer.push_back('a');
    EXPECT_FALSE(messageToProgram(longer));
}

TEST(Messages, WhateverIsTakenFromRandomBytesIsWhatThoseBytesSay) {
    std::mt19937 random(1);
    size_t taken = 0;
    for (int round = 0; round < 200000; ++round) {
        Packet packet(random() % 70);
        for (uint8_t& byte : packet)
            byte = static_cast<uint8_t>(random());
        if (!packet.empty()) packet[0] = static_cast<uint8_t>(random() % 9);
        const auto toHelper = messageToHelper(packet);
        const auto toProgram = messageToProgram(packet);
        EXPECT_FALSE(toHelper && toProgram);
        if (toHelper) {
            EXPECT_EQ(packetOf(*toHelper), packet);
        }
        if (toProgram) {
            EXPECT_EQ(packetOf(*toProgram), packet);
        }
        taken += toHelper || toProgram;
    }
    EXPECT_GT(taken, 1000u);
}

TEST(Messages, ABlocksSizeIsThatOfABufferOrNone) {
    EXPECT_EQ(blockBytesFor(1, 1), 5u * 5 * 4);
    EXPECT_EQ(blockBytesFor(30, 20), PixelBuffer(30, 20).byteCount());
    for (const int64_t side :
         {int64_t{0}, int64_t{-1}, (int64_t{1} << 30) + 1, std::numeric_limits<int64_t>::max(),
          std::numeric_limits<int64_t>::min()}) {
        EXPECT_EQ(blockBytesFor(side, 1), 0u);
        EXPECT_EQ(blockBytesFor(1, side), 0u);
    }
    EXPECT_EQ(blockBytesFor(int64_t{1} << 30, int64_t{1} << 30), 0u);
    EXPECT_NE(blockBytesFor(int64_t{1} << 30, 1), 0u);
}

}  // namespace
}  // namespace tessarine::tests
