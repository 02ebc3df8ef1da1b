#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "imagefiles/codec/messages.h"

namespace tessarine {

/// A descriptor that is closed at the end of its scope.
class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() { reset(); }
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        if (this != &other) {
            reset();
            number_ = std::exchange(other.number_, -1);
        }
        return *this;
    }

    int get() const { return number_; }
    explicit operator bool() const { return number_ >= 0; }
    int release() { return std::exchange(number_, -1); }
    void reset();

  private:
    int number_ = -1;
};

/// The most descriptors that one packet carries.
constexpr size_t mostDescriptors = 8;

/// One packet as it came.
struct Received {
    enum class End {
        packet,
        closed,   ///< the other side is gone
        timeout,  ///< nothing came in time
        broken,   ///< a packet that is too long, too many descriptors, an error of the socket
    };
    End end = End::broken;
    Packet packet;
    std::vector<Descriptor> descriptors;
    /// With `closed`: the other side left before it took all that was sent.
    bool unread = false;
};

/// Sends a packet with descriptors. \return false where the other side is gone or takes nothing
bool sendPacket(int socket, const Packet& packet, const std::vector<int>& descriptors);

/// Waits for a packet; without a deadline for ever. Descriptors come with close-on-exec; with
/// `takeDescriptors` false they are dropped unseen.
Received receivePacket(int socket, std::optional<std::chrono::steady_clock::time_point> deadline,
                       bool takeDescriptors);

}  // namespace tessarine
