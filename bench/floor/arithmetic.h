#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// The arithmetic of the measured chains, as plainly and as fast as one writes it for them alone:
// pictures of four bytes a pixel, blue, green, red and one that nobody looks at, rows without gaps.
// The loops are of the kind that the compiler turns into vector code.

namespace floor_program {

struct View {
    uint8_t* bytes = nullptr;
    int width = 0;
    int height = 0;

    size_t rowBytes() const { return static_cast<size_t>(width) * 4; }
    uint8_t* row(int y) const { return bytes + static_cast<size_t>(y) * rowBytes(); }
};

/// Adds to every channel, and tells the mean brightness of what comes out.
int brighten(View picture, uint8_t level);

/// Spreads the channels of a row around the mean; what a channel has too much goes to the others.
class Contrast {
  public:
    /// \param percent  from 0 to 99
    Contrast(int percent, int mean);
    void operator()(uint8_t* row, int width) const;

  private:
    int16_t spread(int level) const;
    void spillOver(uint8_t* pixels, int count) const;

    int mean_;
    int16_t factor_;  ///< times 2^14
};

/// Sets each pixel off from its eight neighbours, but for the two at the ends of a row.
class Sharpen {
  public:
    /// \param level  from 0 to 99
    explicit Sharpen(int level);
    /// \param above, row, below  neighbouring rows of the source, as long as the result's
    void operator()(const uint8_t* above, const uint8_t* row, const uint8_t* below, uint8_t* result,
                    int width);

  private:
    int16_t centre_;
    uint16_t inverse_;  ///< of the divisor, times 2^(16 + shift_)
    int shift_;
    std::vector<uint16_t> columns_;  ///< sums of three rows
};

/// Bilinear, each result pixel from the four around its origin.
class Resize {
  public:
    void operator()(View source, View result);

  private:
    struct Origin {
        int32_t place;
        int16_t fraction;  ///< times 2^15
    };
    static void fill(std::vector<Origin>& origins, int from, int to);

    std::vector<Origin> columns_;
    std::vector<Origin> rows_;
    std::vector<uint8_t> blended_;  ///< a row between two of the source
};

}  // namespace floor_program
