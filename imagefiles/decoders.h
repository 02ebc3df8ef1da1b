#pragma once

#include <optional>

#include "imagefiles/decoding.h"

// The room's own decoders. Each is safe on any bytes, keeps its memory in proportion to what the
// file can hold, and throws StatementFailed for a file of its format that it cannot show whole.
// Those named takeOver… give nothing where the file is not theirs: then the extension's library
// reads it, or refuses it.

namespace tessarine {

/// Device-independent bitmaps of all headers (12 to 124 bytes), depths and run-length codings;
/// embedded JPEG and PNG too.
/// \param fileHeader  whether "BM" and the rest of the file header come first
Decoded decodeBmp(Bytes file, bool fileHeader);

std::optional<Decoded> takeOverBmp(const PictureSource& source);
std::optional<Decoded> takeOverCut(const PictureSource& source);
std::optional<Decoded> takeOverDcx(const PictureSource& source);
std::optional<Decoded> takeOverDds(const PictureSource& source);
std::optional<Decoded> takeOverIff(const PictureSource& source);
/// Whole files of one or three channels; others, damaged ones too, are the library's.
std::optional<Decoded> takeOverJpeg(const PictureSource& source);
std::optional<Decoded> takeOverKoa(const PictureSource& source);
std::optional<Decoded> takeOverLmp(const PictureSource& source);
std::optional<Decoded> takeOverMdl(const PictureSource& source);
std::optional<Decoded> takeOverAct(const PictureSource& source);
std::optional<Decoded> takeOverPal(const PictureSource& source);
std::optional<Decoded> takeOverPcd(const PictureSource& source);
std::optional<Decoded> takeOverPcx(const PictureSource& source);
std::optional<Decoded> takeOverPic(const PictureSource& source);
std::optional<Decoded> takeOverPix(const PictureSource& source);
std::optional<Decoded> takeOverPnm(const PictureSource& source);
std::optional<Decoded> takeOverPsp(const PictureSource& source);
std::optional<Decoded> takeOverRaw(const PictureSource& source);
std::optional<Decoded> takeOverRas(const PictureSource& source);
std::optional<Decoded> takeOverSgi(const PictureSource& source);
std::optional<Decoded> takeOverTga(const PictureSource& source);
std::optional<Decoded> takeOverTiff(const PictureSource& source);
/// Where a TIFF has the low byte of the number by which its first directory lists a colour profile.
/// The number before it means nothing to anybody.
std::optional<size_t> placeOfProfileNumber(Bytes file);
std::optional<Decoded> takeOverWal(const PictureSource& source);
std::optional<Decoded> takeOverXpm(const PictureSource& source);

/// The first frame of a GIF on its logical screen; white where nothing is drawn.
Decoded decodeGif(Bytes file);
/// Metafiles, drawn on white at the size of their header at 96 pixels an inch.
Decoded drawWmf(Bytes file);
Decoded drawEmf(Bytes file);

}  // namespace tessarine
