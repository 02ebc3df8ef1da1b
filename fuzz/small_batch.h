#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "batch/batch.h"
#include "batch/list_files.h"
#include "batch/texts.h"
#include "expect.h"

namespace tessarine {

/// A picture of any bytes, its fourth channel included.
inline PixelBuffer randomPicture(int32_t width, int32_t height, uint32_t seed) {
    std::minstd_rand random(seed + 1);
    PixelBuffer picture(width, height);
    for (int32_t y = 0; y < height; ++y) {
        Pixel* row = picture.writableBlock() + picture.offsetOfRow(y);
        for (int32_t x = 0; x < width; ++x) {
            const auto bits = static_cast<uint32_t>(random());
            row[x] = {static_cast<uint8_t>(bits), static_cast<uint8_t>(bits >> 8),
                      static_cast<uint8_t>(bits >> 16), static_cast<uint8_t>(bits >> 11)};
        }
    }
    return picture;
}

/// The program without a screen, with a small picture in all its holders. At each look the clock
/// has gone on so far that every report is due.
class SmallBatch : public SilentPlatform {
  public:
    explicit SmallBatch(const PixelBuffer& picture) {
        for (PictureHolder* holder : {&batch.iOri, &batch.iDst, &batch.iSrc})
            holder->setPicture(Bitmap(picture));
        takeIn(picture);
    }

    /// What the run does with a picture that it has read.
    void takeIn(const PixelBuffer& picture) {
        batch.iSrc.setPicture(Bitmap(picture));
        batch.SetPicture(batch.iSrc);
        batch.cFilter.Bits(picture);
        batch.cFilter.BitsRegion(batch.workRegion.RegionMain());
        batch.workBits = picture;
    }

    uint32_t timeGetTime() override { return clock_ += 11; }

    cBatch batch{*this};

  private:
    uint32_t clock_ = 0;
};

/// Resize rows may ask for 32767 by 32767 pixels, which is slow and true. A fuzzer would find
/// nothing but that, so it asks for sides of at most 48 pixels; with their own proportions pictures
/// of one pixel by 48 would grow to 48 by 2304, so those are asked for 8 at most.
inline void boundResize(int32_t& width, int32_t& height, bool keepsProportions) {
    width %= keepsProportions ? 9 : 49;
    height %= 49;
}

/// No picture that comes out of a bounded row, or of two turns of one by up to 180 degrees, has a
/// longer side.
inline constexpr int32_t longestSide = 8 * 48 * 2 + 2;

/// Bounds what the rows of a list do to a picture's size; each turn by other than right angles
/// makes it larger too. Round functions take a step for each row of their disc, of which a picture
/// that has grown makes a million.
inline void boundSizes(std::vector<FunctionRecord>& records) {
    int32_t id = 0;
    int turns = 0;
    for (FunctionRecord& record : records) {
        // A number that cannot be read leaves that of the record before.
        attempt([&] { id = toInteger32(record.id); });
        if (id == 70 && ++turns > 2) record.id = "31", id = 31;
        if (id == 27 || id == 36) record.parameters[0] %= 1000;
        if (id == 59) boundResize(record.parameters[0], record.parameters[1], record.option != 0);
    }
}

}  // namespace tessarine
