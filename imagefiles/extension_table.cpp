#include "imagefiles/extension_table.h"

#include <algorithm>
#include <array>

#include <IL/il.h>

#include "imagefiles/decoders.h"

namespace tessarine {

namespace {

constexpr auto rows = std::to_array<ExtensionRow>({
    {"psp", LoadRoute::devil, FIF_UNKNOWN, IL_PSP, takeOverPsp},
    {"pic", LoadRoute::none, FIF_UNKNOWN, 0, takeOverPic},
    {"pix", LoadRoute::none, FIF_UNKNOWN, 0, takeOverPix},
    {"pxr", LoadRoute::devil},
    {"xpm", LoadRoute::none, FIF_UNKNOWN, 0, takeOverXpm},
    {"raw", LoadRoute::none, FIF_UNKNOWN, 0, takeOverRaw},
    {"dcx", LoadRoute::none, FIF_UNKNOWN, 0, takeOverDcx},
    {"dds", LoadRoute::devil, FIF_UNKNOWN, 0, takeOverDds},
    {"lif", LoadRoute::devil},
    {"wal", LoadRoute::devil, FIF_UNKNOWN, 0, takeOverWal},
    {"mdl", LoadRoute::none, FIF_UNKNOWN, 0, takeOverMdl},
    {"oil", LoadRoute::none},
    {"lmp", LoadRoute::devil, FIF_UNKNOWN, IL_DOOM, takeOverLmp},
    {"sgi", LoadRoute::devil, FIF_UNKNOWN, 0, takeOverSgi},
    {"bw", LoadRoute::devil, FIF_UNKNOWN, 0, takeOverSgi},
    {"rgb", LoadRoute::devil, FIF_UNKNOWN, 0, takeOverSgi},
    {"rgba", LoadRoute::devil, FIF_UNKNOWN, 0, takeOverSgi},
    {"act", LoadRoute::none, FIF_UNKNOWN, 0, takeOverAct},
    {"pal", LoadRoute::none, FIF_UNKNOWN, 0, takeOverPal},
    {"bmp", LoadRoute::freeImage, FIF_BMP, 0, takeOverBmp},
    {"cut", LoadRoute::freeImage, FIF_CUT, 0, takeOverCut},
    {"iff", LoadRoute::freeImage, FIF_IFF, 0, takeOverIff},
    {"jpg", LoadRoute::freeImage, FIF_JPEG, 2},
    {"jpeg", LoadRoute::freeImage, FIF_JPEG, 2},
    {"koa", LoadRoute::freeImage, FIF_KOALA, 0, takeOverKoa},
    {"lbm", LoadRoute::freeImage, FIF_LBM, 0, takeOverIff},
    {"mng", LoadRoute::freeImage, FIF_MNG},
    {"pcd", LoadRoute::freeImage, FIF_PCD, 0, takeOverPcd},
    {"pcx", LoadRoute::freeImage, FIF_PCX, 0, takeOverPcx},
    {"png", LoadRoute::freeImage, FIF_PNG},
    {"psd", LoadRoute::freeImage, FIF_PSD},
    {"pdd", LoadRoute::freeImage, FIF_PSD},
    {"ras", LoadRoute::freeImage, FIF_RAS, 0, takeOverRas},
    {"tga", LoadRoute::freeImage, FIF_TARGA, 1, takeOverTga},
    {"vda", LoadRoute::freeImage, FIF_TARGA, 1, takeOverTga},
    {"icb", LoadRoute::freeImage, FIF_TARGA, 1, takeOverTga},
    {"vst", LoadRoute::freeImage, FIF_TARGA, 1, takeOverTga},
    {"targa", LoadRoute::freeImage, FIF_TARGA, 1, takeOverTga},
    {"tif", LoadRoute::freeImage, FIF_TIFF, 0, takeOverTiff},
    {"tiff", LoadRoute::freeImage, FIF_TIFF, 0, takeOverTiff},
    {"wbmp", LoadRoute::freeImage, FIF_WBMP},
    {"pbm", LoadRoute::freeImage, FIF_PBMRAW, 0, takeOverPnm},
    {"pgm", LoadRoute::freeImage, FIF_PGMRAW, 0, takeOverPnm},
    {"ppm", LoadRoute::freeImage, FIF_PPMRAW, 0, takeOverPnm},
    {"jng", LoadRoute::detected},
});

}  // namespace

const ExtensionRow* findExtension(std::string_view extension) {
    const auto* row = std::find_if(rows.begin(), rows.end(), [&](const ExtensionRow& candidate) {
        return candidate.extension == extension;
    });
    return row == rows.end() ? nullptr : row;
}

}  // namespace tessarine
