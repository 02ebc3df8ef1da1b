#include "imagefiles/format_bridges.h"

#include <cerrno>

#include "pixels/failures.h"
#include "pixels/numbers.h"

namespace tessarine {

void mFormat::SetFormatError(const std::string& text, bool keepFirst) {
    if (!lastFormatError.empty() && keepFirst) return;
    lastFormatError = text;
}

bool mFormat::FreeImage_RenderBitmap(const std::optional<Bitmap>& bitmap, PictureHolder* dc,
                                     int32_t x, int32_t y, int32_t width, int32_t height,
                                     bool inverted) {
    const std::string name = "[FreeImage_RenderBitmap] ";
    const auto fail = [&](const std::string& text) {
        SetFormatError(name + text, true);
        return false;
    };
    lastFormatError.clear();
    if (!bitmap) return fail("No bitmap specified to render");
    if (!bitmap->isValid()) return fail("Handle specified is not a valid BITMAP");
    if (dc == nullptr) return fail("DC specified is not valid");
    if (width < 1) width = bitmap->width();
    if (width < 1) return fail("Could not get bitmap's width");
    if (height < 1) height = bitmap->height();
    if (height < 1) return fail("Could not get bitmap's height");
    if (!attempt([&] { dc->render(*bitmap, x, y, width, height, inverted); }))
        return fail("BitBlt failed to render the BITMAP to the DC with error code " +
                    std::to_string(ENOMEM));
    return true;
}

int32_t mFormat::FreeImage_GetBitmapWidth(const std::optional<Bitmap>& bitmap) {
    lastFormatError.clear();
    if (!bitmap) {
        SetFormatError("[FreeImage_GetBitmapWidth] No bitmap specified to get the info for", true);
        return 0;
    }
    if (!bitmap->isValid()) {
        SetFormatError("[FreeImage_GetBitmapWidth] Handle specified is not a valid BITMAP", true);
        return 0;
    }
    return bitmap->width();
}

int32_t mFormat::FreeImage_GetBitmapHeight(const std::optional<Bitmap>& bitmap) {
    lastFormatError.clear();
    if (!bitmap) {
        SetFormatError("[FreeImage_GetBitmapHeight] No bitmap specified to get the info for", true);
        return 0;
    }
    if (!bitmap->isValid()) {
        SetFormatError("[FreeImage_GetBitmapHeight] Handle specified is not a valid BITMAP", true);
        return 0;
    }
    return bitmap->height();
}

void FitInside(int32_t srcW, int32_t srcH, int32_t maxW, int32_t maxH, int32_t& outW,
               int32_t& outH) {
    if (srcW <= maxW && srcH <= maxH) {
        outW = srcW;
        outH = srcH;
        return;
    }
    const double widthRatio = static_cast<double>(maxW) / srcW;
    const float heightRatio = static_cast<float>(static_cast<double>(maxH) / srcH);
    if (widthRatio < heightRatio) {
        outW = maxW;
        outH = roundToInteger(widthRatio * srcH);
    } else {
        outH = maxH;
        outW = roundToInteger(static_cast<double>(heightRatio) * srcW);
    }
}

}  // namespace tessarine
