#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tessarine {

/// The weights of a convolution: a square of whole numbers.
class KernelMask {
  public:
    KernelMask() = default;
    /// All weights 0. `side` is 0 or more.
    explicit KernelMask(int32_t side)
        : side_(side), weights_(static_cast<size_t>(side) * static_cast<size_t>(side)) {}

    int32_t side() const { return side_; }
    int32_t& at(int32_t row, int32_t column) { return weights_[place(row, column)]; }
    int32_t at(int32_t row, int32_t column) const { return weights_[place(row, column)]; }

  private:
    size_t place(int32_t row, int32_t column) const {
        return static_cast<size_t>(row) * static_cast<size_t>(side_) + static_cast<size_t>(column);
    }

    int32_t side_ = 0;
    std::vector<int32_t> weights_;
};

/// A convolution: the weighted sum of a window is divided by Weight, and each channel's own
/// number is added.
struct tFilterKernel {
    KernelMask mskBits;
    int32_t Weight = 0;
    int32_t rFactor = 0;
    int32_t gFactor = 0;
    int32_t bFactor = 0;
};

}  // namespace tessarine
