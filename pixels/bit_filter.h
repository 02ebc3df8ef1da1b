#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "pixels/failures.h"
#include "pixels/filter_kernel.h"
#include "pixels/levels.h"
#include "pixels/pixel_buffer.h"
#include "pixels/point_loops.h"
#include "pixels/random_generator.h"
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

struct CellGrid;
struct RowRun;
struct Stencil;
enum class Uncovered;

/// The filter engine: one image, the region of it that filters may touch, and the image functions.
///
/// A filter member reads the image and returns a new buffer; the image itself stays. Unless the
/// member says otherwise, the result equals the source outside the region and in the fourth
/// channel. After a row the percentage done goes out as `Progress` where more than 10 milliseconds
/// have passed since the last time, and Progress(100) once at a filter's end. Rows beyond the
/// buffer are neither walked nor reported.
///
/// Not reentrant: a listener of `Progress` must not call a filter of the same object.
///
/// Members marked (skips) run in skipping mode; of the others, a failing statement reaches the
/// caller as StatementFailed. Want of memory for the result reaches it from all of them.
class cBitFilter {
  public:
    /// Called on the caller's thread with the percentage done, measured against the whole height.
    /// It must leave the object alone.
    std::function<void(int32_t& percent)> Progress;
    /// The clock that spaces the reports of Progress.
    std::function<uint32_t()> timeGetTime = systemClock;
    /// The random numbers of DIFFUSE and NOISE. Neither seeds them: the sequence goes on from one
    /// call to the next. A program has one sequence because it has one engine; engines of
    /// pictures that run by themselves have one each.
    RandomGenerator random;

    int32_t BitsWidth() const { return maxX_ + 1; }
    int32_t BitsHeight() const { return maxY_ + 1; }

    const PixelBuffer& Bits() const { return bits_; }
    /// Takes the image in; region, scan rectangle and the time of the last report stay.
    /// \throws StatementFailed for a buffer without dimensions; the image is dropped
    ///         then, and the size stays as it was.
    void Bits(PixelBuffer given);

    /// The region that filters keep to. It stays its owner's: once the owner lets go of it,
    /// filters scan nothing. A region may reach beyond the image; what lies beyond the buffer,
    /// margin included, is never touched.
    void BitsRegion(const RegionHandle& given) { regionHandle_ = given; }

    /// Largest and smallest (B + G + R) \ 3 of the whole image; 0 and 255 for an empty one.
    int32_t GetLMax() const;
    int32_t GetLMin() const;
    /// Mean of (B + G + R) \ 3 over the whole image, truncated. The sum is a 32-bit integer like
    /// all others and wraps on very large bright pictures.
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

    // Geometry: BitsBlack changes the image in place, the other Bits members replace it and its
    // size, and Flip gives a new picture as filters do; the region stays as it is.
    // `srcBits` is the picture to start from, commonly the image itself; one without dimensions
    // fails, except in BitsResize, which takes it for black. Defined in pixels/geometry.cpp.

    /// Sets all four channels of the region's pixels to 0. Raises no Progress.
    void BitsBlack();
    /// Keeps the part of srcBits inside a rectangle (X2, Y2 exclusive) that is first cut to the
    /// size of the present image. No overlap gives an image of 0 by 0.
    void BitsCrop(const PixelBuffer& srcBits, int32_t X1, int32_t Y1, int32_t X2, int32_t Y2);
    /// The same, cut to the size of srcBits; pixels outside the region become black with 255 in
    /// the fourth channel.
    void BitsCropMasked(const PixelBuffer& srcBits, int32_t X1, int32_t Y1, int32_t X2, int32_t Y2);
    /// Another size by bilinear interpolation, the fourth channel 0.
    /// \throws StatementFailed for a negative size or for want of memory, and for a width or height
    ///         of 0, which leaves an empty image of that size
    void BitsResample(const PixelBuffer& srcBits, int32_t NewWidth, int32_t NewHeight);
    /// Another size by the nearest pixel, the fourth channel 0. A width or height of 0 gives an
    /// empty image of that size; one that is negative or too large for the memory leaves the image
    /// as it is. (skips)
    void BitsResize(const PixelBuffer& srcBits, int32_t NewWidth, int32_t NewHeight);
    /// A quarter turn anticlockwise, the fourth channel 0. As many columns and rows of srcBits are
    /// turned as the present image has.
    void BitsRotate90(const PixelBuffer& srcBits);
    /// The whole image mirrored, the region notwithstanding; the fourth channel stays. (skips)
    PixelBuffer Flip(bool fH, bool fV);

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

