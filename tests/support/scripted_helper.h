#pragma once

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <sys/mman.h>
#include <sys/socket.h>
#include <thread>
#include <utility>
#include <vector>

#include "imagefiles/codec/channel.h"
#include "imagefiles/codec/helper.h"
#include "imagefiles/codec/messages.h"

namespace tessarine::tests {

/// What stands at the other end of the socket in place of a helper process.
class HelperEndpoint {
  public:
    explicit HelperEndpoint(Descriptor socket) : socket_(std::move(socket)) {}

    int socket() const { return socket_.get(); }
    void close() { socket_.reset(); }
    bool say(const ToProgram& message) { return sendPacket(socket(), packetOf(message), {}); }
    /// The next message from the program; nothing once it is gone.
    std::optional<ToHelper> hear() {
        Received received = receivePacket(socket(), std::nullopt, true);
        descriptors = std::move(received.descriptors);
        if (received.end != Received::End::packet) return std::nullopt;
        return messageToHelper(received.packet);
    }
    template <class Message>
    std::optional<Message> hearA() {
        const std::optional<ToHelper> message = hear();
        if (!message || !std::holds_alternative<Message>(*message)) return std::nullopt;
        return std::get<Message>(*message);
    }
    void beReady(const std::string& refused = {}) { say(Ready{protocolVersion, refused}); }

    /// Serves a reading as a helper should: asks for a block, fills its image area with `pixel`.
    void serve(const ReadRequest& request, int32_t width, int32_t height, Pixel pixel) {
        say(NeedBlock{request.number, width, height});
        const auto grant = hearA<BlockGrant>();
        if (!grant || grant->block.id == 0) {
            say(ReadDone{request.number, FileError::tooLarge, 0, 0, 0, 0, "too large"});
            return;
        }
        fill(grant->block, width, height, pixel);
        say(ReadDone{request.number, FileError::none, width, height, 24, grant->block.id, {}});
    }
    /// Draws into the block that came last.
    void fill(const BlockRef& block, int32_t width, int32_t height, Pixel pixel) const {
        void* memory = ::mmap(nullptr, block.bytes, PROT_READ | PROT_WRITE, MAP_SHARED,
                              descriptors.at(0).get(), 0);
        auto* pixels = static_cast<Pixel*>(memory);
        const int64_t stride = width + 4;
        std::fill(pixels, pixels + stride * (height + 4), Pixel{});
        for (int64_t y = 2; y < height + 2; ++y)
            std::fill(pixels + y * stride + 2, pixels + y * stride + 2 + width, pixel);
        ::munmap(memory, block.bytes);
    }

    /// Writes one pixel all over the block that came last, margin and rest included.
    void flood(const BlockRef& block, Pixel pixel) const {
        void* memory = ::mmap(nullptr, block.bytes, PROT_READ | PROT_WRITE, MAP_SHARED,
                              descriptors.at(0).get(), 0);
        std::fill_n(static_cast<Pixel*>(memory), block.bytes / sizeof(Pixel), pixel);
        ::munmap(memory, block.bytes);
    }

    std::vector<Descriptor> descriptors;  ///< that came with the last message

  private:
    Descriptor socket_;
};

/// A helper that is a thread of the test, which does as a script says.
class ScriptedHelper : public Helper {
  public:
    using Script = std::function<void(HelperEndpoint&)>;

    /// \param end  how it is said to have ended
    explicit ScriptedHelper(Script script, HelperEnd end = {HelperEnd::How::exited, 3})
        : end_(end) {
        int ends[2];
        if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) std::abort();
        socket_ = Descriptor(ends[0]);
        thread_ = std::thread([script = std::move(script), other = ends[1]] {
            HelperEndpoint endpoint{Descriptor(other)};
            script(endpoint);
        });
    }
    ~ScriptedHelper() override { kill(); }

    int socket() const override { return socket_.get(); }
    HelperEnd awaitEnd() override {
        kill();
        return end_;
    }
    void kill() override {
        if (!thread_.joinable()) return;
        ::shutdown(socket_.get(), SHUT_RDWR);
        thread_.join();
    }

  private:
    HelperEnd end_;
    Descriptor socket_;
    std::thread thread_;
};

/// Helpers that do one script after the other, the last one again and again.
class ScriptedHelpers {
  public:
    explicit ScriptedHelpers(std::vector<ScriptedHelper::Script> scripts)
        : scripts_(std::move(scripts)) {}

    /// How those that end are said to have ended.
    HelperEnd end{HelperEnd::How::exited, 3};

    std::function<std::unique_ptr<Helper>(HelperKind)> starter() {
        return [this](HelperKind kind) {
            const std::lock_guard lock(guard_);
            kinds.push_back(kind);
            const size_t at = std::min(kinds.size(), scripts_.size()) - 1;
            return std::make_unique<ScriptedHelper>(scripts_[at], end);
        };
    }
    std::vector<HelperKind> kinds;  ///< of those that were started

  private:
    std::mutex guard_;
    std::vector<ScriptedHelper::Script> scripts_;
};

}  // namespace tessarine::tests
