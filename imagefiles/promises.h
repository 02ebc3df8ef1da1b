#pragma once

#include <optional>

#include <FreeImage.h>

#include "imagefiles/decode.h"
#include "imagefiles/decoding.h"

// What headers promise, format by format, without a look at the pixels. Each gives nothing where
// the file is not of the format, and throws StatementFailed where the header is damaged.

namespace tessarine {

/// PNG, and the first picture of an MNG or JNG file.
std::optional<PromisedSize> promiseOfPng(Bytes file);
std::optional<PromisedSize> promiseOfJpeg(Bytes file);
std::optional<PromisedSize> promiseOfBmp(Bytes file);
std::optional<PromisedSize> promiseOfCut(Bytes file);
std::optional<PromisedSize> promiseOfDcx(Bytes file);
std::optional<PromisedSize> promiseOfDds(Bytes file);
std::optional<PromisedSize> promiseOfEmf(Bytes file);
/// The screen, or the first frame where that is larger.
std::optional<PromisedSize> promiseOfGif(Bytes file);
std::optional<PromisedSize> promiseOfIff(Bytes file);
std::optional<PromisedSize> promiseOfKoa(Bytes file);
std::optional<PromisedSize> promiseOfLif(Bytes file);
std::optional<PromisedSize> promiseOfLmp(Bytes file);
std::optional<PromisedSize> promiseOfMdl(Bytes file);
std::optional<PromisedSize> promiseOfPcd(Bytes file);
std::optional<PromisedSize> promiseOfPcx(Bytes file);
std::optional<PromisedSize> promiseOfPic(Bytes file);
std::optional<PromisedSize> promiseOfPix(Bytes file);
std::optional<PromisedSize> promiseOfPnm(Bytes file);
std::optional<PromisedSize> promiseOfPsd(Bytes file);
std::optional<PromisedSize> promiseOfPsp(Bytes file);
std::optional<PromisedSize> promiseOfPxr(Bytes file);
std::optional<PromisedSize> promiseOfRas(Bytes file);
std::optional<PromisedSize> promiseOfRaw(Bytes file);
std::optional<PromisedSize> promiseOfSgi(Bytes file);
std::optional<PromisedSize> promiseOfTga(Bytes file);
std::optional<PromisedSize> promiseOfTiff(Bytes file);
std::optional<PromisedSize> promiseOfWal(Bytes file);
std::optional<PromisedSize> promiseOfWbmp(Bytes file);
/// Nothing where the header tells no size, but only the drawing.
std::optional<PromisedSize> promiseOfWmf(Bytes file);
std::optional<PromisedSize> promiseOfXpm(Bytes file);

/// By a format of the file library's.
std::optional<PromisedSize> promiseOf(FREE_IMAGE_FORMAT format, Bytes file);

/// \throws FileRefused for a promise of more than maxPixels
void refuseIfTooLarge(const std::optional<PromisedSize>& promised);

}  // namespace tessarine