    // Hue and colour replacement. Colours are red + 256 * green + 65536 * blue. Defined in
    // filters/hue.cpp.

    /// Each pixel's brightness times Luminosity in one hue (-1 to 5) and saturation (0 to 1).
    PixelBuffer COLORIZE(float Hue, float SATURATION, float Luminosity);
    /// Paints all pixels in EraseColor but those within Tolerance percent of Color.
    PixelBuffer ISOLATE(int32_t Color, int32_t EraseColor, int32_t Tolerance);
    /// Turns ColorFrom into ColorTo, less and less up to a distance of Tolerance percent. (skips)
    PixelBuffer REPLACE(int32_t ColorFrom, int32_t ColorTo, int32_t Tolerance);
    /// The same where hue and saturation lie within hundredths of those of ColorFrom.
    PixelBuffer ReplaceHS(int32_t ColorFrom, int32_t ColorTo, int32_t HTolerance,
                          int32_t STolerance, int32_t Tolerance);
    /// The same where the brightness (0 to 255) lies within LTolerance of that of ColorFrom.
    PixelBuffer ReplaceL(int32_t ColorFrom, int32_t ColorTo, int32_t LTolerance, int32_t Tolerance);
    /// Turns hues by HOffset hundredths of the circle, scales their saturation in percent.
    PixelBuffer RotateH(int32_t HOffset, int32_t SATURATION);
    /// A grey picture whose level goes as a sine of the brightness.
    PixelBuffer RotateL(int32_t lOffset, int32_t LStep);
    /// One saturation for all; the hue goes as a sine of the brightness. (skips)
    PixelBuffer StretchH(int32_t HOffset, int32_t SATURATION, int32_t HStep);

    // Neighbourhood: each pixel from a window around it, which reads the margin's black beyond the
    // edge. Defined in filters/neighbourhood.cpp.

    /// The longest side of a mask: far beyond any kernel, and short enough that no window wants for
    /// memory.
    static constexpr int32_t largestMask = 1024;
    /// Convolution with a square of weights; Weight divides the sum and each channel's factor is
    /// added, limited to 0 to 255. KeepMargins leaves pixels whose window leaves the image.
    /// \throws StatementFailed for a Weight of 0, a mask without weights or one of more than
    ///         `largestMask` a side
    PixelBuffer MaskFilter(const KernelMask& mskBits, int32_t Weight, int32_t rFactor,
                           int32_t gFactor, int32_t bFactor, bool KeepMargins);
    /// The mean of the eight pixels at distance Factor.
    PixelBuffer Blurs(int32_t Factor);
    /// Mixes each pixel, with weight 101 - Factor, with the four next to it. (skips)
    PixelBuffer SOFTEN(int32_t Factor);
    /// Sets each pixel off from its eight neighbours; stronger with Factor. (skips)
    PixelBuffer SHARPEN(int32_t Factor);
    /// The same with other weights; weaker with Factor. (skips)
    PixelBuffer EDGEENHANCE(int32_t Factor);
    /// Edges in their own colour, all whose level reaches Factor in BackColor.
    PixelBuffer CONTOUR(int32_t Factor, int32_t BackColor);
    /// Edges in black on white (BW), or in the picture's colours on BackColor. (skips)
    PixelBuffer SKETCH(int32_t Factor, bool BW, int32_t BackColor);
    /// A grey plate with raised edges, Factor in tenths. (skips)
    PixelBuffer EMBOSS(int32_t Factor);
    /// A grey plate with sunken edges, Factor in tenths. (skips)
    PixelBuffer Engrave(int32_t Factor);
    /// A relief of the channels green, red and fourth; blue stays. (skips)
    PixelBuffer RELIEF();
    /// The largest of each channel in a window of 3 by 3. (skips)
    PixelBuffer DILATE();
    /// The smallest of each channel in a window of 3 by 3. (skips)
    PixelBuffer ERODE();
    /// Minimum (fltType 0) or maximum (1) of each channel over the pixel and its four direct
    /// neighbours; any other fltType gives black. With fltType 0 the outermost
    /// pixels of the region's box stay.
    PixelBuffer RankFilterN4(int32_t fltType);
    /// The same over the pixel and its four diagonal neighbours.
    PixelBuffer RankFilterND(int32_t fltType);
    /// For each channel the mean of the calmest of three sectors; the lower right one is not
    /// among them, which draws the strokes to the upper left. (skips)
    PixelBuffer PAINTING();
    /// The same with all four sectors. (skips)
    PixelBuffer Dissolve();

