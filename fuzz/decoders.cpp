#include "imagefiles/decoders.h"

#include <array>

#include "expect.h"
#include "imagefiles/image_library.h"
#include "input.h"
#include "pixels/failures.h"

using namespace tessarine;

namespace {

using TakeOver = std::optional<Decoded> (*)(const PictureSource&);

constexpr std::array takeOvers{takeOverBmp,  takeOverCut, takeOverDcx, takeOverDds, takeOverIff,
                               takeOverKoa,  takeOverLmp, takeOverMdl, takeOverAct, takeOverPal,
                               takeOverPcd,  takeOverPcx, takeOverPic, takeOverPix, takeOverPnm,
                               takeOverPsp,  takeOverRaw, takeOverRas, takeOverSgi, takeOverTga,
                               takeOverTiff, takeOverWal, takeOverXpm};

/// The picture of a file, beside which a file of colours may lie for those that look for one.
std::optional<Decoded> decode(TakeOver takeOver, std::span<const uint8_t> file,
                              std::span<const uint8_t> colours) {
    // The libraries' messages go nowhere while this stands.
    static mFormat messages;
    static const OpenLibrary library(messages);
    return takeOver({file, {colours}});
}

std::optional<Decoded> decode(size_t choice, std::span<const uint8_t> file,
                              std::span<const uint8_t> colours) {
    std::optional<Decoded> decoded;
    attempt([&] {
        choice %= takeOvers.size() + 3;
        if (choice < takeOvers.size())
            decoded = decode(takeOvers[choice], file, colours);
        else if (choice == takeOvers.size())
            decoded = decodeGif(file);
        else
            decoded = decodeBmp(file, choice == takeOvers.size() + 1);
    });
    return decoded;
}

void checkPicture(const Bitmap& bitmap) {
    expect(bitmap.isValid());
    expect(bitmap.width() >= 1 && bitmap.height() >= 1);
    expect(uint64_t(bitmap.width()) * uint64_t(bitmap.height()) <= maxPixels);
    for (int32_t y = 0; y < bitmap.height(); ++y)
        for (int32_t x = 0; x < bitmap.width(); ++x)
            expect(bitmap.row(y)[x].fourth == 0);
}

}  // namespace

// The first byte chooses the decoder, in the order of the list above; the GIF and the two BMP
// decoders follow. The second, times 8, is the length of a file of colours, which comes next; the
// rest is the file. What comes of it is a picture without a rest of other memory in it: the same
// one twice.
//
// TIFF, GIF and pictures inside a BMP go through the libraries on which the decoders stand.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    const size_t choice = input.u8();
    const std::span<const uint8_t> colours = input.take(size_t{8} * input.u8());
    const std::span<const uint8_t> file = input.rest();
    const std::optional<Decoded> decoded = decode(choice, file, colours);
    if (!decoded) return 0;
    expect(decoded->depth >= 1 && decoded->depth <= 128);
    checkPicture(decoded->bitmap);
    expect(decode(choice, file, colours)->bitmap == decoded->bitmap);
    return 0;
}
