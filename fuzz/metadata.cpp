#include "imagefiles/metadata.h"

#include <array>
#include <string>
#include <sys/mman.h>

#include "expect.h"
#include "imagefiles/encode.h"
#include "imagefiles/metadata/blocks.h"
#include "input.h"

using namespace tessarine;

namespace {

struct Kind {
    std::string extension;
    int16_t row;
};

const std::array<Kind, 4> kinds{{{"jpg", 6}, {"png", 9}, {"tif", 11}, {"psd", 16}}};

}  // namespace

// Whatever a file says beyond its pixels: what is found is whole and within its bound, what is made
// of it goes into all formats that hold any, and is found there again.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const Bitmap picture(8, 6);
    constexpr size_t most = 1 << 20;
    Input input(data, size);
    const Kind& from = kinds[static_cast<size_t>(input.below(4))];
    const Kind& to = kinds[static_cast<size_t>(input.below(4))];
    const uint8_t how = input.u8();
    const FoundMetadata found = metadataIn(input.rest(), from.extension, most);
    expect(found.orientation >= 1 && found.orientation <= 8);
    expect(found.packed.size() <= most && unpacked(found.packed).has_value());
    if (found.packed.empty()) return 0;

    OutputFile file;
    expect(file.adopt(::memfd_create("picture", MFD_CLOEXEC), "picture"));
    const MetadataToAdd toAdd{found.packed, (how & 1) != 0, (how & 2) != 0};
    const WriteOutcome written = encodePicture(picture, to.extension, to.row, toAdd, file);
    expect(written.error == FileError::none);
    expect(file.seek(0, SEEK_END));
    std::vector<uint8_t> bytes(static_cast<size_t>(file.tell()));
    expect(file.seek(0) && file.read(bytes.data(), bytes.size()) == bytes.size());
    const FoundMetadata again = metadataIn(bytes, to.extension, most);
    if (toAdd.isTurned) expect(again.orientation == 1);
    return 0;
}