    // Deformations: each pixel is taken from a computed source point. Defined in
    // filters/deformation.cpp. CleanBack blackens what has no source in the region.

    /// Bends the picture into a ring: the angle selects the column, the distance the row. (skips)
    PixelBuffer BEND(int32_t RadiusFactor, bool CleanBack);
    /// Shears each axis by the position on the other. (skips)
    PixelBuffer FOLD(int32_t wFactor, int32_t hFactor, bool CleanBack);
    /// Scales the axes about the centre; positive percentages shrink the picture. (skips)
    PixelBuffer STRETCH(int32_t wFactor, int32_t hFactor, bool CleanBack);
    /// Turns each ring by its radius times a factor, and by OffsetDeg degrees. (skips)
    PixelBuffer TWIRL(int32_t Factor, int32_t OffsetDeg, bool CleanBack);
    /// Turns the image about its centre by the nearest pixel. (skips)
    PixelBuffer ROTATE(int32_t Degrees, bool CleanBack);
    /// Turns the image about its centre by bilinear interpolation; what has no source in the
    /// image becomes black, the region's shape notwithstanding. (skips)
    PixelBuffer RotateSmooth(int32_t Degrees);
    /// Ripples by a trigonometric function of the coordinates. `style` is "slanting", "vertical",
    /// "horizontal", "squary" or "curtain" in lower case, Intensity counts from 0; any other pair
    /// leaves the picture as it is. (skips)
    PixelBuffer GLASS(const std::string& style, int16_t Intensity);
    /// Magnifies a disc. Centre and radius are relative to the image, Factor goes from 0 (nothing)
    /// to 150. (skips)
    PixelBuffer LENS(float xRel, float yRel, float dRel, int32_t Factor);
    /// Displaces rows by a sine. (skips)
    PixelBuffer WAVES(int32_t fFactor, int32_t AFactor, int32_t Start);
    /// Factor by Factor small copies of the image. (skips)
    PixelBuffer TILE(int32_t Factor);
    /// Lays a picture over the image, once or Tiled. Transparency is in percent; mask pixels of
    /// MaskColor are left out, none for -1.
    /// \throws StatementFailed for a mask without dimensions, or without pixels if it is to be
    ///         tiled, for a Transparency that sends a channel out of range, or for a report
    ///         against no height
    PixelBuffer TileMask(const PixelBuffer& mskBits, int32_t xOffset, int32_t yOffset, bool Tiled,
                         int32_t Transparency, int32_t MaskColor);
    /// Adds Inc to pixels near ColorFrom, less and less with the distance. (skips)
    PixelBuffer Shift(int32_t ColorFrom, int32_t Inc, int32_t Tolerance);

    // Synthesis: new content over the image, or a coarser texture of it. Defined in
    // filters/synthesis.cpp, the gradients in filters/gradients.cpp.

