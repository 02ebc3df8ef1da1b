#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "pixels/filter_kernel.h"

// The kernels that functions by convolution share.

namespace tessarine {

/// The items of a text between its separators; an empty item stays one. An empty text is one
/// empty item.
std::vector<std::string> splitText(std::string_view text, char separator);

/// The kernel of a number from 0 to 13.
/// \throws StatementFailed for any other number
tFilterKernel GetFilterKernel(int32_t number);

}  // namespace tessarine
