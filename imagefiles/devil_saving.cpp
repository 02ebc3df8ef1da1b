#include "imagefiles/devil_saving.h"

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include <IL/ilu.h>

#include "imagefiles/bmp_writer.h"
#include "imagefiles/devil_io.h"
#include "pixels/failures.h"

namespace tessarine {

namespace {

std::string inWords(ILenum error) {
    if (error == IL_NO_ERROR) return "it gives no reason";
    const char* text = iluErrorString(error);
    return text != nullptr ? text : "unknown error";
}

void takePictureOver(const Bitmap& picture) {
    const std::vector<uint8_t> bmp = bmpOf(picture);
    MemoryReader source(bmp);
    const DevilReads reading(source);
    if (ilLoad(IL_BMP, "picture.bmp") == IL_TRUE) return;
    bool outOfMemory = false;
    const ILenum error = takeDevilError(&outOfMemory);
    const std::string why = "cannot take the picture over for saving: " + inWords(error);
    if (outOfMemory) throw MemoryFailed(why);
    throw StatementFailed(why);
}

/// The largest side that the format's header can hold; the library does not look at it.
ILint longestSide(std::string_view extension) {
    const bool has16Bits = extension == "tga" || extension == "pcx" || extension == "sgi";
    return has16Bits ? 65535 : 0x7fffffff;
}

/// The origin fields of a TGA file (bytes 8 to 11) are left as memory was.
void clearTgaOrigin(OutputFile& file) {
    constexpr std::array<uint8_t, 4> origin{};
    file.seek(8);
    file.write(origin.data(), origin.size());
}

/// A TIFF file's numbers in the order that its first byte tells.
class TiffNumbers {
  public:
    TiffNumbers(OutputFile& file, bool bigEndian) : file_(file), bigEndian_(bigEndian) {}

    uint32_t read(int64_t place, int bytes) {
        std::array<uint8_t, 4> raw{};
        file_.seek(place);
        file_.read(raw.data(), static_cast<size_t>(bytes));
        uint32_t value = 0;
        for (int i = 0; i < bytes; ++i)
            value |= static_cast<uint32_t>(raw[bigEndian_ ? bytes - 1 - i : i]) << (8 * i);
        return value;
    }
    void write16(int64_t place, uint32_t value) {
        const auto low = static_cast<uint8_t>(value);
        const auto high = static_cast<uint8_t>(value >> 8);
        const std::array<uint8_t, 2> raw =
            bigEndian_ ? std::array{high, low} : std::array{low, high};
        file_.seek(place);
        file_.write(raw.data(), raw.size());
    }

  private:
    OutputFile& file_;
    bool bigEndian_;
};

/// Takes the time of day out of a TIFF file: the entry goes, those behind it move up, and its
/// text becomes zeros.
void dropTiffTime(OutputFile& file) {
    constexpr uint32_t dateTime = 306;
    constexpr int64_t entrySize = 12;
    char order = 0;
    file.seek(0);
    file.read(&order, 1);
    TiffNumbers numbers(file, order == 'M');
    const int64_t directory = numbers.read(4, 4);
    const uint32_t entries = numbers.read(directory, 2);
    for (uint32_t i = 0; i < entries; ++i) {
        const int64_t entry = directory + 2 + i * entrySize;
        if (numbers.read(entry, 2) != dateTime) continue;

        const std::vector<uint8_t> zeros(numbers.read(entry + 4, 4));
        file.seek(numbers.read(entry + 8, 4));
        file.write(zeros.data(), zeros.size());

        // Behind the last entry stands the 4-byte place of a next directory.
        std::vector<uint8_t> rest(static_cast<size_t>((entries - i - 1) * entrySize + 4));
        file.seek(entry + entrySize);
        file.read(rest.data(), rest.size());
        rest.resize(rest.size() + entrySize);
        file.seek(entry);
        file.write(rest.data(), rest.size());
        numbers.write16(directory, entries - 1);
        return;
    }
}

}  // namespace

void saveThroughDevil(const Bitmap& picture, const std::string& extension, OutputFile& file) {
    const DevilImage image;
    takePictureOver(picture);
    const ILint longest = longestSide(extension);
    if (ilGetInteger(IL_IMAGE_WIDTH) > longest || ilGetInteger(IL_IMAGE_HEIGHT) > longest)
        throw StatementFailed("the picture is too large for this format: a side has at most " +
                              std::to_string(longest) + " pixels");

    takeDevilError();
    const DevilWrites writing(file);
    const bool said = ilSaveImage(("picture." + extension).c_str()) != 0;
    bool outOfMemory = false;
    const ILenum error = takeDevilError(&outOfMemory);
    if (!file.failure().empty()) throw StatementFailed(file.failure());
    if (!said || error != IL_NO_ERROR) {
        const std::string why = "the library does not write the picture: " + inWords(error);
        if (outOfMemory) throw MemoryFailed(why);
        throw StatementFailed(why);
    }

    if (extension == "tga") clearTgaOrigin(file);
    if (extension == "tif") dropTiffTime(file);
    if (!file.failure().empty()) throw StatementFailed(file.failure());
}

}  // namespace tessarine