    /// Takes each pixel from a random place up to half of each factor away. (skips)
    PixelBuffer DIFFUSE(int32_t wFactor, int32_t hFactor);
    /// Soft dots in cells of 2 * Radius pixels, in their mean colour. A dot fades out at the
    /// distance sqrt(Radius * (Radius + Definition)); Intensity is in percent above 100.
    /// \throws StatementFailed for a Radius of 0, or where a dot's colour leaves a byte's range
    PixelBuffer HALFTONE(int32_t Radius, int32_t Definition, int32_t Intensity);
    /// Blocks of PixSize pixels in their mean colour. (skips)
    PixelBuffer PIXELIZE(int32_t PixSize);
    /// Random grain of up to Factor levels, the same in all channels if Equalized. (skips)
    PixelBuffer NOISE(int32_t Factor, bool Equalized);
    /// Takes Factor levels off every second row. (skips)
    PixelBuffer Scanlines(int32_t Factor);
    /// Lines of one colour, Opacity 0 to 255: vertical ones HStep pixels apart, horizontal ones
    /// VStep, and with ForceMargins along the last row and column too. (skips)
    /// \throws StatementFailed for a step of 0
    PixelBuffer Grid(int32_t HStep, int32_t VStep, bool ForceMargins, int32_t Color,
                     int32_t Opacity);
    /// Brightens a disc by iFactor levels at its centre, dFactor percent of them at its rim.
    /// Centre and radius are relative to the image.
    /// \throws StatementFailed for a report on a disc without a radius, and where a pixel is so
    ///         far from the centre that its squared distance wraps below 0
    PixelBuffer Light(float xRel, float yRel, float dRel, int32_t iFactor, int32_t dFactor);
    /// Multiplies the image by a tiled texture, of which the blue channel counts: 128 keeps a
    /// pixel. (skips)
    /// \throws StatementFailed for a texture of one row or column
    PixelBuffer Texturize(const PixelBuffer& mskBits);
    /// Error diffusion to black and white; 10 / PalWeight is the share of the error. (skips)
    PixelBuffer StuckiBW(int32_t PalWeight);
    /// A gradient around (X1, Y1) to the rim through (X2, Y2). A colour of -1 is the image itself;
    /// Pressure is the opacity in percent, Frequency the number of bands. (skips)
    PixelBuffer GradientCircular(int32_t X1, int32_t Y1, int32_t X2, int32_t Y2, int32_t Color1,
                                 int32_t Color2, int32_t Pressure, int32_t Frequency);
    /// A gradient from (X1, Y1) to (X2, Y2). (skips)
    PixelBuffer GradientLinear(int32_t X1, int32_t Y1, int32_t X2, int32_t Y2, int32_t Color1,
                               int32_t Color2, int32_t Pressure, int32_t Frequency);

    // Recipes: the three channels of each pixel recombined. Defined in filters/recipes.cpp.

    /// Green and red become grey. (skips)
    PixelBuffer OLDPHOTO();
    /// Switches off the channels whose argument is not -1. (skips)
    PixelBuffer SpecialColors(int16_t R, int16_t G, int16_t b);
    /// One of twelve recipes, 0 to 11; any other Effect changes nothing.
    PixelBuffer ClassyColors(int16_t Effect);
    /// Keeps the strongest channel alone, and pixels without one. (skips)
    PixelBuffer THERMIQUE();
    /// Light pixels become black and dark ones white. (skips)
    PixelBuffer XBLACK();
    /// Light pixels become white and dark ones black. (skips)
    PixelBuffer PHOTOCOP();

  private:
    // The frame: the helpers that own all that filters have in common. Defined in pixels/frame.h.
    // Each makes the result as a copy of the image, walks, reports and ends with Progress(100).

    /// The pixels that a filter walks, as far as they lie in the buffer, margin included.
    struct Walk {
        Rect scan;
        int32_t reportShift = 0;  ///< added to a row's number for its report
        bool isInOrder = false;   ///< each row after the one above it, on the caller's thread
    };
    /// The box of the region, less `margin` pixels on all sides.
    Walk regionBox(int32_t margin);
    /// The whole image without its margin.
    Walk wholeImage() const { return {fullRect_}; }

