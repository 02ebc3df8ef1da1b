#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include "pixels/failures.h"
#include "pixels/pixel_buffer.h"
#include "pixels/region.h"

namespace tessarine {

/// Milliseconds since some fixed moment, wrapping at 32 bits.
uint32_t systemClock();

/// How a pixel buffer is described to a drawing interface: a top-down 32-bit bitmap that includes
/// the margin.
struct BitmapHeader {
    int32_t size = 0;  ///< bytes of the header, 40
    int32_t width = 0;
    int32_t height = 0;  ///< negative: the first row is the top one
    int16_t planes = 0;
    int16_t bitCount = 0;
};

/// The filter engine: one image, the region of it that filters may touch, and the image functions.
///
/// A filter member reads the image and returns a new buffer; the image itself stays. Outside the
/// region, in the margin and in the fourth channel the result equals the source. Rows go out as
/// `Progress` at most every 10 milliseconds, and Progress(100) once at a filter's end.
///
/// Not reentrant: a listener of `Progress` must not call a filter of the same object.
///
/// Members marked (skips) run in skipping mode; of the others, a failing statement reaches the
/// caller as StatementFailed.
class cBitFilter {
  public:
    /// Called on the caller's thread with the percentage done, measured against the whole height.
    /// It must leave the object alone.
    std::function<void(int32_t& percent)> Progress;
    /// The clock that spaces the reports of Progress.
    std::function<uint32_t()> timeGetTime = systemClock;

    int32_t BitsWidth() const { return maxX_ + 1; }
    int32_t BitsHeight() const { return maxY_ + 1; }

    const PixelBuffer& Bits() const { return bits_; }
    /// Takes the image in; region, scan rectangle and the time of the last report stay.
    /// \throws StatementFailed for a buffer without dimensions; the size then stays as it was.
    void Bits(PixelBuffer given);

    /// The region that filters keep to. It stays its owner's: once the owner lets go of it,
    /// filters scan nothing. A region may reach beyond the image; what lies beyond the buffer,
    /// margin included, is never touched.
    void BitsRegion(const RegionHandle& given) { regionHandle_ = given; }

    /// Largest and smallest (B + G + R) \ 3 of the whole image; 0 and 255 for an empty one.
    int32_t GetLMax() const;
    int32_t GetLMin() const;
    /// Mean of (B + G + R) \ 3 over the whole image, truncated.
    /// \throws StatementFailed for an empty image.
    int32_t GetLMed() const;

    /// The angle of (dX, dY) in radians as a single, from -pi / 2 to 3 pi / 2, with pi taken as
    /// 3.141592. (0, 0) gives -pi / 2.
    static float GetAngle(int32_t dX, int32_t dY);
    /// Dimensions `given` for an image of width by height and describes it in `header`.
    /// \throws StatementFailed for a negative size or for want of memory
    static void PrepareBitmap(BitmapHeader& header, PixelBuffer& given, int32_t width,
                              int32_t height);

    /// Fills the region's box, corners included, with one colour. Raises no Progress.
    PixelBuffer NewDoc(uint8_t R, uint8_t G, uint8_t b);

    // Tone and channels: each pixel from itself alone, Contrast and Equalize from a statistic of
    // the whole image besides. Defined in filters/tone.cpp.

    /// Adds Factor to each channel, limited to 0 to 255.
    PixelBuffer BRIGHTNESS(int32_t Factor);
    /// Spreads the channels around the image's mean brightness by Factor percent; what a channel
    /// loses by clipping goes half to each of the other two. Reports to 100 twice. (skips)
    PixelBuffer Contrast(int32_t Factor);
    /// Gamma of (Factor + 100) percent; 0 or less gives black. (skips)
    PixelBuffer GammaCorrection(int32_t Factor);
    /// Stretches the levels around the image's median brightness, which goes to 128. (skips)
    PixelBuffer Equalize();
    /// Moves each channel away from the pixel's brightness by Factor percent. (skips)
    PixelBuffer SATURATION(int32_t Factor);
    PixelBuffer Invert();
    /// Grey by the weights 0.071, 0.707, 0.222 of blue, green, red. (skips)
    PixelBuffer GreyScale();
    /// White where (B + G + R) \ 3 is above Factor, otherwise black. (skips)
    PixelBuffer Threshold(int32_t Factor);
    /// Levels in steps of Factor + 1.
    /// \throws StatementFailed for Factor -1.
    PixelBuffer Reduction(int32_t Factor);
    /// Sets the named channels to 0. (skips)
    PixelBuffer KillChannel(bool rChannel, bool gChannel, bool bChannel);
    /// Adds a number to each channel, limited to 0 to 255. (skips)
    PixelBuffer ShiftRGB(int32_t rFactor, int32_t gFactor, int32_t bFactor);
    /// Each channel takes the source's channel number ...Bank (0 blue, 1 green, 2 red), inverted
    /// where ...Inv, 0 where ...Kill. Any other bank counts bytes on from the pixel's first one,
    /// and is 0 beyond the buffer. (skips)
    PixelBuffer SwapRGB(int32_t rBank, int32_t gBank, int32_t bBank, bool rInv, bool gInv,
                        bool bInv, bool rKill, bool gKill, bool bKill);
    /// The five other orders of the three channels, by number 1 to 5; any other number changes
    /// nothing.
    PixelBuffer SwapBanks(int32_t Modo);

  private:
    // The frame: the helpers that own all that filters have in common. Defined in pixels/frame.h.

    /// Each pixel of the region becomes `change(source pixel)`, its fourth byte excepted.
    template <class Change>
    PixelBuffer filterPixels(OnFailure mode, Change change);
    /// `change(source, result, x, y)` is given runs of the region's pixels: `source` and `result`
    /// are spans of one row, starting at (x, y), of equal length. The result's pixels hold the
    /// source's values; the fourth bytes are not to be changed.
    template <class Change>
    PixelBuffer filterRows(OnFailure mode, Change change);
    /// Adds `ofRow(row)` over the rows of the whole image, without the region, to `start`;
    /// `afterRow(y)` follows each row.
    template <class Sum, class OfRow, class AfterRow>
    Sum sumRows(Sum start, OfRow ofRow, AfterRow afterRow) const;
    template <class Sum, class OfRow>
    Sum sumRows(Sum start, OfRow ofRow) const {
        return sumRows(start, ofRow, [](int32_t) {});
    }

    /// The inclusive rectangle that a filter with this margin walks.
    void SetScanRect(int32_t margin);
    /// The scan rectangle as far as it lies in the buffer; the margin belongs to it, and what lies
    /// beyond is nobody's.
    Rect scanInBuffer() const;
    /// The report after row y: Progress((y * 100) \ maxY) where more than 10 ms have passed.
    void reportRow(int32_t y, OnFailure mode);
    void raiseProgress(int32_t percent);

    /// Milliseconds that must have passed since the last report.
    static constexpr int32_t reportInterval = 10;

    PixelBuffer bits_;
    int32_t maxX_ = 0;
    int32_t maxY_ = 0;
    Rect fullRect_;
    std::weak_ptr<const Region> regionHandle_;
    int32_t scanLeft_ = 0;
    int32_t scanRight_ = 0;
    int32_t scanTop_ = 0;
    int32_t scanBottom_ = 0;
    uint32_t lastTick_ = 0;
};

}  // namespace tessarine
