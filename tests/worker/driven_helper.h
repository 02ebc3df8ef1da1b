#pragma once

#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <poll.h>
#include <spawn.h>
#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "imagefiles/codec/channel.h"
#include "imagefiles/codec/messages.h"
#include "imagefiles/worker/helper.h"

namespace tessarine::tests {

using Clock = std::chrono::steady_clock;

/// A block as the program makes them, with what it holds in sight.
class TestBlock {
  public:
    static constexpr int seals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL;

    explicit TestBlock(uint64_t bytes, int sealed = seals)
        : file_(memfd_create("block", MFD_CLOEXEC | MFD_ALLOW_SEALING)), bytes_(bytes) {
        if (!file_ || ftruncate(file_.get(), static_cast<off_t>(bytes)) != 0 ||
            fcntl(file_.get(), F_ADD_SEALS, sealed) != 0)
            throw std::runtime_error("no block");
        start_ = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file_.get(), 0);
        if (start_ == MAP_FAILED) throw std::runtime_error("no block");
    }
    ~TestBlock() { munmap(start_, bytes_); }
    TestBlock(const TestBlock&) = delete;
    TestBlock& operator=(const TestBlock&) = delete;

    int file() const { return file_.get(); }
    uint64_t bytes() const { return bytes_; }
    Pixel* pixels() const { return static_cast<Pixel*>(start_); }
    /// A copy of what it holds.
    PixelBuffer picture(int32_t width, int32_t height) const {
        PixelBuffer buffer(width, height);
        std::memcpy(static_cast<void*>(buffer.writableBlock()), start_, buffer.byteCount());
        return buffer;
    }

  private:
    Descriptor file_;
    uint64_t bytes_;
    void* start_ = nullptr;
};

/// What came of a reading, and whether the helper was still there at its end.
struct HelperRead {
    std::optional<ReadDone> done;
    std::optional<PixelBuffer> picture;
    int blocksAsked = 0;
};