    /// Each pixel of the region gets the colours `change(colours of the source pixel)`, a Colour
    /// whose numbers are 0 to 255 in both directions; or bitsOfColour() of one.
    template <class Change>
    PixelBuffer filterPixels(OnFailure mode, Change change);
    /// The same where each channel goes through a table.
    PixelBuffer filterLevels(OnFailure mode, const Levels& levels);
    /// The same where the colours are those of the sum of a pixel's channels: bitsOfColour() of
    /// `colours[sum]`.
    PixelBuffer filterSums(OnFailure mode, const ColoursOfSums& colours);
    /// The same where `change` changes those pixels alone of which `concerns(colours)` holds.
    /// Pixels far from all of these cost no more than the question.
    template <class Concerns, class Change>
    PixelBuffer filterSome(OnFailure mode, Concerns concerns, Change change);
    /// Each pixel of the region gets the colours that `step` leads to from `start(its colours)`: it
    /// is taken until all lie from 0 to 255, and leaves alone those that do.
    template <class Start, class Step>
    PixelBuffer filterSettled(OnFailure mode, Start start, Step step);
    /// `change(run)` is given the region's pixels in runs of one row, from top to bottom and from
    /// left to right. The result's fourth bytes are not to be changed.
    template <class Change>
    PixelBuffer filterRows(OnFailure mode, const Walk& walk, Change change);
    /// The same for a lambda that sets every pixel of its runs: the result's pixels in them hold
    /// nothing yet.
    template <class Fill>
    PixelBuffer fillRows(OnFailure mode, const Walk& walk, Fill fill);
    /// `change(window, result pixel)` for each pixel of the region. The result holds the source's
    /// pixel; its fourth byte is not to be changed.
    template <class Change>
    PixelBuffer filterWindows(OnFailure mode, const Walk& walk, const Stencil& stencil,
                              Change change);
    /// The bytes that a filter of single channels computes.
    enum class Channels { blueGreenRed, greenRedFourth };
    /// Each of three channels becomes `change(channel window)`, for each pixel of the region.
    template <class Change>
    PixelBuffer filterChannels(OnFailure mode, const Walk& walk, const Stencil& stencil,
                               Channels channels, Change change);
    /// Each pixel of the region gets the colours `join(colours of the source pixel, Colour of
    /// numbers)`, 0 to 255, where `ofChannel(channel window)` gives the number of a channel, -32768
    /// to 32767.
    template <class OfChannel, class Join>
    PixelBuffer filterJoined(OnFailure mode, const Walk& walk, const Stencil& stencil,
                             OfChannel ofChannel, Join join);
    // These are defined in pixels/sources.h, and the last one in pixels/bilinear.h.
    /// All pixels of the region's box, inside the region or not, in stretches of one row of at most
    /// `stretchLength` pixels: `work(result, left, y, count)`, where result[0] is the pixel
    /// (left, y). The result holds the source's pixels; their fourth bytes are not to be changed.
    template <class Work>
    PixelBuffer filterStretches(OnFailure mode, Work work);
    /// All pixels of the region's box take the colours of a source point, where that lies in the
    /// region. For each stretch `rowOf(left, y)` gives a function that gives the source Point of
    /// each x from `left` on, in any order.
    template <class RowOf>
    PixelBuffer filterSources(Uncovered uncovered, RowOf rowOf);
    /// The same where the source is dear to compute: `guessOf(x, y)` gives a Guess of it, and
    /// `placeOf(x, y)` the source itself for the few pixels where the guess is not sure.
    template <class GuessOf, class PlaceOf>
    PixelBuffer filterGuessedSources(Uncovered uncovered, GuessOf guessOf, PlaceOf placeOf);
    /// All pixels of the region's box take the colours of the image, mixed bilinearly, at a
    /// SinglePoint, or become black where that lies outside the image. For each stretch
    /// `rowOf(left, y)` gives a function that gives the point of each x from `left` on, in any
    /// order.
    template <class RowOf>
    PixelBuffer filterMixed(RowOf rowOf);
    /// `change(run)` for the region's pixels in the square of 2 * radius + 1 pixels a side around
    /// a centre. Each row of the square reports against the square's height; a radius of 0 fails
    /// there.
    template <class Change>
    PixelBuffer filterSquare(OnFailure mode, Point centre, int32_t radius, Change change);
    /// Cells of width by height pixels all over the region's box, from its corner on.
    CellGrid gridOverBox(int32_t stepX, int32_t stepY, int32_t width, int32_t height);
    /// `paintCell(cell)` for each Cell, or each row of joined cells, of a grid that may reach into
    /// the buffer, row by row; reports after each row of such cells. A cell paints all that it
    /// shares with those before it, or nothing of it.
    /// \throws StatementFailed for a step of 0 that would never end
    template <class PaintCell>
    PixelBuffer filterCells(OnFailure mode, const CellGrid& grid, PaintCell paintCell);
    /// Adds `ofRow(row)` over the rows of the whole image, without the region, to `start`, in
    /// whatever order; `afterRow(y)` follows each row, in order.
    template <class Sum, class OfRow, class AfterRow>
    Sum sumRows(Sum start, OfRow ofRow, AfterRow afterRow) const;
    template <class Sum, class OfRow>
    Sum sumRows(Sum start, OfRow ofRow) const {
        return sumRows(start, ofRow, [](int32_t) {});
    }

    // Helpers of one family.

    /// MaskFilter over the centres of a walk.
    PixelBuffer convolve(const Walk& walk, const tFilterKernel& kernel);
    /// SHARPEN and EDGEENHANCE: (a * centre - b * sum of the eight around it) \ divisor, or that
    /// sum where the divisor is 0.
    PixelBuffer setOff(const Walk& walk, int32_t a, int32_t b, int32_t divisor);
    /// EMBOSS and Engrave: levels by the difference of a pixel and its lower right neighbour.
    PixelBuffer plate(float slope);
    /// RankFilterN4 and RankFilterND over `overFive(channel window, join)`.
    template <class OverFive>
    PixelBuffer rankFilter(int32_t fltType, OverFive overFive);

