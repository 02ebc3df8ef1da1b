#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "imagefiles/worker/helper.h"
#include "support/misbehaviour.h"

namespace tessarine::tests {
namespace {

std::string verdict(bool could) {
    const char* name = could ? "done" : strerrorname_np(errno);
    return name != nullptr ? name : "unknown";
}

std::string verdictOfOpening(const std::string& path, int flags) {
    const int file = open(path.c_str(), flags | O_CLOEXEC, 0600);
    const std::string text = verdict(file >= 0);
    if (file >= 0) close(file);
    return text;
}

std::string verdictOfFork() {
    const pid_t child = fork();
    if (child == 0) _exit(0);
    const std::string text = verdict(child > 0);
    if (child > 0) waitpid(child, nullptr, 0);
    return text;
}

std::string verdictOfThread() {
    int seen = 0;
    try {
        std::thread([&seen] { seen = 1; }).join();
    } catch (const std::exception& why) {
        return why.what();
    }
    return seen == 1 ? "done" : "lost";
}

std::string verdictOfLimit() {
    rlimit limit{};
    getrlimit(RLIMIT_AS, &limit);
    if (limit.rlim_max == RLIM_INFINITY) return "unlimited";
    limit.rlim_max += 4096;
    return verdict(setrlimit(RLIMIT_AS, &limit) == 0);
}

std::string verdictOfCode() {
    void* page =
        mmap(nullptr, 4096, PROT_READ | PROT_WRITE | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    const std::string text = verdict(page != MAP_FAILED);
    if (page != MAP_FAILED) munmap(page, 4096);
    return text;
}

std::string openDescriptors() {
    int count = 0;
    for (int number = 0; number < 1024; ++number)
        count += fcntl(number, F_GETFD) >= 0;
    return std::to_string(count);
}

std::string streamsThatLeadSomewhere() {
    int count = 0;
    for (int number = 0; number < 3; ++number) {
        struct stat status {};
        if (fstat(number, &status) != 0 || !S_ISCHR(status.st_mode) ||
            status.st_rdev != makedev(1, 3))
            ++count;
    }
    return std::to_string(count);
}

/// The compiler may not see that what is allocated is not used.
void* allocated(size_t bytes) {
    void* volatile block = std::malloc(bytes);
    return block;
}

std::string dirtyBytes() {
    size_t count = 0;
    for (const size_t bytes : {size_t{40}, size_t{5000}, size_t{300000}, size_t{50000000}}) {
        for (int round = 0; round < 2; ++round) {
            auto* block = static_cast<unsigned char*>(allocated(bytes));
            if (block == nullptr) return "none";
            for (size_t i = 0; i < bytes; ++i)
                count += block[i] != 0;
            std::memset(block, 0xAA, bytes);
            auto* volatile hidden = block;
            std::free(hidden);
        }
    }
    return std::to_string(count);
}

/// What a word probes for; empty for other words.
std::string probe(const std::string& word, const std::string& argument) {
    if (word == "probe-open") return verdictOfOpening(argument, O_RDONLY);
    if (word == "probe-open-write") return verdictOfOpening(argument, O_WRONLY | O_CREAT);
    if (word == "probe-unlink") return verdict(unlink(argument.c_str()) == 0);
    if (word == "probe-socket") return verdict(::socket(AF_INET, SOCK_STREAM, 0) >= 0);
    if (word == "probe-exec") {
        char* const words[] = {const_cast<char*>("/bin/true"), nullptr};
        return verdict(execv(words[0], words) == 0);
    }
    if (word == "probe-ptrace") return verdict(ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0);
    if (word == "probe-kill") return verdict(::kill(getppid(), 0) == 0);
    if (word == "probe-fork") return verdictOfFork();
    if (word == "probe-thread") return verdictOfThread();
    if (word == "probe-setrlimit") return verdictOfLimit();
    if (word == "probe-limit-parent") {
        const rlimit limit{60, 60};
        return verdict(prlimit(getppid(), RLIMIT_CPU, &limit, nullptr) == 0);
    }
    if (word == "probe-code") return verdictOfCode();
    if (word == "probe-descriptors") return openDescriptors();
    if (word == "probe-output") return streamsThatLeadSomewhere();
    if (word == "probe-fresh-memory") return dirtyBytes();
    return {};
}

class Misbehaviour : public Interference {
  public:
    bool atReading(int socket, const ReadRequest& request, Bytes file) override {
        const std::string start = misbehavingFile("");
        const std::string text(file.begin(), file.end());
        if (text.rfind(start, 0) != 0) return false;
        const size_t end = std::min(text.find(' ', start.size()), text.size());
        const std::string word = text.substr(start.size(), end - start.size());
        const std::string argument = end < text.size() ? text.substr(end + 1) : "";
        const std::string found = probe(word, argument);
        ReadDone done{request.number, FileError::unreadable, 0, 0, 0, 0, found};
        if (found.empty()) done.error = misbehave(socket, request.number, word, true);
        sendPacket(socket, packetOf(ToProgram(done)), {});
        return true;
    }

    bool atWriting(int socket, const WriteRequest& request, const PixelBuffer& picture) override {
        if (picture.at(0, 0) != Pixel{1, 2, 3, 0} || picture.width() < 2) return false;
        const uint8_t number = picture.at(1, 0).blue;
        if (number >= misbehaviours.size()) return false;
        const std::string word(misbehaviours[number]);
        const FileError error = misbehave(socket, request.number, word, false);
        sendPacket(socket, packetOf(ToProgram(WriteDone{request.number, error, word})), {});
        return true;
    }

  private:
    static void tell(int socket, const ToProgram& message) {
        sendPacket(socket, packetOf(message), {});
    }
    static ReadDone picture(uint32_t number, int32_t width, int32_t height, uint32_t block) {
        return {number, FileError::none, width, height, 24, block, {}};
    }
    /// Asks for a block. \return its number
    static uint32_t askForBlock(int socket, uint32_t number, int32_t width, int32_t height) {
        tell(socket, NeedBlock{number, width, height});
        const Received received = receivePacket(socket, std::nullopt, true);
        const std::optional<ToHelper> message = messageToHelper(received.packet);
        const auto* grant = message ? std::get_if<BlockGrant>(&*message) : nullptr;
        return grant != nullptr ? grant->block.id : 0;
    }

    [[noreturn]] static void flood(int socket, uint32_t number) {
        const std::string text(1000, 'x');
        for (uint32_t i = 0;; ++i) {
            for (const int stream : {STDOUT_FILENO, STDERR_FILENO})
                static_cast<void>(!::write(stream, text.data(), text.size()));
            tell(socket, ReadDone{number + i, FileError::unreadable, 0, 0, 0, 0, text});
        }
    }

    /// Lies that a reading can tell.
    static void lie(int socket, uint32_t number, const std::string& word) {
        if (word == "lie-early") tell(socket, picture(number, 64, 64, 1));
        if (word == "lie-size")
            tell(socket, picture(number, 640, 640, askForBlock(socket, number, 64, 64)));
        if (word == "lie-block")
            tell(socket, picture(number, 64, 64, askForBlock(socket, number, 64, 64) + 7));
    }

    /// Does what the word says. \return what an honest helper would answer afterwards
    static FileError misbehave(int socket, uint32_t number, const std::string& word,
                               bool isReading) {
        if (word == "crash") std::raise(SIGSEGV);
        if (word == "abort") std::abort();
        if (word == "exit") _exit(7);
        if (word == "flood") flood(socket, number);
        if (word == "silent-close") close(socket);
        if (word == "hang" || word == "silent-close")
            for (;;)
                sleep(1000);
        if (word == "spin")
            for (volatile uint64_t count = 0;;)
                count = count + 1;
        if (word == "allocate") {
            constexpr size_t part = size_t{16} << 20;
            std::vector<void*> blocks;
            while (void* block = allocated(part)) {
                std::memset(block, 1, part);
                blocks.push_back(block);
            }
            for (void* block : blocks)
                std::free(block);
            return FileError::tooLarge;
        }
        if (word == "leak") std::memset(allocated(size_t{40} << 20), 1, size_t{40} << 20);
        if (word == "lie-number" && !isReading)
            tell(socket, WriteDone{number + 1, FileError::none, {}});
        if (word == "lie-number" && isReading)
            tell(socket, ReadDone{number + 1, FileError::unreadable, 0, 0, 0, 0, {}});
        if (isReading) lie(socket, number, word);
        return isReading ? FileError::unreadable : FileError::cannotWrite;
    }
};

}  // namespace
}  // namespace tessarine::tests

int main(int argc, char** argv) {
    tessarine::tests::Misbehaviour misbehaviour;
    _exit(tessarine::runHelper(argc, argv, &misbehaviour));
}
