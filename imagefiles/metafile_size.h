#pragma once

#include <cstdint>

#include "imagefiles/decode.h"

namespace tessarine {

constexpr double pixelsPerInch = 96;

struct MetafileSize {
    int32_t width = 0;
    int32_t height = 0;
};

/// \throws StatementFailed where a side is below half a pixel, FileRefused where the picture is too
/// large
MetafileSize checkedSize(double width, double height);

/// What a header of this size in inches promises.
inline PromisedSize promiseOfInches(double width, double height) {
    const auto pixels = [](double inches) {
        return inches > 0 ? static_cast<uint64_t>(inches * pixelsPerInch + 0.5) : 0;
    };
    return {pixels(width), pixels(height)};
}

/// The same at 96 pixels an inch.
inline MetafileSize sizeOfInches(double width, double height) {
    return checkedSize(width * pixelsPerInch, height * pixelsPerInch);
}

}  // namespace tessarine
