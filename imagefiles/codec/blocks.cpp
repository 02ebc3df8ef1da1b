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

namespace tessarine {

namespace {

/// Each free block holds a descriptor, of which a process has few.
constexpr size_t mostFreeBlocks = 32;

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
    std::vector<std::unique_ptr<Block>> free;  ///< the one let go last behind the others
    std::map<const Pixel*, std::weak_ptr<Block>> taken;
    uint64_t freeBytes = 0;
    uint64_t mostFreeBytes = 0;
    uint64_t largestLately = 0;
    uint32_t lastId = 0;

    std::unique_ptr<Block> takeFree(uint64_t bytes);
    /// Returns a block, and gives what is too much to keep.
    std::vector<std::unique_ptr<Block>> giveBack(std::unique_ptr<Block> block);
};

std::unique_ptr<Block> BlockPool::State::takeFree(uint64_t bytes) {
    auto best = free.end();
    for (auto at = free.begin(); at != free.end(); ++at) {
        const uint64_t has = (*at)->bytes();
        if (has < bytes || has > 2 * bytes) continue;
        if (best == free.end() || has <= (*best)->bytes()) best = at;
    }
    if (best == free.end()) return nullptr;
    std::unique_ptr<Block> block = std::move(*best);
    free.erase(best);
    freeBytes -= block->bytes();
    return block;
}

std::vector<std::unique_ptr<Block>> BlockPool::State::giveBack(std::unique_ptr<Block> block) {
    taken.erase(block->pixels());
    freeBytes += block->bytes();
    free.push_back(std::move(block));
    std::vector<std::unique_ptr<Block>> tooMuch;
    const uint64_t most = std::max(mostFreeBytes, 2 * largestLately);
    while (freeBytes > most || free.size() > mostFreeBlocks) {
        freeBytes -= free.front()->bytes();
        tooMuch.push_back(std::move(free.front()));
        free.erase(free.begin());
    }
    return tooMuch;
}

BlockPool::BlockPool(uint64_t mostFreeBytes) : state_(std::make_shared<State>()) {
    state_->mostFreeBytes = mostFreeBytes;
}

std::shared_ptr<Block> BlockPool::take(uint64_t bytes) {
    const uint64_t wanted = wholePages(std::max<uint64_t>(bytes, 1));
    std::unique_ptr<Block> block;
    uint32_t id = 0;
    {
        const std::lock_guard lock(state_->guard);
        // A size that is not asked for again fades within a few dozen pictures.
        state_->largestLately =
            std::max(wanted, state_->largestLately - state_->largestLately / 16);
        block = state_->takeFree(wanted);
        if (block == nullptr) {
            if (++state_->lastId == 0) ++state_->lastId;
            id = state_->lastId;
        }
    }
    if (block == nullptr) block = std::make_unique<Block>(id, wanted);

    std::shared_ptr<Block> shared(block.release(), [state = state_](Block* whole) {
        std::vector<std::unique_ptr<Block>> tooMuch;
        const std::lock_guard lock(state->guard);
        tooMuch = state->giveBack(std::unique_ptr<Block>(whole));
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
    return state_->freeBytes;
}

PixelBuffer pictureIn(std::shared_ptr<Block> block, int32_t width, int32_t height) {
    Pixel* const pixels = block->pixels();
    // The picture asks its pointer whether it has company, and the block comes along in it.
    return {width, height, std::shared_ptr<Pixel>(std::move(block), pixels)};
}

}  // namespace tessarine
