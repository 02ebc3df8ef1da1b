#include "pixels/bit_region.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

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

[[noreturn]] void fail(int error, const std::string& path) {
    throw std::system_error(error, std::generic_category(), path);
}

class File {
  public:
    File(const std::string& path, int flags)
        : path_(path), handle_(open(path.c_str(), flags | O_CLOEXEC, 0666)) {
        if (handle_ < 0) fail(errno, path);
    }
    ~File() {
        if (handle_ >= 0) close(handle_);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    size_t length() const {
        struct stat status {};
        if (fstat(handle_, &status) != 0) fail(errno, path_);
        return static_cast<size_t>(status.st_size);
    }

    /// Reads as many of the bytes as the file has.
    void readInto(std::vector<uint8_t>& bytes) const {
        size_t done = 0;
        while (done < bytes.size()) {
            const ssize_t got = read(handle_, bytes.data() + done, bytes.size() - done);
            if (got < 0 && errno == EINTR) continue;
            if (got < 0) fail(errno, path_);
            if (got == 0) return;
            done += static_cast<size_t>(got);
        }
    }

    void writeAll(const std::vector<uint8_t>& bytes) const {
        size_t done = 0;
        while (done < bytes.size()) {
            const ssize_t put = write(handle_, bytes.data() + done, bytes.size() - done);
            if (put < 0 && errno == EINTR) continue;
            if (put < 0) fail(errno, path_);
            done += static_cast<size_t>(put);
        }
    }

    /// Closing tells of writes that were put off, on network file systems for one.
    void closeWritten() {
        const int handle = handle_;
        handle_ = -1;
        if (close(handle) != 0 && errno != EINTR) fail(errno, path_);
    }

  private:
    std::string path_;
    int handle_;
};

int32_t littleEndianWord(const uint8_t* bytes) {
    return static_cast<int32_t>(uint32_t{bytes[0]} | uint32_t{bytes[1]} << 8 |
                                uint32_t{bytes[2]} << 16 | uint32_t{bytes[3]} << 24);
}

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
    const File file(FileName, O_RDONLY);
    const size_t words = file.length() / bytesPerWord;
    if (words * bytesPerWord > mostBytes) fail(EFBIG, FileName);
    try {
        std::vector<uint8_t> bytes(words * bytesPerWord);
        file.readInto(bytes);
        std::vector<int32_t> data(words);
        for (size_t i = 0; i < words; ++i) {
            data[i] = littleEndianWord(bytes.data() + i * bytesPerWord);
        }
        selectionData_ = std::move(data);
    } catch (const std::bad_alloc&) {
        fail(ENOMEM, FileName);
    }
    region_ = tessarine::Region::fromBlock(selectionData_);
    rescale();
}

void cBitRegion::SaveToFile(const std::string& FileName) const {
    std::vector<uint8_t> bytes;
    bytes.reserve(selectionData_.size() * bytesPerWord);
    for (const int32_t word : selectionData_) {
        for (unsigned shift = 0; shift < 32; shift += 8) {
            bytes.push_back(static_cast<uint8_t>(static_cast<uint32_t>(word) >> shift));
        }
    }
    File file(FileName, O_WRONLY | O_CREAT);
    file.writeAll(bytes);
    file.closeWritten();
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
