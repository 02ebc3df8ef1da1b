#include "imagefiles/codec/channel.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tessarine {

namespace {

using Clock = std::chrono::steady_clock;

/// Waits until the socket can be read or is closed. \return false where the deadline passed first
bool waitForInput(int socket, std::optional<Clock::time_point> deadline) {
    for (;;) {
        int milliseconds = -1;
        if (deadline) {
            const auto left =
                std::chrono::ceil<std::chrono::milliseconds>(*deadline - Clock::now()).count();
            milliseconds = static_cast<int>(std::clamp<int64_t>(left, 0, 1 << 30));
        }
        pollfd entry{socket, POLLIN, 0};
        const int ready = ::poll(&entry, 1, milliseconds);
        if (ready > 0) return true;
        if (ready == 0 && deadline && Clock::now() >= *deadline) return false;
        if (ready < 0 && errno != EINTR) return true;  // receiving tells what is wrong
    }
}

}  // namespace

void Descriptor::reset() {
    if (number_ >= 0) ::close(number_);
    number_ = -1;
}

bool sendPacket(int socket, const Packet& packet, const std::vector<int>& descriptors) {
    if (packet.size() > longestPacket || descriptors.size() > mostDescriptors) return false;
    iovec part{const_cast<uint8_t*>(packet.data()), packet.size()};
    msghdr header{};
    header.msg_iov = &part;
    header.msg_iovlen = 1;
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int) * mostDescriptors)] = {};
    if (!descriptors.empty()) {
        header.msg_control = control;
        header.msg_controllen = CMSG_SPACE(sizeof(int) * descriptors.size());
        cmsghdr* rights = CMSG_FIRSTHDR(&header);
        rights->cmsg_level = SOL_SOCKET;
        rights->cmsg_type = SCM_RIGHTS;
        rights->cmsg_len = CMSG_LEN(sizeof(int) * descriptors.size());
        std::memcpy(CMSG_DATA(rights), descriptors.data(), sizeof(int) * descriptors.size());
    }
    for (;;) {
        const ssize_t sent = ::sendmsg(socket, &header, MSG_NOSIGNAL);
        if (sent >= 0) return static_cast<size_t>(sent) == packet.size();
        if (errno != EINTR) return false;
    }
}

Received receivePacket(int socket, std::optional<Clock::time_point> deadline,
                       bool takeDescriptors) {
    Received received;
    if (!waitForInput(socket, deadline)) {
        received.end = Received::End::timeout;
        return received;
    }
    // One byte more than any packet has tells those that are too long.
    received.packet.resize(longestPacket + 1);
    iovec part{received.packet.data(), received.packet.size()};
    msghdr header{};
    header.msg_iov = &part;
    header.msg_iovlen = 1;
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int) * mostDescriptors)] = {};
    if (takeDescriptors) {
        header.msg_control = control;
        header.msg_controllen = sizeof control;
    }
    ssize_t got = 0;
    do {
        got = ::recvmsg(socket, &header, MSG_CMSG_CLOEXEC | MSG_DONTWAIT);
    } while (got < 0 && errno == EINTR);
    for (cmsghdr* at = CMSG_FIRSTHDR(&header); got >= 0 && at != nullptr;
         at = CMSG_NXTHDR(&header, at)) {
        if (at->cmsg_level != SOL_SOCKET || at->cmsg_type != SCM_RIGHTS) continue;
        const size_t count = (at->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (size_t i = 0; i < count; ++i) {
            int descriptor = -1;
            std::memcpy(&descriptor, CMSG_DATA(at) + i * sizeof(int), sizeof(int));
            received.descriptors.emplace_back(descriptor);
        }
    }
    const bool reset = got < 0 && (errno == ECONNRESET || errno == EPIPE);
    received.unread = got < 0 && errno == ECONNRESET;
    if (got == 0 || reset)
        received.end = Received::End::closed;
    else if (got > 0 && static_cast<size_t>(got) <= longestPacket &&
             (!takeDescriptors || (header.msg_flags & MSG_CTRUNC) == 0))
        received.end = Received::End::packet;
    received.packet.resize(got > 0 ? static_cast<size_t>(got) : 0);
    return received;
}

}  // namespace tessarine
