#pragma once

#include <cstdint>

#include "imagefiles/picture.h"

namespace tessarine {

/// A picture at a smaller size: every pixel is the mean of the area that it covers.
/// \param width, height  from 1 to the picture's own
/// \throws StatementFailed for any other size, and for a picture that is not valid
Bitmap scaledDown(const Bitmap& picture, int32_t width, int32_t height);

}  // namespace tessarine
