#include "imagefiles/encode.h"

#include <exception>
#include <new>

#include <FreeImage.h>

#include "imagefiles/devil_saving.h"
#include "imagefiles/format_table.h"
#include "imagefiles/gif_encoder.h"
#include "imagefiles/jpeg.h"
#include "imagefiles/png.h"
#include "pixels/failures.h"

namespace tessarine {

namespace {

/// What the rows' numbers, which are the file library's flags, stand for.
int jpegQuality(int16_t formatIndex) {
    if (formatIndex < 3 || formatIndex > 7) throw StatementFailed("no JPEG row has this number");
    switch (formatTable()[static_cast<size_t>(formatIndex)].value) {
        case JPEG_QUALITYBAD:
            return 10;
        case JPEG_QUALITYAVERAGE:
            return 25;
        case JPEG_QUALITYNORMAL:
            return 50;
        case JPEG_QUALITYGOOD:
            return 75;
        default:
            return 100;
    }
}

void encode(const Bitmap& picture, const std::string& extension, int16_t formatIndex,
            OutputFile& file) {
    const std::optional<SaveRoute> route = routeOf(extension);
    if (!route) throw StatementFailed("pictures are not saved as \"" + extension + "\"");
    switch (*route) {
        case SaveRoute::devil:
            if (extension == "png") return writePng(picture, file);
            return saveThroughDevil(picture, extension, file);
        case SaveRoute::encoder:
            if (formatIndex < 0 || formatIndex > 2)
                throw StatementFailed("no GIF row has this number");
            return writeGif(picture, formatTable()[static_cast<size_t>(formatIndex)].value, file);
        case SaveRoute::jpeg:
            return writeJpeg(picture, jpegQuality(formatIndex), file);
    }
}

}  // namespace

WriteOutcome encodePicture(const Bitmap& picture, const std::string& extension, int16_t formatIndex,
                           OutputFile& file) {
    try {
        encode(picture, extension, formatIndex, file);
        return {};
    } catch (const MemoryFailed&) {
    } catch (const std::bad_alloc&) {
    } catch (const std::exception& failure) {
        return {FileError::cannotWrite, failure.what()};
    }
    return {FileError::tooLarge, "not enough memory to save the picture"};
}

WriteOutcome encodePicture(const Bitmap& picture, const std::string& extension, int16_t formatIndex,
                           const MetadataToAdd& metadata, OutputFile& file) {
    WriteOutcome outcome = encodePicture(picture, extension, formatIndex, file);
    if (outcome.error != FileError::none) return outcome;
    outcome.leftOut = addMetadata(metadata, extension, picture.width(), picture.height(), file);
    if (!file.failure().empty()) outcome = {FileError::cannotWrite, file.failure()};
    return outcome;
}

}  // namespace tessarine
