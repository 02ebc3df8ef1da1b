#include "imagefiles/metadata/library.h"

// Files whose metadata the library finds, or puts into its place, by itself.

namespace tessarine {

namespace {

Exiv2::Image::AutoPtr opened(Bytes file) {
    Exiv2::Image::AutoPtr image =
        Exiv2::ImageFactory::open(file.data(), static_cast<long>(file.size()));
    image->readMetadata();
    return image;
}

ByteVector bytesOf(const Exiv2::DataBuf& buffer) {
    return {buffer.pData_, buffer.pData_ + buffer.size_};
}

}  // namespace

MetadataBlocks blocksByLibrary(Bytes file, int kind) {
    MetadataBlocks blocks;
    if (Exiv2::ImageFactory::getType(file.data(), static_cast<long>(file.size())) != kind)
        return blocks;
    const Exiv2::Image::AutoPtr image = opened(file);
    blocks.exif = exifBlock(image->exifData(), image->byteOrder());
    if (!image->iptcData().empty())
        blocks.iptc = bytesOf(Exiv2::IptcParser::encode(image->iptcData()));
    const std::string& packet = image->xmpPacket();
    blocks.xmp.assign(packet.begin(), packet.end());
    if (image->iccProfileDefined()) blocks.icc = bytesOf(*image->iccProfile());
    return blocks;
}

ByteVector tiffWith(Bytes file, const MetadataBlocks& blocks) {
    const Exiv2::Image::AutoPtr image = opened(file);
    Exiv2::ExifData exif;
    if (!blocks.exif.empty())
        Exiv2::ExifParser::decode(exif, blocks.exif.data(),
                                  static_cast<uint32_t>(blocks.exif.size()));
    Exiv2::ExifData& target = image->exifData();
    for (const Exiv2::Exifdatum& datum : exif) {
        if (tellsOfStorage(datum)) continue;
        const auto there = target.findKey(Exiv2::ExifKey(datum.key()));
        if (there != target.end()) target.erase(there);
        target.add(datum);
    }
    if (!blocks.iptc.empty()) image->setIptcData(iptcIn(blocks.iptc));
    if (!blocks.xmp.empty()) image->setXmpPacket(std::string(blocks.xmp.begin(), blocks.xmp.end()));
    if (!blocks.icc.empty()) {
        Exiv2::DataBuf profile(blocks.icc.data(), static_cast<long>(blocks.icc.size()));
        image->setIccProfile(profile);
    }
    image->writeMetadata();
    Exiv2::BasicIo& io = image->io();
    io.open();
    return bytesOf(io.read(static_cast<long>(io.size())));
}

}  // namespace tessarine
