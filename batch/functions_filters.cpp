#include "batch/batch.h"
#include "batch/function_groups.h"
#include "filters/kernels.h"

namespace tessarine {

namespace {

// The choice between two kernels is fixed at the first of them, whose own weight counts; its
// offsets do not.
PixelBuffer bumpMapping(cBatch& b, CallSite) {
    const tFilterKernel kernel = GetFilterKernel(6);
    return b.cFilter.MaskFilter(kernel.mskBits, kernel.Weight, 0, 0, 0, true);
}

}  // namespace

std::vector<FunctionDef> filterFunctions() {
    return {
        {.id = 6,
         .name = "Blur",
         .header = "[Blur]",
         .sliders = {{"Level", 0, 2, 0}},
         .call = [](cBatch& b, CallSite) { return b.cFilter.Blurs(b.funcParam[0]); },
         .sentence = "Replaces each pixel by the mean of the eight pixels that lie around it at "
                     "the chosen distance.",
         .example = "Level=2"},
        {.id = 42,
         .name = "Bump Mapping",
         .header = "[Bump Mapping]",
         .call = bumpMapping,
         .sentence = "Lights the picture from one corner, so that its edges stand out like bumps; "
                     "the outermost pixels stay."},
        {.id = 11,
         .name = "Contour",
         .header = "[Contour]",
         .sliders = {{"Weight", 0, 255, 255}},
         .swatches = Swatches::onlySecond,
         .call = [](cBatch& b,
                    CallSite) { return b.cFilter.CONTOUR(b.funcParam[0], b.funcColor[1]); },
         .sentence = "Keeps the edges in colours of their own and paints everything flat in the "
                     "chosen colour.",
         .example = "Weight=255,Color1=FFFFFF"},
        {.id = 5,
         .name = "Diffuse",
         .header = "[Diffuse]",
         .sliders = {{"Horizontal range", 0, 50, 2}, {"Vertical range", 0, 50, 2}},
         .call = [](cBatch& b,
                    CallSite) { return b.cFilter.DIFFUSE(b.funcParam[0], b.funcParam[1]); },
         .sentence = "Takes each pixel from a random place nearby, as if seen through frosted "
                     "glass.",
         .example = "Horizontal range=12,Vertical range=12"},
        {.id = 44,
         .name = "Dilate",
         .header = "[Dilate]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.DILATE(); },
         .sentence = "Gives each channel the largest value among a pixel and its eight neighbours, "
                     "so that bright areas grow."},
        {.id = 45,
         .name = "Edge Enhance",
         .header = "[Edge Enhance]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.EDGEENHANCE(10); },
         .sentence = "Sharpens the picture by a fixed amount, most of all along its edges."},
        {.id = 9,
         .name = "Emboss",
         .header = "[Emboss]",
         .sliders = {{"Weight", 0, 50, 10}},
         .call = [](cBatch& b, CallSite) { return b.cFilter.EMBOSS(b.funcParam[0]); },
         .sentence = "Turns the picture into a grey plate out of which its edges rise.",
         .example = "Weight=30"},
        {.id = 10,
         .name = "Engrave",
         .header = "[Engrave]",
         .sliders = {{"Weight", 0, 50, 10}},
         .call = [](cBatch& b, CallSite) { return b.cFilter.Engrave(b.funcParam[0]); },
         .sentence = "Turns the picture into a grey plate into which its edges are cut.",
         .example = "Weight=30"},
        {.id = 46,
         .name = "Equalize",
         .header = "[Equalize]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.Equalize(); },
         .sentence = "Moves the picture's median brightness to the middle and stretches the levels "
                     "on both sides of it."},
        {.id = 47,
         .name = "Erode",
         .header = "[Erode]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.ERODE(); },
         .sentence =
             "Gives each channel the smallest value among a pixel and its eight neighbours, "
             "so that dark areas grow and the picture gets a black rim."},
        {.id = 7,
         .name = "Halftone",
         .header = "[Halftone]",
         .sliders = {{"Radius", 1, 25, 1}, {"Definition", 0, 100, 50}, {"Intensity", 0, 100, 0}},
         .call =
             [](cBatch& b, CallSite) {
                 return b.cFilter.HALFTONE(b.funcParam[0], b.funcParam[1], b.funcParam[2]);
             },
         .sentence = "Rebuilds the picture from soft dots on black, each in the mean colour of its "
                     "cell.",
         .example = "Radius=3,Definition=0"},
        {.id = 51,
         .name = "Negative",
         .header = "[Negative]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.Invert(); },
         .sentence = "Turns each channel into its opposite, as on a photographic negative."},
        {.id = 37,
         .name = "Noise",
         .header = "[Noise]",
         .sliders = {{"Intensity", 0, 100, 25}},
         .option = OptionDef{"Equalized", false},
         .call = [](cBatch& b, CallSite) { return b.cFilter.NOISE(b.funcParam[0], b.funcOption); },
         .sentence = "Adds random grain, coloured or, when equalized, the same in all channels.",
         .example = "Intensity=60"},
        {.id = 8,
         .name = "Pixelize",
         .header = "[Pixelaze]",
         .sliders = {{"Pixel size", 1, 25, 2}},
         .call = [](cBatch& b, CallSite) { return b.cFilter.PIXELIZE(b.funcParam[0]); },
         .sentence = "Replaces the picture by a mosaic of square blocks, each in its mean colour.",
         .example = "Pixel size=8"},
        {.id = 54,
         .name = "Painting",
         .header = "[Painting]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.PAINTING(); },
         .sentence = "Smooths the picture into strokes as of a brush while edges stay sharp."},
        {.id = 58,
         .name = "Relief",
         .header = "[Relief]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.RELIEF(); },
         .sentence = "Gives red and green a relief lit from one corner and leaves blue as it is."},
        {.id = 3,
         .name = "Saturation",
         .header = "[Saturation]",
         .sliders = {{"Level", -100, 250, 0}},
         .call = [](cBatch& b, CallSite) { return b.cFilter.SATURATION(b.funcParam[0]); },
         .sentence = "Makes the colours stronger or, below 0, paler; at -100 the picture is grey.",
         .example = "Level=120"},
        {.id = 19,
         .name = "Sharpen",
         .header = "[Sharpen]",
         .sliders = {{"Level", 0, 100, 0}},
         .call = [](cBatch& b, CallSite) { return b.cFilter.SHARPEN(b.funcParam[0]); },
         .sentence = "Sharpens the picture by setting each pixel off from its eight neighbours.",
         .example = "Level=90"},
        {.id = 20,
         .name = "Soften",
         .header = "[Soften]",
         .sliders = {{"Level", 0, 100, 0}},
         .call = [](cBatch& b, CallSite) { return b.cFilter.SOFTEN(b.funcParam[0]); },
         .sentence = "Softens the picture by mixing each pixel with the four next to it.",
         .example = "Level=100"},
    };
}

}  // namespace tessarine
