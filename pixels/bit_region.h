#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "pixels/pixel_buffer.h"
#include "pixels/region.h"

namespace tessarine {

/// An 8 by 8 two-colour pattern; bit 7 of a row is its leftmost pixel. A set bit paints white, a
/// clear one black. Patterns repeat from the surface's origin.
using PatternBrush = std::array<uint8_t, 8>;

/// The region that tells filters which pixels they may touch: a main region (the image's
/// outline), a working selection inside it, a copy of the selection scaled for drawing at a zoom,
/// and the eight brushes of the marching outline.
class cBitRegion {
  public:
    cBitRegion();

    /// Clear(), then the main region becomes the rectangle; right and bottom exclusive.
    void Init(int32_t X1, int32_t Y1, int32_t X2, int32_t Y2);
    /// An empty selection becomes the box of the main region, any other what it leaves of it.
    void Invert();
    /// Cuts the selection to the main region.
    void Crop();
    void Offset(int32_t dX, int32_t dy);
    /// Drops the three regions and both blocks; zoom and brush stay.
    void Clear();
    /// Frames the scaled selection, moved by the offset, on the image area of `surface` with the
    /// current brush, one pixel wide. What lies outside the surface is left out.
    void DrawToDC(PixelBuffer& surface, int32_t xOffset, int32_t yOffset);
    /// The outline moves by one step.
    void RotateBrush();
    /// \return whether the selection has a box; only then are the arguments written.
    bool BoundRect(int32_t& LeftX, int32_t& TopY, int32_t& RightX, int32_t& BottomY) const;
    bool IsEmptyRegion() const;

    /// Reads a selection's block. A file that holds no block leaves no selection.
    /// \throws std::system_error where the file cannot be opened.
    void LoadFromFile(const std::string& FileName);
    /// Writes the selection's block from the file's first byte on; a longer file keeps its tail.
    /// \throws std::system_error where the file cannot be opened or written.
    void SaveToFile(const std::string& FileName) const;

    /// The words of the selection's block.
    std::vector<int32_t> GetData() const { return selectionData_; }
    int32_t GetDataCount() const { return static_cast<int32_t>(selectionData_.size()); }

    float ZoomFactor() const { return zoomFactor_; }
    /// A negative value becomes 0.01; the scaled selection follows.
    void ZoomFactor(float value);

    RegionHandle Region() const { return region_; }
    /// Takes over a copy of the region; the given handle stays the caller's. Null is ignored.
    void Region(const RegionHandle& given);
    RegionHandle RegionScaled() const { return regionScaled_; }
    RegionHandle RegionMain() const { return regionMain_; }

    /// The brush in use, 0 to 7, and the brushes themselves.
    int32_t brushIndex() const { return brushIndex_; }
    const std::array<PatternBrush, 8>& brushes() const { return brushes_; }

  private:
    void refresh();
    void rescale();

    RegionHandle regionMain_;
    RegionHandle region_;
    RegionHandle regionScaled_;
    float zoomFactor_ = 1.0F;
    std::vector<int32_t> selectionData_;
    std::vector<int32_t> scaledData_;
    std::array<PatternBrush, 8> brushes_{};
    int32_t brushIndex_ = 0;
};

}  // namespace tessarine
