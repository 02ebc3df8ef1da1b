#include "pixels/bit_region.h"

#include <algorithm>

#include "pixels/byte_files.h"
#include "pixels/byte_order.h"
#include "pixels/failures.h"
#include "pixels/numbers.h"

namespace tessarine {

namespace {

/// Diagonal stripes, four pixels on and four off.
constexpr PatternBrush basePattern = {240, 120, 60, 30, 15, 135, 195, 225};

constexpr Pixel white = {255, 255, 255, 0};
constexpr Pixel black = {0, 0, 0, 0};

/// Of a block only what stands behind these words is scaled.
constexpr size_t unscaledWords = 4;
constexpr size_t headerWords = 8;
constexpr size_t bytesPerWord = 4;
constexpr size_t mostBytes = headerWords * bytesPerWord + Region::maxRects * sizeof(Rect);

Rect boxOf(const RegionHandle& region) { return region == nullptr ? Rect() : region->box(); }

/// The image area of a surface in the coordinates of a region that is drawn moved by the offset,
/// with a margin of one pixel, so that cutting a region to it adds no border inside the surface.
Rect reachOf(const PixelBuffer& surface, int32_t xOffset, int32_t yOffset) {
    const auto limited = [](int64_t value) {
        return static_cast<int32_t>(std::clamp<int64_t>(value, INT32_MIN, INT32_MAX));
    };
    return {limited(int64_t{-1} - xOffset), limited(int64_t{-1} - yOffset),
            limited(int64_t{surface.width()} + 1 - xOffset),
            limited(int64_t{surface.height()} + 1 - yOffset)};
}

}  // namespace

cBitRegion::cBitRegion() {
    for (size_t i = 0; i < brushes_.size(); ++i) {
        for (size_t k = 0; k < basePattern.size(); ++k) {
            brushes_[i][k] = basePattern[(k + i) % basePattern.size()];
        }
    }
}

void cBitRegion::Init(int32_t X1, int32_t Y1, int32_t X2, int32_t Y2) {
    Clear();
    regionMain_ = std::make_shared<const tessarine::Region>(Rect{X1, Y1, X2, Y2});
}

void cBitRegion::Invert() {
    if (boxOf(region_).isEmpty()) {
        region_ = std::make_shared<const tessarine::Region>(boxOf(regionMain_));
    } else if (regionMain_ != nullptr) {
        attempt(
            [&] { region_ = std::make_shared<const tessarine::Region>(*regionMain_ ^ *region_); });
    }
    refresh();
}

void cBitRegion::Crop() {
    if (region_ != nullptr && regionMain_ != nullptr) {
        attempt(
            [&] { region_ = std::make_shared<const tessarine::Region>(*region_ & *regionMain_); });
    }
    refresh();
}

void cBitRegion::Offset(int32_t dX, int32_t dy) {
    if (region_ != nullptr) {
        attempt(
            [&] { region_ = std::make_shared<const tessarine::Region>(region_->offset(dX, dy)); });
    }
    refresh();
}

void cBitRegion::Clear() {
    regionMain_.reset();
    region_.reset();
    regionScaled_.reset();
    selectionData_.clear();
    scaledData_.clear();
}

void cBitRegion::DrawToDC(PixelBuffer& surface, int32_t xOffset, int32_t yOffset) {
    if (regionScaled_ == nullptr || !surface.isDimensioned()) return;
    const tessarine::Region reach(reachOf(surface, xOffset, yOffset));
    const tessarine::Region border = (*regionScaled_ & reach).frame(1, 1);
    if (border.isEmpty()) return;
    const PatternBrush& brush = brushes_[static_cast<size_t>(brushIndex_)];
    Pixel* block = surface.writableBlock();
    for (const Rect& rect : border.rects()) {
        const int64_t left = std::max<int64_t>(int64_t{rect.left} + xOffset, 0);
        const int64_t right = std::min<int64_t>(int64_t{rect.right} + xOffset, surface.width());
        const int64_t top = std::max<int64_t>(int64_t{rect.top} + yOffset, 0);
        const int64_t bottom = std::min<int64_t>(int64_t{rect.bottom} + yOffset, surface.height());
        for (int64_t y = top; y < bottom; ++y) {
            Pixel* row = block + surface.offsetOfRow(static_cast<int32_t>(y));
            const int pattern = brush[static_cast<size_t>(y % 8)];
            for (int64_t x = left; x < right; ++x) {
                const bool set = ((pattern >> (7 - x % 8)) & 1) != 0;
                const uint8_t fourth = row[x].fourth;
                row[x] = set ? white : black;
                row[x].fourth = fourth;
            }
        }
    }
}

void cBitRegion::RotateBrush() {
    ++brushIndex_;
    if (brushIndex_ == static_cast<int32_t>(brushes_.size())) brushIndex_ = 0;
}

bool cBitRegion::BoundRect(int32_t& LeftX, int32_t& TopY, int32_t& RightX, int32_t& BottomY) const {
    const Rect box = boxOf(region_);
    if (box.isEmpty()) return false;
    LeftX = box.left;
    TopY = box.top;
    RightX = box.right;
    BottomY = box.bottom;
    return true;
}

bool cBitRegion::IsEmptyRegion() const { return boxOf(region_).isEmpty(); }

void cBitRegion::LoadFromFile(const std::string& FileName) {
    const std::string bytes = readBytes(FileName, mostBytes);
    selectionData_.resize(bytes.size() / bytesPerWord);
    for (size_t i = 0; i < selectionData_.size(); ++i) {
        selectionData_[i] = littleEndianAt<int32_t>(bytes, i * bytesPerWord);
    }
    region_ = tessarine::Region::fromBlock(selectionData_);
    rescale();
}

void cBitRegion::SaveToFile(const std::string& FileName) const {
    std::string bytes;
    bytes.reserve(selectionData_.size() * bytesPerWord);
    for (const int32_t word : selectionData_)
        appendLittleEndian(bytes, word);
    writeBytes(FileName, bytes);
}

void cBitRegion::ZoomFactor(float value) {
    zoomFactor_ = value >= 0 ? value : 0.01F;
    rescale();
}

void cBitRegion::Region(const RegionHandle& given) {
    if (given == nullptr) return;
    selectionData_ = given->block();
    region_ = tessarine::Region::fromBlock(selectionData_);
    rescale();
}

/// After any change of the selection: its block, and the scaled copy, follow.
void cBitRegion::refresh() {
    if (region_ == nullptr) return;
    selectionData_ = region_->block();
    rescale();
}

void cBitRegion::rescale() {
    if (region_ == nullptr) return;
    scaledData_ = selectionData_;
    if (zoomFactor_ > 0) {
        for (size_t i = unscaledWords; i < scaledData_.size(); ++i) {
            scaledData_[i] = roundToInteger(static_cast<double>(scaledData_[i]) * zoomFactor_);
        }
    }
    regionScaled_ = tessarine::Region::fromBlock(scaledData_);
}

}  // namespace tessarine
