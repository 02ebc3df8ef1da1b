#include "imagefiles/worker/blocks.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace tessarine {

namespace {

/// A block whose size could still change would end this process with a bus error.
bool isSealed(int descriptor) {
    constexpr int wanted = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL;
    const int seals = fcntl(descriptor, F_GET_SEALS);
    return seals >= 0 && (seals & wanted) == wanted && (seals & F_SEAL_WRITE) == 0;
}

}  // namespace

MappedBlock::~MappedBlock() { munmap(start_, ref_.bytes); }

BlockCache::Result BlockCache::map(const BlockRef& ref, int descriptor, uint64_t needed) {
    struct stat status {};
    if (ref.id == 0 || needed == 0 || ref.bytes < needed || fstat(descriptor, &status) != 0 ||
        !S_ISREG(status.st_mode) || status.st_size < 0 ||
        static_cast<uint64_t>(status.st_size) < ref.bytes || !isSealed(descriptor))
        return {};
    const auto device = static_cast<uint64_t>(status.st_dev);
    const auto inode = static_cast<uint64_t>(status.st_ino);
    const auto known = std::find_if(blocks_.begin(), blocks_.end(), [&](const auto& block) {
        return block && block->id() == ref.id;
    });
    if (known != blocks_.end()) {
        std::rotate(blocks_.begin(), known, known + 1);
        if (blocks_[0]->isFile(device, inode) && blocks_[0]->bytes() == ref.bytes)
            return {End::mapped, blocks_[0]};
        blocks_[0].reset();
    } else {
        std::rotate(blocks_.begin(), blocks_.end() - 1, blocks_.end());
        blocks_[0].reset();
    }
    void* start = mmap(nullptr, ref.bytes, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    if (start == MAP_FAILED) return {errno == ENOMEM ? End::noMemory : End::refused, nullptr};
    blocks_[0] = std::make_shared<MappedBlock>(start, ref, device, inode);
    return {End::mapped, blocks_[0]};
}

void BlockCache::trim() {
    uint64_t bytes = 0;
    for (std::shared_ptr<MappedBlock>& block : blocks_) {
        if (!block) continue;
        bytes += block->bytes();
        if (bytes > mostIdleBytes) block.reset();
    }
}

}  // namespace tessarine
