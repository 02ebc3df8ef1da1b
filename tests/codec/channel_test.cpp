#include "imagefiles/codec/channel.h"

#include <chrono>
#include <fcntl.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

#include "support/paths.h"

namespace tessarine::tests {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

class Channel : public testing::Test {
  protected:
    Channel() {
        int ends[2] = {-1, -1};
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
        here = Descriptor(ends[0]);
        there = Descriptor(ends[1]);
    }
    Received receive(bool takeDescriptors = true) const {
        return receivePacket(there.get(), Clock::now() + 5s, takeDescriptors);
    }

    Descriptor here;
    Descriptor there;
};

/// How many descriptors this process has open.
int openDescriptors() {
    int count = 0;
    for (int number = 0; number < 1024; ++number)
        count += fcntl(number, F_GETFD) >= 0;
    return count;
}

TEST_F(Channel, PacketsKeepTheirBordersAndTheirOrder) {
    ASSERT_TRUE(sendPacket(here.get(), {1, 2, 3}, {}));
    ASSERT_TRUE(sendPacket(here.get(), {4}, {}));
    Received first = receive();
    EXPECT_EQ(first.end, Received::End::packet);
    EXPECT_EQ(first.packet, (Packet{1, 2, 3}));
    EXPECT_EQ(receive().packet, (Packet{4}));
}

TEST_F(Channel, DescriptorsLeadToTheSameFilesAndCloseOnExec) {
    const ScratchFolder folder;
    std::vector<Descriptor> files;
    std::vector<int> numbers;
    for (int i = 0; i < static_cast<int>(mostDescriptors); ++i) {
        const std::string path = folder / std::to_string(i);
        files.emplace_back(open(path.c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600));
        ASSERT_EQ(write(files.back().get(), &i, 1), 1);
        numbers.push_back(files.back().get());
    }
    ASSERT_TRUE(sendPacket(here.get(), {1}, numbers));
    const Received received = receive();
    ASSERT_EQ(received.end, Received::End::packet);
    ASSERT_EQ(received.descriptors.size(), mostDescriptors);
    for (size_t i = 0; i < mostDescriptors; ++i) {
        const int got = received.descriptors[i].get();
        char byte = -1;
        EXPECT_EQ(pread(got, &byte, 1, 0), 1);
        EXPECT_EQ(byte, static_cast<char>(i));
        EXPECT_EQ(fcntl(got, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    }
    numbers.push_back(numbers[0]);
    EXPECT_FALSE(sendPacket(here.get(), {1}, numbers));
}

TEST_F(Channel, NothingOfAPacketStaysOpen) {
    const int before = openDescriptors();
    for (int round = 0; round < 50; ++round) {
        ASSERT_TRUE(sendPacket(here.get(), {1}, {here.get(), there.get()}));
        EXPECT_EQ(receive().descriptors.size(), 2u);
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(Channel, WhoTakesNoDescriptorsGetsNone) {
    const int before = openDescriptors();
    ASSERT_TRUE(sendPacket(here.get(), {1, 2}, {here.get(), there.get()}));
    const Received received = receive(false);
    EXPECT_EQ(received.end, Received::End::packet);
    EXPECT_EQ(received.packet, (Packet{1, 2}));
    EXPECT_TRUE(received.descriptors.empty());
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(Channel, APacketThatIsTooLongIsNotSentAndNotTaken) {
    EXPECT_TRUE(sendPacket(here.get(), Packet(longestPacket), {}));
    EXPECT_EQ(receive().packet.size(), longestPacket);
    EXPECT_FALSE(sendPacket(here.get(), Packet(longestPacket + 1), {}));
    const Packet long1(longestPacket + 1);
    ASSERT_EQ(send(here.get(), long1.data(), long1.size(), 0), static_cast<ssize_t>(long1.size()));
    EXPECT_EQ(receive().end, Received::End::broken);
    const Packet long2(10 * longestPacket);
    ASSERT_EQ(send(here.get(), long2.data(), long2.size(), 0), static_cast<ssize_t>(long2.size()));
    EXPECT_EQ(receive().end, Received::End::broken);
}

TEST_F(Channel, MoreDescriptorsThanAPacketCarriesBreakIt) {
    const int before = openDescriptors();
    const size_t count = mostDescriptors + 3;
    char byte = 1;
    iovec part{&byte, 1};
    msghdr header{};
    header.msg_iov = &part;
    header.msg_iovlen = 1;
    std::vector<char> control(CMSG_SPACE(sizeof(int) * count));
    header.msg_control = control.data();
    header.msg_controllen = control.size();
    cmsghdr* rights = CMSG_FIRSTHDR(&header);
    rights->cmsg_level = SOL_SOCKET;
    rights->cmsg_type = SCM_RIGHTS;
    rights->cmsg_len = CMSG_LEN(sizeof(int) * count);
    const std::vector<int> numbers(count, here.get());
    std::copy(numbers.begin(), numbers.end(), reinterpret_cast<int*>(CMSG_DATA(rights)));
    ASSERT_EQ(sendmsg(here.get(), &header, 0), 1);
    EXPECT_EQ(receive().end, Received::End::broken);
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(Channel, ADeadlineEndsTheWait) {
    const auto start = Clock::now();
    const Received received = receivePacket(there.get(), start + 50ms, true);
    EXPECT_EQ(received.end, Received::End::timeout);
    EXPECT_GE(Clock::now() - start, 50ms);
    EXPECT_LT(Clock::now() - start, 5s);
    EXPECT_EQ(receivePacket(there.get(), start - 1s, true).end, Received::End::timeout);
}

TEST_F(Channel, WhatCameBeforeADeadlineThatPassedIsTaken) {
    ASSERT_TRUE(sendPacket(here.get(), {9}, {}));
    EXPECT_EQ(receivePacket(there.get(), Clock::now() - 1s, true).packet, (Packet{9}));
}

TEST_F(Channel, AClosedOtherSideIsSeenAfterItsLastPacket) {
    ASSERT_TRUE(sendPacket(here.get(), {9}, {}));
    here.reset();
    EXPECT_EQ(receive().packet, (Packet{9}));
    EXPECT_EQ(receive().end, Received::End::closed);
    EXPECT_EQ(receivePacket(there.get(), std::nullopt, true).end, Received::End::closed);
    EXPECT_FALSE(sendPacket(there.get(), {1}, {}));
}

TEST_F(Channel, ClosingEndsAWaitWithoutADeadline) {
    std::thread closer([this] {
        std::this_thread::sleep_for(50ms);
        here.reset();
    });
    EXPECT_EQ(receivePacket(there.get(), std::nullopt, true).end, Received::End::closed);
    closer.join();
}

}  // namespace
}  // namespace tessarine::tests