/// A helper process, driven by hand.
class DrivenHelper {
  public:
    explicit DrivenHelper(const std::string& program = TESSARINE_CODEC,
                          const std::string& kind = "files",
                          const std::vector<std::string>& environment = {}) {
        int ends[2];
        if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
            throw std::runtime_error("no socket");
        socket_ = Descriptor(ends[0]);
        const Descriptor theirs(ends[1]);
        const int number = 40;
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, theirs.get(), number);
        std::vector<std::string> words{program, std::to_string(number), kind,
                                       std::to_string(getpid())};
        std::vector<char*> argv;
        for (std::string& word : words)
            argv.push_back(word.data());
        argv.push_back(nullptr);
        std::vector<char*> variables;
        for (char** variable = environ; *variable != nullptr; ++variable)
            variables.push_back(*variable);
        for (const std::string& variable : environment)
            variables.push_back(const_cast<char*>(variable.c_str()));
        variables.push_back(nullptr);
        const int failure = posix_spawn(&process_, program.c_str(), &actions, nullptr, argv.data(),
                                        variables.data());
        posix_spawn_file_actions_destroy(&actions);
        if (failure != 0) throw std::runtime_error(program + " does not start");
        const std::optional<ToProgram> message = receive();
        if (message && std::holds_alternative<Ready>(*message)) ready = std::get<Ready>(*message);
    }
    ~DrivenHelper() {
        if (process_ <= 0) return;
        ::kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
    DrivenHelper(const DrivenHelper&) = delete;
    DrivenHelper& operator=(const DrivenHelper&) = delete;

    std::optional<Ready> ready;

    int socket() const { return socket_.get(); }
    pid_t process() const { return process_; }
    void closeSocket() { socket_.reset(); }

    bool send(const ToHelper& message, const std::vector<int>& descriptors) {
        return sendPacket(socket_.get(), packetOf(message), descriptors);
    }
    std::optional<ToProgram> receive(
        std::chrono::milliseconds patience = std::chrono::seconds(90)) {
        const Received received = receivePacket(socket_.get(), Clock::now() + patience, false);
        if (received.end != Received::End::packet) return std::nullopt;
        return messageToProgram(received.packet);
    }
    /// The next packet tells that the helper is gone.
    bool isGone() {
        const Received received =
            receivePacket(socket_.get(), Clock::now() + std::chrono::seconds(90), false);
        return received.end == Received::End::closed;
    }

    /// The exit status, or the number of the signal that ended it, negative; nothing while it
    /// lives.
    std::optional<int> end(std::chrono::milliseconds patience = std::chrono::seconds(60)) {
        const auto deadline = Clock::now() + patience;
        for (;;) {
            int status = 0;
            if (waitpid(process_, &status, WNOHANG) == process_) {
                process_ = 0;
                return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
            }
            if (Clock::now() > deadline) return std::nullopt;
            usleep(2000);
        }
    }

    struct Wishes {
        double seconds = 0;
        uint64_t memoryBytes = uint64_t{1} << 30;
        /// What blocks are larger by than they must be.
        uint64_t slack = 0;
        bool deny = false;
    };

    /// Has a file read, answering what the helper asks in between.
    HelperRead read(const std::string& path, const std::string& extension, const Wishes& wishes,
                    const std::vector<std::string>& companions = {}) {
        std::vector<Descriptor> files;
        files.emplace_back(open(path.c_str(), O_RDONLY | O_CLOEXEC));
        ReadRequest request{++number_, wishes.seconds, wishes.memoryBytes, 0, extension};
        for (size_t i = 0; i < companions.size(); ++i) {
            Descriptor companion(open(companions[i].c_str(), O_RDONLY | O_CLOEXEC));
            if (!companion) continue;
            request.companions |= 1u << i;
            files.push_back(std::move(companion));
        }
        std::vector<int> numbers;
        for (const Descriptor& file : files)
            numbers.push_back(file.get());
        HelperRead result;
        if (!send(request, numbers)) return result;
        for (;;) {
            const std::optional<ToProgram> message = receive();
            if (!message) return result;
            if (const auto* need = std::get_if<NeedBlock>(&*message)) {
                ++result.blocksAsked;
                if (wishes.deny) {
                    send(BlockGrant{need->number, {}}, {});
                    continue;
                }
                const uint64_t bytes = blockBytesFor(need->width, need->height) + wishes.slack;
                const uint32_t id = blockOf(bytes);
                send(BlockGrant{need->number, {id, blocks_[id]->bytes()}}, {blocks_[id]->file()});
            } else if (const auto* done = std::get_if<ReadDone>(&*message)) {
                result.done = *done;
                if (done->error == FileError::none && blocks_.count(done->blockId) != 0 &&
                    blocks_[done->blockId]->bytes() >= blockBytesFor(done->width, done->height))
                    result.picture = blocks_[done->blockId]->picture(done->width, done->height);
                return result;
            } else {
                return result;
            }
        }
    }
    HelperRead read(const std::string& path, const std::string& extension) {
        return read(path, extension, Wishes{});
    }

    /// Has a picture written to an open file.
    std::optional<WriteDone> write(const PixelBuffer& picture, const std::string& extension,
                                   int16_t formatIndex, int output, const Wishes& wishes) {
        const uint32_t id = blockOf(picture.byteCount());
        std::memcpy(static_cast<void*>(blocks_[id]->pixels()), picture.block(),
                    picture.byteCount());
        const WriteRequest request{
            ++number_,        wishes.seconds, wishes.memoryBytes,         picture.width(),
            picture.height(), formatIndex,    {id, blocks_[id]->bytes()}, extension};
        if (!send(request, {output, blocks_[id]->file()})) return std::nullopt;
        const std::optional<ToProgram> message = receive();
        if (!message || !std::holds_alternative<WriteDone>(*message)) return std::nullopt;
        return std::get<WriteDone>(*message);
    }

    uint32_t lastNumber() const { return number_; }

  private:
    /// The number of a block of at least so many bytes: one in three is new.
    uint32_t blockOf(uint64_t bytes) {
        for (const auto& [id, block] : blocks_)
            if (block->bytes() >= bytes && ++reused_ % 3 != 0) return id;
        constexpr size_t mostBlocks = 6;
        if (blocks_.size() >= mostBlocks) blocks_.erase(blocks_.begin());
        const uint32_t id = ++lastBlock_;
        blocks_[id] = std::make_unique<TestBlock>(bytes);
        return id;
    }

    pid_t process_ = 0;
    Descriptor socket_;
    uint32_t number_ = 0;
    uint32_t lastBlock_ = 0;
    uint32_t reused_ = 0;
    std::map<uint32_t, std::unique_ptr<TestBlock>> blocks_;
};

/// A file without a name.
inline Descriptor unnamedFile() {
    return Descriptor(
        open(std::filesystem::temp_directory_path().c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
}

/// The bytes of an open file.
inline std::string contentsOf(const Descriptor& file) {
    std::string bytes;
    char part[65536];
    for (off_t at = 0;;) {
        const ssize_t got = pread(file.get(), part, sizeof part, at);
        if (got <= 0) return bytes;
        bytes.append(part, static_cast<size_t>(got));
        at += got;
    }
}

}  // namespace tessarine::tests
