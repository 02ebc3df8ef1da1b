#pragma once

#include <FreeImage.h>

#include "imagefiles/decoding.h"

namespace tessarine {

/// The colours of a dib of any type that the file library makes, as people know the picture:
/// 16 bits a channel to the nearest 8, floating-point channels from 0 to 1, palettes looked up,
/// alpha dropped.
/// \throws StatementFailed where memory does not suffice, or the type holds no picture
Bitmap bitmapOfDib(FIBITMAP* dib);

/// Reads bytes by a loader of the file library. The caller unloads the result; nothing where the
/// library cannot read them.
FIBITMAP* loadDib(Bytes file, FREE_IMAGE_FORMAT format, int flags);

/// The format that the file library finds bytes to be of.
FREE_IMAGE_FORMAT detectFormat(Bytes file);

/// Reads a picture of the file library's that lies inside another file.
/// \throws StatementFailed where the library cannot read it
Decoded decodeEmbedded(Bytes data, FREE_IMAGE_FORMAT format, int flags);

}  // namespace tessarine
