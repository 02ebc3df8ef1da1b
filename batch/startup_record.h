#pragma once

#include <cstdint>
#include <string>

namespace tessarine {

/// Screen twips to a pixel: sizes of the window are stored as pixels times this.
inline constexpr int32_t twipsPerPixel = 15;

/// A text of exactly 256 bytes, padded with blanks; what is longer is cut.
class FixedText {
  public:
    static constexpr size_t length = 256;

    FixedText() : bytes_(length, ' ') {}
    FixedText& operator=(const std::string& text);
    /// All 256 bytes.
    const std::string& bytes() const { return bytes_; }
    std::string rightTrimmed() const;

  private:
    std::string bytes_;
};

/// The settings record. On disk: the fields in this order, little-endian, without gaps, 1058
/// bytes, and nothing else.
struct StartupRecord {
    static constexpr size_t bytesOnDisk = 1058;

    FixedText genericName;
    FixedText lastFolder;
    FixedText destinationFolder;
    FixedText dialogFolder;
    int16_t formatRow = 0;
    uint8_t overwriteFiles = 0;  ///< a tick box: 0 off, 1 on
    int16_t maximized = 0;       ///< 0 or -1
    int32_t windowWidth = 0;     ///< twips
    int32_t windowHeight = 0;    ///< twips
    int32_t splitterBs11 = 0;
    int32_t splitterBs13 = 0;
    int32_t splitterBs12 = 0;
    int32_t splitterBs21 = 0;
    int32_t splitterBs14 = 0;
    uint8_t showDestination = 0;  ///< a tick box

    /// The values of a first start.
    static StartupRecord defaults(const std::string& programFolder);
    /// The record as its 1058 bytes.
    std::string toBytes() const;
    /// Reads the record from the start of `bytes`; what is missing reads as 0 bytes.
    static StartupRecord fromBytes(const std::string& bytes);
};

}  // namespace tessarine
