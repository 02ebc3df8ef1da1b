#pragma once

#include <cstdint>

#include "pixels/shortage.h"

namespace tessarine {

/// Tells whether a statement failed for want of memory since this was made. A run leaves it out
/// and goes on; its report tells.
class ShortageWatch {
  public:
    static constexpr const char* message =
        "memory does not suffice for what is to be done to the picture";

    bool sawOne() const { return memoryShortages() != before_; }

  private:
    uint64_t before_ = memoryShortages();
};

}  // namespace tessarine
