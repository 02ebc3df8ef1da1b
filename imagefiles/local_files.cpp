#include <exception>
#include <optional>
#include <unistd.h>

#include "imagefiles/decode.h"
#include "imagefiles/encode.h"

namespace tessarine {

namespace {

/// \throws FileRefused
std::vector<uint8_t> bytesOf(const std::string& path) {
    const int file = openPictureFile(path);
    try {
        std::vector<uint8_t> bytes = readWholeFile(file);
        ::close(file);
        return bytes;
    } catch (const FileRefused&) {
        ::close(file);
        throw;
    }
}

class LocalFiles : public PictureFiles {
  public:
    ReadOutcome read(const std::string& path, const std::string& extension) override {
        return read(path, extension, std::nullopt);
    }

    WriteOutcome write(const Bitmap& picture, const std::string& extension, int16_t formatIndex,
                       OutputFile& file) override {
        return encodePicture(picture, extension, formatIndex, file);
    }

    ReadOutcome readWithMetadata(const std::string& path, const std::string& extension,
                                 MetadataWanted wanted) override {
        return read(path, extension, wanted);
    }

    WriteOutcome writeWithMetadata(const Bitmap& picture, const std::string& extension,
                                   int16_t formatIndex, const MetadataToAdd& metadata,
                                   OutputFile& file) override {
        return encodePicture(picture, extension, formatIndex, metadata, file);
    }

  private:
    static ReadOutcome read(const std::string& path, const std::string& extension,
                            std::optional<MetadataWanted> wanted) {
        try {
            const std::vector<uint8_t> file = bytesOf(path);
            std::vector<std::vector<uint8_t>> beside;
            for (const std::string& companion : companionPaths(path, extension)) {
                beside.emplace_back();
                attempt([&] { beside.back() = bytesOf(companion); });
            }
            const PictureSource source{file, {beside.begin(), beside.end()}, wanted.has_value()};
            ReadOutcome outcome = decodePicture(source, extension);
            if (outcome.bitmap) outcome.bitmap = Bitmap(std::move(*outcome.bitmap).takePixels());
            if (outcome.bitmap && wanted)
                outcome.metadata = metadataIn(file, extension, mostMetadataBytes, *wanted);
            return outcome;
        } catch (const FileRefused& failure) {
            ReadOutcome outcome;
            outcome.error = failure.error();
            outcome.message = failure.what();
            return outcome;
        } catch (const std::exception&) {
            ReadOutcome outcome;
            outcome.error = FileError::tooLarge;
            outcome.message = "memory does not suffice for the file";
            return outcome;
        }
    }
};

}  // namespace

PictureFiles& localFiles() {
    static LocalFiles only;
    return only;
}

}  // namespace tessarine
