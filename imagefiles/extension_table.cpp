#include "imagefiles/extension_table.h"

#include <algorithm>
#include <array>

#include <IL/il.h>

#include "imagefiles/decoders.h"
#include "imagefiles/promises.h"

namespace tessarine {

namespace {

constexpr auto rows = std::to_array<ExtensionRow>({
    {"psp", LoadRoute::devil, promiseOfPsp, FIF_UNKNOWN, IL_PSP, takeOverPsp},
    {"pic", LoadRoute::none, promiseOfPic, FIF_UNKNOWN, 0, takeOverPic},
    {"pix", LoadRoute::none, promiseOfPix, FIF_UNKNOWN, 0, takeOverPix},
    {"pxr", LoadRoute::devil, promiseOfPxr},
    {"xpm", LoadRoute::none, promiseOfXpm, FIF_UNKNOWN, 0, takeOverXpm},
    {"raw", LoadRoute::none, promiseOfRaw, FIF_UNKNOWN, 0, takeOverRaw},
    {"dcx", LoadRoute::none, promiseOfDcx, FIF_UNKNOWN, 0, takeOverDcx},
    {"dds", LoadRoute::devil, promiseOfDds, FIF_UNKNOWN, 0, takeOverDds},
    {"lif", LoadRoute::devil, promiseOfLif},
    {"wal", LoadRoute::devil, promiseOfWal, FIF_UNKNOWN, 0, takeOverWal},
    {"mdl", LoadRoute::none, promiseOfMdl, FIF_UNKNOWN, 0, takeOverMdl},
    {"oil", LoadRoute::none},
    {"lmp", LoadRoute::devil, promiseOfLmp, FIF_UNKNOWN, IL_DOOM, takeOverLmp},
    {"sgi", LoadRoute::devil, promiseOfSgi, FIF_UNKNOWN, 0, takeOverSgi},
    {"bw", LoadRoute::devil, promiseOfSgi, FIF_UNKNOWN, 0, takeOverSgi},
    {"rgb", LoadRoute::devil, promiseOfSgi, FIF_UNKNOWN, 0, takeOverSgi},
    {"rgba", LoadRoute::devil, promiseOfSgi, FIF_UNKNOWN, 0, takeOverSgi},
    {"act", LoadRoute::none, nullptr, FIF_UNKNOWN, 0, takeOverAct},
    {"pal", LoadRoute::none, nullptr, FIF_UNKNOWN, 0, takeOverPal},
    {"bmp", LoadRoute::freeImage, promiseOfBmp, FIF_BMP, 0, takeOverBmp},
    {"cut", LoadRoute::freeImage, promiseOfCut, FIF_CUT, 0, takeOverCut},
    {"iff", LoadRoute::freeImage, promiseOfIff, FIF_IFF, 0, takeOverIff},
    {"jpg", LoadRoute::freeImage, promiseOfJpeg, FIF_JPEG, 2, takeOverJpeg},
    {"jpeg", LoadRoute::freeImage, promiseOfJpeg, FIF_JPEG, 2, takeOverJpeg},
    {"koa", LoadRoute::freeImage, promiseOfKoa, FIF_KOALA, 0, takeOverKoa},
    {"lbm", LoadRoute::freeImage, promiseOfIff, FIF_LBM, 0, takeOverIff},
    {"mng", LoadRoute::freeImage, promiseOfPng, FIF_MNG},
    {"pcd", LoadRoute::freeImage, promiseOfPcd, FIF_PCD, 0, takeOverPcd},
    {"pcx", LoadRoute::freeImage, promiseOfPcx, FIF_PCX, 0, takeOverPcx},
    {"png", LoadRoute::freeImage, promiseOfPng, FIF_PNG},
    {"psd", LoadRoute::freeImage, promiseOfPsd, FIF_PSD},
    {"pdd", LoadRoute::freeImage, promiseOfPsd, FIF_PSD},
    {"ras", LoadRoute::freeImage, promiseOfRas, FIF_RAS, 0, takeOverRas},
    {"tga", LoadRoute::freeImage, promiseOfTga, FIF_TARGA, 1, takeOverTga},
    {"vda", LoadRoute::freeImage, promiseOfTga, FIF_TARGA, 1, takeOverTga},
    {"icb", LoadRoute::freeImage, promiseOfTga, FIF_TARGA, 1, takeOverTga},
    {"vst", LoadRoute::freeImage, promiseOfTga, FIF_TARGA, 1, takeOverTga},
    {"targa", LoadRoute::freeImage, promiseOfTga, FIF_TARGA, 1, takeOverTga},
    {"tif", LoadRoute::freeImage, promiseOfTiff, FIF_TIFF, 0, takeOverTiff},
    {"tiff", LoadRoute::freeImage, promiseOfTiff, FIF_TIFF, 0, takeOverTiff},
    {"wbmp", LoadRoute::freeImage, promiseOfWbmp, FIF_WBMP},
    {"pbm", LoadRoute::freeImage, promiseOfPnm, FIF_PBMRAW, 0, takeOverPnm},
    {"pgm", LoadRoute::freeImage, promiseOfPnm, FIF_PGMRAW, 0, takeOverPnm},
    {"ppm", LoadRoute::freeImage, promiseOfPnm, FIF_PPMRAW, 0, takeOverPnm},
    {"jng", LoadRoute::detected},
});

}  // namespace

const ExtensionRow* findExtension(std::string_view extension) {
    const auto* row = std::find_if(rows.begin(), rows.end(), [&](const ExtensionRow& candidate) {
        return candidate.extension == extension;
    });
    return row == rows.end() ? nullptr : row;
}

const ExtensionRow* findFormat(FREE_IMAGE_FORMAT format) {
    const auto* row = std::find_if(rows.begin(), rows.end(), [&](const ExtensionRow& candidate) {
        return candidate.route == LoadRoute::freeImage && candidate.format == format;
    });
    return row == rows.end() ? nullptr : row;
}

}  // namespace tessarine
