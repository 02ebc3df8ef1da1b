#include "imagefiles/metadata.h"

#include <exception>
#include <new>

#include "imagefiles/metadata/jpeg_segments.h"
#include "imagefiles/metadata/library.h"
#include "imagefiles/metadata/png_chunks.h"
#include "imagefiles/metadata/resources.h"
#include "imagefiles/metadata/rich_xmp.h"
#include "imagefiles/output_file.h"
#include "pixels/failures.h"

namespace tessarine {

namespace {

enum class Container { none, jpeg, png, tiff, psd };

Container containerOf(const std::string& extension) {
    const std::string lower = inLowerCase(extension);
    if (lower == "jpg" || lower == "jpeg") return Container::jpeg;
    if (lower == "png") return Container::png;
    if (lower == "tif" || lower == "tiff") return Container::tiff;
    if (lower == "psd" || lower == "pdd") return Container::psd;
    return Container::none;
}

/// Does something with a block; where that fails the block is left out.
template <class Work>
void orLeaveOut(ByteVector& block, const char* name, LeftOut& leftOut, Work work) {
    if (block.empty()) return;
    try {
        work();
        return;
    } catch (const std::bad_alloc&) {
        leftOut.add(std::string(name) + ", for which memory does not suffice");
    } catch (const std::exception&) {
        leftOut.add(std::string(name) + ", which is damaged");
    }
    block.clear();
}

/// \param others  takes what was left out of anything but the word on how the picture lies
MetadataBlocks blocksIn(Bytes file, Container container, MetadataWanted wanted, LeftOut& leftOut,
                        LeftOut& others) {
    switch (container) {
        case Container::jpeg:
            return blocksInJpeg(file, others);
        case Container::png: {
            MetadataBlocks blocks = blocksInPng(file, wanted, leftOut);
            if (!blocks.icc.empty() && appliesGamma(file)) {
                blocks.icc.clear();
                leftOut.add("the colour profile, beside which the file has a gamma of its own");
            }
            return blocks;
        }
        case Container::tiff:
            if (isBigTiffWithWords(file))
                leftOut.add(
                    "all of it, since it is not read from TIFF files with places of 64 bits");
            return blocksInTiff(file, others);
        case Container::psd:
            return blocksInPsd(file);
        case Container::none:
            break;
    }
    return {};
}

/// Leaves out what is damaged, so that whatever is kept can be adjusted later.
uint8_t inspect(MetadataBlocks& blocks, LeftOut& leftOut) {
    uint8_t orientation = 1;
    while (const std::optional<RichXmp> copy = richXmpIn(blocks.exif))
        hide(*copy, blocks.exif);
    if (isTooRich(blocks.xmp)) {
        leftOut.add("XMP of more than " + std::to_string(mostWordsOfXmp) + " properties");
        blocks.xmp.clear();
    }
    orLeaveOut(blocks.exif, "EXIF", leftOut, [&] { orientation = orientationIn(blocks.exif); });
    orLeaveOut(blocks.iptc, "IPTC", leftOut, [&] { iptcIn(blocks.iptc); });
    orLeaveOut(blocks.xmp, "XMP", leftOut, [&] { xmpIn(blocks.xmp); });
    if (blocks.icc.empty()) return orientation;
    cutToSize(blocks.icc);
    const std::string why = whyNoProfile(blocks.icc);
    if (why.empty()) return orientation;
    leftOut.add("the colour profile: " + why);
    blocks.icc.clear();
    return orientation;
}

ByteVector withBlocks(Bytes file, Container container, const MetadataBlocks& blocks,
                      LeftOut& leftOut) {
    switch (container) {
        case Container::jpeg:
            return jpegWith(file, blocks, leftOut);
        case Container::png:
            return pngWith(file, blocks);
        case Container::tiff:
            return tiffWith(file, blocks);
        case Container::psd:
            return psdWith(file, blocks);
        case Container::none:
            break;
    }
    return {file.begin(), file.end()};
}

ByteVector contentsOf(OutputFile& file) {
    file.seek(0, SEEK_END);
    ByteVector bytes(static_cast<size_t>(std::max<int64_t>(file.tell(), 0)));
    file.seek(0);
    file.read(bytes.data(), bytes.size());
    if (!file.failure().empty()) throw StatementFailed(file.failure());
    return bytes;
}

/// \throws whatever the library throws
void add(const MetadataToAdd& metadata, Container container, MetadataChanges changes,
         OutputFile& file, LeftOut& leftOut) {
    std::optional<MetadataBlocks> blocks = unpacked(metadata.packed);
    if (!blocks) return leftOut.add("all of it, which got lost on its way");
    MetadataLibrary library;
    // All sizes that are told come first: places in pixels may stand in one block, and the size of
    // the picture that was read in another.
    orLeaveOut(blocks->exif, "EXIF", leftOut,
               [&] { changes.hasOtherSize = tellsOtherSize(blocks->exif, changes); });
    orLeaveOut(blocks->xmp, "XMP", leftOut, [&] { adjustXmp(blocks->xmp, changes); });
    orLeaveOut(blocks->exif, "EXIF", leftOut,
               [&] { adjustExif(blocks->exif, changes, library, leftOut); });
    orLeaveOut(blocks->iptc, "IPTC", leftOut, [&] { adjustIptc(blocks->iptc, changes); });
    if (blocks->areEmpty()) return;
    const ByteVector whole = withBlocks(contentsOf(file), container, *blocks, leftOut);
    file.seek(0);
    file.write(whole.data(), whole.size());
    file.cutHere();
}

}  // namespace

bool holdsMetadata(const std::string& extension) {
    return containerOf(extension) != Container::none;
}

FoundMetadata metadataIn(Bytes file, const std::string& extension, size_t mostBytes,
                         MetadataWanted wanted) {
    FoundMetadata found;
    LeftOut leftOut, unwanted;
    const Container container = containerOf(extension);
    if (container == Container::none) return found;
    try {
        MetadataLibrary library;
        const bool wantsAll = wanted == MetadataWanted::all;
        MetadataBlocks blocks =
            blocksIn(file, container, wanted, leftOut, wantsAll ? leftOut : unwanted);
        if (!wantsAll) blocks = {std::move(blocks.exif), {}, {}, {}};
        const uint8_t orientation = inspect(blocks, leftOut);
        if (wantsAll) found.packed = packed(blocks, mostBytes, leftOut);
        found.orientation = orientation;
    } catch (const std::bad_alloc&) {
        leftOut.add("all of it, for which memory does not suffice");
    } catch (const std::exception&) {
        leftOut.add("all of it, which is damaged");
    }
    found.leftOut = leftOut.text();
    return found;
}

std::string addMetadata(const MetadataToAdd& metadata, const std::string& extension, int32_t width,
                        int32_t height, OutputFile& file) {
    LeftOut leftOut;
    const Container container = containerOf(extension);
    if (container == Container::none || metadata.packed.empty()) return {};
    try {
        const MetadataChanges changes{width, height, metadata.isTurned, metadata.withoutLocation};
        add(metadata, container, changes, file, leftOut);
    } catch (const std::bad_alloc&) {
        leftOut.add("all of it, for which memory does not suffice");
    } catch (const std::exception& failure) {
        leftOut.add(std::string("all of it: ") + failure.what());
    }
    return leftOut.text();
}

}  // namespace tessarine
