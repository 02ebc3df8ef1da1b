#pragma once

#include <cstddef>
#include <mutex>

#include <IL/il.h>

#include "imagefiles/devil.h"
#include "imagefiles/memory_file.h"

// DevIL reads and writes nothing but what it is given here; the names that it is called with are
// made up, and only their extensions count. All of this under DevIL's lock.

namespace tessarine {

/// DevIL with an image of its own bound, and nobody else on it.
class DevilImage {
  public:
    DevilImage() : lock_(devilLock()) {
        startDevil();
        ilGenImages(1, &name_);
        ilBindImage(name_);
    }
    ~DevilImage() {
        if (!isBroken_) ilDeleteImages(1, &name_);
    }
    DevilImage(const DevilImage&) = delete;
    DevilImage& operator=(const DevilImage&) = delete;

    /// What a failed load leaves behind may be half made, so its name is not torn down.
    void leaveBroken() { isBroken_ = true; }

  private:
    std::lock_guard<std::mutex> lock_;
    ILuint name_ = 0;
    bool isBroken_ = false;
};

/// Has DevIL read `source`, whatever the name that it opens, while this lives.
class DevilReads {
  public:
    explicit DevilReads(MemoryReader& source);
    ~DevilReads();
    DevilReads(const DevilReads&) = delete;
    DevilReads& operator=(const DevilReads&) = delete;
};

/// Has DevIL write to `target`, whatever the name that it opens, while this lives. The target
/// stays open: it may want mending, and closing it is the caller's.
template <class Target>
class DevilWrites {
  public:
    explicit DevilWrites(Target& target) {
        target_ = &target;
        ilSetWrite(open, close, putByte, seek, tell, write);
        // The library would look for a file of the made-up name otherwise.
        ilEnable(IL_FILE_OVERWRITE);
    }
    ~DevilWrites() {
        ilDisable(IL_FILE_OVERWRITE);
        ilResetWrite();
        target_ = nullptr;
    }
    DevilWrites(const DevilWrites&) = delete;
    DevilWrites& operator=(const DevilWrites&) = delete;

  private:
    static ILHANDLE ILAPIENTRY open(ILconst_string) { return target_; }
    static void ILAPIENTRY close(ILHANDLE) {}
    static ILint ILAPIENTRY putByte(ILubyte byte, ILHANDLE) {
        return target_->write(&byte, 1) == 1 ? byte : IL_EOF;
    }
    static ILint ILAPIENTRY seek(ILHANDLE, ILint offset, ILint origin) {
        return target_->seek(offset, origin) ? 0 : -1;
    }
    static ILint ILAPIENTRY tell(ILHANDLE) { return static_cast<ILint>(target_->tell()); }
    static ILint ILAPIENTRY write(const void* bytes, ILuint size, ILuint count, ILHANDLE) {
        if (size == 0) return 0;
        return static_cast<ILint>(target_->write(bytes, size_t{size} * count) / size);
    }

    /// The library hands its callbacks no data of ours but the handle, and not all of them that.
    static inline Target* target_ = nullptr;
};

/// The first error of the library's queue, which is emptied; IL_NO_ERROR where there is none.
/// \param outOfMemory  set where want of memory is among them
ILenum takeDevilError(bool* outOfMemory = nullptr);

}  // namespace tessarine
