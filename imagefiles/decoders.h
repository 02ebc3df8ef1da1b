#pragma once

#include <optional>
#include <string>

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

std::optional<Decoded> takeOverBmp(Bytes file, const std::string& path);
std::optional<Decoded> takeOverCut(Bytes file, const std::string& path);
std::optional<Decoded> takeOverDcx(Bytes file, const std::string& path);
std::optional<Decoded> takeOverDds(Bytes file, const std::string& path);
std::optional<Decoded> takeOverIff(Bytes file, const std::string& path);
std::optional<Decoded> takeOverKoa(Bytes file, const std::string& path);
std::optional<Decoded> takeOverLmp(Bytes file, const std::string& path);
std::optional<Decoded> takeOverMdl(Bytes file, const std::string& path);
std::optional<Decoded> takeOverAct(Bytes file, const std::string& path);
std::optional<Decoded> takeOverPal(Bytes file, const std::string& path);
std::optional<Decoded> takeOverPcd(Bytes file, const std::string& path);
std::optional<Decoded> takeOverPcx(Bytes file, const std::string& path);
std::optional<Decoded> takeOverPic(Bytes file, const std::string& path);
std::optional<Decoded> takeOverPix(Bytes file, const std::string& path);
std::optional<Decoded> takeOverPnm(Bytes file, const std::string& path);
std::optional<Decoded> takeOverPsp(Bytes file, const std::string& path);
std::optional<Decoded> takeOverRaw(Bytes file, const std::string& path);
std::optional<Decoded> takeOverRas(Bytes file, const std::string& path);
std::optional<Decoded> takeOverSgi(Bytes file, const std::string& path);
std::optional<Decoded> takeOverTga(Bytes file, const std::string& path);
std::optional<Decoded> takeOverTiff(Bytes file, const std::string& path);
std::optional<Decoded> takeOverWal(Bytes file, const std::string& path);
std::optional<Decoded> takeOverXpm(Bytes file, const std::string& path);

/// The first frame of a GIF on its logical screen; white where nothing is drawn.
Decoded decodeGif(Bytes file);
/// Metafiles, drawn on white at the size of their header at 96 pixels an inch.
Decoded drawWmf(Bytes file);
Decoded drawEmf(Bytes file);

}  // namespace tessarine
