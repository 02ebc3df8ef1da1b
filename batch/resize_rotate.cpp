#include <cmath>

#include "batch/batch.h"
#include "pixels/numbers.h"

// The two functions that change the picture's size. They replace image, region and the size of
// iSrc together, which a plain call of a filter member does not.

namespace tessarine {

void cBatch::ApplyResize() {
    int32_t w = iSrc.width();
    int32_t h = iSrc.height();
    h = funcOption ? roundToInteger(static_cast<double>(funcParam[0]) / w * h) : funcParam[1];
    w = funcParam[0];
    attempt([&] {
        if (funcParam[2] == 1)
            cFilter.BitsResample(workBits, w, h);
        else
            cFilter.BitsResize(workBits, w, h);
    });
    CreateBlank(w, h);
    workBits = cFilter.Bits();
    coverWithRegion(w, h);
}

void cBatch::PreviewRotate() {
    attempt([&] {
        workBits = chkAntialiasing != 0 ? cFilter.RotateSmooth(sbDegrees)
                                        : cFilter.ROTATE(sbDegrees, true);
    });
}

void cBatch::ApplyRotate() {
    // The row stores an angle, but the sheet's counts.
    const int16_t d = sbDegrees;
    const double c{single(std::abs(std::cos(d * 0.0174533)))};
    const double s{single(std::abs(std::sin(d * 0.0174533)))};
    const int32_t W = iSrc.width();
    const int32_t H = iSrc.height();
    const int32_t newW = roundToInteger(W * c + H * s);
    const int32_t newH = roundToInteger(W * s + H * c);
    // The sum wraps: a picture whose diagonal is longer than 46340 pixels can't be turned.
    const int32_t D = roundToInteger(std::sqrt(static_cast<double>(W * W + H * H)));

    const PixelBuffer picture = workBits;
    CreateBlank(D, D);
    coverWithRegion(D, D);
    attempt([&] { cFilter.Bits(workBits); });
    attempt(
        [&] { cFilter.Bits(cFilter.TileMask(picture, (D - W) / 2, (D - H) / 2, false, 0, -1)); });
    attempt([&] { cFilter.Bits(funcOption ? cFilter.RotateSmooth(d) : cFilter.ROTATE(d, true)); });
    const int32_t a = (D - newW) / 2;
    const int32_t b = (D - newH) / 2;
    attempt([&] { cFilter.BitsCrop(cFilter.Bits(), a, b, a + newW, b + newH); });
    CreateBlank(cFilter.BitsWidth(), cFilter.BitsHeight());
    workBits = cFilter.Bits();
    coverWithRegion(cFilter.BitsWidth(), cFilter.BitsHeight());
}

void cBatch::coverWithRegion(int32_t width, int32_t height) {
    workRegion.Init(0, 0, width, height);
    cFilter.BitsRegion(workRegion.RegionMain());
}

}  // namespace tessarine
