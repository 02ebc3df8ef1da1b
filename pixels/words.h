#pragma once

#include <bit>
#include <cstdint>

#include "pixels/pixel_buffer.h"

// Pixels as whole words, for loops that handle all channels of a pixel at once.

namespace tessarine {

/// A pixel as one number. Pixels may be read and written through pointers to it.
using Word = uint32_t __attribute__((may_alias));

inline const Word* wordsOf(const Pixel* pixels) { return reinterpret_cast<const Word*>(pixels); }
inline Word* wordsOf(Pixel* pixels) { return reinterpret_cast<Word*>(pixels); }

/// The bits of blue, green and red.
constexpr uint32_t coloursOfWord = std::bit_cast<uint32_t>(Pixel{255, 255, 255, 0});

/// By how many bits each colour is shifted in a word.
constexpr int32_t blueShift = std::endian::native == std::endian::little ? 0 : 24;
constexpr int32_t greenShift = std::endian::native == std::endian::little ? 8 : 16;
constexpr int32_t redShift = std::endian::native == std::endian::little ? 16 : 8;

}  // namespace tessarine
