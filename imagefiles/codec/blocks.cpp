#include "imagefiles/codec/blocks.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <string>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "pixels/failures.h"
#include "pixels/free_pieces.h"

namespace tessarine {

namespace {

/// A file in memory, closed at a program's start. Newer systems want to be told that it is no
/// program; older ones do not know the word.
int newMemoryFile() {
    constexpr unsigned flags = MFD_CLOEXEC | MFD_ALLOW_SEALING;
#ifdef MFD_NOEXEC_SEAL
    const int file = ::memfd_create("tessarine-block", flags | MFD_NOEXEC_SEAL);
    if (file >= 0 || errno != EINVAL) return file;
#endif
    return ::memfd_create("tessarine-block", flags);
}

uint64_t wholePages(uint64_t bytes) {
    const auto page = static_cast<uint64_t>(::sysconf(_SC_PAGESIZE));
    return (bytes + page - 1) / page * page;
}

/// A limit on the size of files holds for those in memory too, and going beyond it would end the
/// program by a signal.
bool isWithinFileLimit(uint64_t bytes) {
    rlimit limit{};
    return ::getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY ||
           bytes <= limit.rlim_cur;
}

[[noreturn]] void refuseMemory() {
    throw StatementFailed(std::string("there is no memory for the picture: ") +
                          std::strerror(errno));
}

}  // namespace

Block::Block(uint32_t id, uint64_t bytes) : id_(id), bytes_(bytes) {
    if (!isWithinFileLimit(bytes))
        throw StatementFailed("the limit on the size of files (ulimit -f) has no room for the " +
                              std::to_string(bytes) + " bytes of the picture in memory");
    file_ = newMemoryFile();
    if (file_ < 0) refuseMemory();
    void* memory = MAP_FAILED;
    if (::ftruncate(file_, static_cast<off_t>(bytes)) == 0 &&
        ::fcntl(file_, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) == 0)
        memory = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file_, 0);
    if (memory == MAP_FAILED) {
        const int error = errno;
        ::close(file_);
        errno = error;
        refuseMemory();
    }
    pixels_ = static_cast<Pixel*>(memory);
}

Block::~Block() {
    ::munmap(pixels_, bytes_);
    ::close(file_);
}

struct BlockPool::State {
    mutable std::mutex guard;
    FreePieces<Block> free;
    std::map<const Pixel*, std::weak_ptr<Block>> taken;
    uint32_t lastId = 0;

    explicit State(uint64_t mostFreeBytes) : free(mostFreeBytes) {}
};

BlockPool::BlockPool(uint64_t mostFreeBytes) : state_(std::make_shared<State>(mostFreeBytes)) {}

std::shared_ptr<Block> BlockPool::take(uint64_t bytes) {
    const uint64_t wanted = wholePages(std::max<uint64_t>(bytes, 1));
    std::unique_ptr<Block> block;
    uint32_t id = 0;
    {
        const std::lock_guard lock(state_->guard);
        block = state_->free.take(wanted);
        if (block == nullptr) {
            if (++state_->lastId == 0) ++state_->lastId;
            id = state_->lastId;
        }
    }
    if (block == nullptr) block = std::make_unique<Block>(id, wanted);

    std::shared_ptr<Block> shared(block.release(), [state = state_](Block* whole) {
        std::vector<std::unique_ptr<Block>> tooMuch;
        const std::lock_guard lock(state->guard);
        state->taken.erase(whole->pixels());
        tooMuch = state->free.keep(std::unique_ptr<Block>(whole));
    });
    const std::lock_guard lock(state_->guard);
    state_->taken[shared->pixels()] = shared;
    return shared;
}

std::shared_ptr<Block> BlockPool::holding(const PixelBuffer& picture) const {
    if (!picture.isDimensioned()) return nullptr;
    const std::lock_guard lock(state_->guard);
    const auto found = state_->taken.find(picture.block());
    return found == state_->taken.end() ? nullptr : found->second.lock();
}

uint64_t BlockPool::freeBytes() const {
    const std::lock_guard lock(state_->guard);
    return state_->free.bytes();
}

void BlockPool::giveBack() {
    std::vector<std::unique_ptr<Block>> all;
    const std::lock_guard lock(state_->guard);
    all = state_->free.takeAll();
}

std::shared_ptr<Pixel> pixelsIn(std::shared_ptr<Block> block) {
    Pixel* const pixels = block->pixels();
    // A buffer asks its pointer whether it has company, and the block comes along in it.
    return {std::move(block), pixels};
}

PixelBuffer pictureIn(std::shared_ptr<Block> block, int32_t width, int32_t height) {
    return {width, height, pixelsIn(std::move(block))};
}

}  // namespace tessarine
