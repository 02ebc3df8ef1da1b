#include "imagefiles/picture_files.h"

#include "imagefiles/format_table.h"

namespace tessarine {

std::string_view errorClass(FileError error) {
    switch (error) {
        case FileError::none:
            break;
        case FileError::unreadable:
            return "unreadable";
        case FileError::tooLarge:
            return "too-large";
        case FileError::timedOut:
            return "timed-out";
        case FileError::codecDied:
            return "codec-died";
        case FileError::cannotWrite:
            return "cannot-write";
    }
    return {};
}

namespace {

/// Another's reading and writing.
class Forwarding : public PictureFiles {
  public:
    explicit Forwarding(PictureFiles& files) : files_(files) {}

    ReadOutcome read(const std::string& path, const std::string& extension) override {
        return files_.read(path, extension);
    }
    WriteOutcome write(const Bitmap& picture, const std::string& extension, int16_t formatIndex,
                       OutputFile& file) override {
        return files_.write(picture, extension, formatIndex, file);
    }
    ReadOutcome readWithMetadata(const std::string& path, const std::string& extension,
                                 MetadataWanted wanted) override {
        return files_.readWithMetadata(path, extension, wanted);
    }
    WriteOutcome writeWithMetadata(const Bitmap& picture, const std::string& extension,
                                   int16_t formatIndex, const MetadataToAdd& metadata,
                                   OutputFile& file) override {
        return files_.writeWithMetadata(picture, extension, formatIndex, metadata, file);
    }

  private:
    PictureFiles& files_;
};

}  // namespace

std::unique_ptr<PictureFiles> PictureFiles::onePicture() {
    return std::make_unique<Forwarding>(*this);
}

Bitmap savedBitmap(const PictureHolder& picture, const std::string& extension) {
    return routeOf(extension) == SaveRoute::devil ? picture.picture() : picture.drawn();
}

}  // namespace tessarine