    /// Whether the region is one rectangle in the image whose left column starts blocks of
    /// PIXELIZE.
    bool startsInBlocks(int32_t PixSize) const;
    /// PIXELIZE for such a region: no pixel takes the means of another's block.
    PixelBuffer pixelizeBlocks(int32_t PixSize);

    /// Mean of (B + G + R) \ 3 over the whole image, in a pass that reports like a filter's own and
    /// in which the sum wraps; 0 for an empty image.
    int32_t reportedMean();

    // What the helpers are made of, for members that depart from them too.

    /// `visit(source, x, y)` for the region's pixels inside `rect`, in runs of one row.
    template <class Visit>
    void visitRuns(const Rect& rect, Visit visit) const;
    /// Puts `of(channel window)` for each of the four bytes of each pixel of a run into `numbers`.
    template <class Number, class Of>
    void eachChannelWindow(const RowRun& run, const Stencil& stencil, Number* numbers,
                           const Of& of) const;
    /// `change(run)` for the same pixels; `result` is the block of a buffer like the image.
    template <class Change>
    void paintRuns(Pixel* result, const Rect& rect, Change change) const;
    /// `work(y)` for rows from `top` up to but without `bottom`, divided among threads, and
    /// `afterRow(y)` for each in order on the caller's thread. Where a row fails, those before it
    /// are done and reported, and its exception goes on.
    /// \param height how many of the image's rows such a row is as dear as
    template <class Work, class AfterRow>
    void forRows(int32_t top, int32_t bottom, Work work, AfterRow afterRow,
                 int32_t height = 1) const;
    /// `make(block, y)` for the rows of a walk puts a whole row of the result, margin included,
    /// into the block. The rows beyond the walk are the image's.
    template <class Make>
    PixelBuffer makeRows(OnFailure mode, const Walk& walk, Make make);
    /// `work(block, y)` for the rows of a walk; the block holds the image in row y and nothing yet
    /// below it. The result is whole at the end.
    template <class Work>
    PixelBuffer rowByRow(OnFailure mode, const Walk& walk, Work work);
    /// Where a row starts in the block, with its margin.
    ptrdiff_t startOfRow(int32_t y) const { return bits_.offsetOfRow(y) - PixelBuffer::margin; }
    /// The image in memory of its own, for members that change parts of it.
    PixelBuffer copyOfImage() const;
    /// Copies the image's pixels from one place in its block up to, but without, another.
    void copyImage(Pixel* block, ptrdiff_t from, ptrdiff_t to) const {
        std::copy(bits_.block() + from, bits_.block() + to, block + from);
    }
    /// Rows that one thread works on at a time: short enough to stay in its cache.
    int32_t bandHeight() const;
    /// Rows that are worked on between reports: few where somebody listens.
    int32_t rowsAtOnce() const;
    /// The values from, from + step, ... up to `to` that lie in lowest to highest. A negative step
    /// counts down to `to`.
    /// \throws StatementFailed for a step of 0 that would never end
    static std::vector<int32_t> steps(int32_t from, int32_t to, int32_t step, int64_t lowest,
                                      int64_t highest);
    /// Of `count` windows from (x, y) on, those from `first` up to, but without, `last` lie in the
    /// buffer.
    std::pair<size_t, size_t> windowsInBuffer(int32_t x, int32_t y, size_t count,
                                              const Stencil& stencil) const;
    /// The part of a rectangle that lies in the buffer, margin included.
    Rect inBuffer(const Rect& rect) const;
    /// Sets the inclusive rectangle that a filter with this margin walks.
    void SetScanRect(int32_t margin);
    /// Whether a report is due; if so the time of the last report is now.
    bool isReportDue();
    /// The report after a part of the work: Progress((part * 100) \ whole) where more than 10 ms
    /// have passed. A whole of 0 fails.
    void report(int32_t part, int32_t whole, OnFailure mode);
    /// The report after row y, measured against the whole height.
    void reportRow(int32_t y, OnFailure mode) { report(y, maxY_, mode); }
    void raiseProgress(int32_t percent);

    /// Milliseconds that must have passed since the last report.
    static constexpr int32_t reportInterval = 10;
    /// The largest radius of a square of which all rows report.
    static constexpr int32_t largestWholeSquare = 1 << 20;

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
