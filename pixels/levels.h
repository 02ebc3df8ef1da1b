#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "pixels/pixel_buffer.h"

namespace tessarine {

/// What becomes of each of the 256 values of a channel.
using Levels = std::array<uint8_t, 256>;

/// Each result pixel gets the source's colours, each through `levels`, and the source's fourth
/// byte.
void changeLevels(const Levels& levels, const Pixel* source, Pixel* result, size_t count);

}  // namespace tessarine
