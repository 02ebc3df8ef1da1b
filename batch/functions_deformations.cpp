#include <algorithm>

#include "batch/batch.h"
#include "batch/function_groups.h"
#include "pixels/numbers.h"

namespace tessarine {

namespace {

/// The first number as a part of a picture's longer side.
float relativeToLonger(const cBatch& b, int32_t width, int32_t height) {
    return single(static_cast<double>(b.funcParam[0]) / std::max(width, height));
}

PixelBuffer lens(cBatch& b, CallSite) {
    return b.cFilter.LENS(b.pickRelX, b.pickRelY, relativeToLonger(b, b.workWidth, b.workHeight),
                          b.funcParam[1]);
}

// The preview measures itself, all else the picture that was taken in.
PixelBuffer flare(cBatch& b, CallSite site) {
    const bool inPreview = site == CallSite::preview;
    const int32_t width = inPreview ? b.iDst.width() : b.workWidth;
    const int32_t height = inPreview ? b.iDst.height() : b.workHeight;
    return b.cFilter.Light(b.pickRelX, b.pickRelY, relativeToLonger(b, width, height),
                           b.funcParam[1], b.funcParam[2]);
}

PixelBuffer glass(cBatch& b, CallSite) {
    return b.cFilter.GLASS(b.funcStyle, static_cast<int16_t>(b.funcParam[0]));
}

}  // namespace

std::vector<FunctionDef> deformationFunctions() {
    return {
        {.id = 29,
         .name = "Bend",
         .header = "[Bend]",
         .sliders = {{"Radius factor", -200, 200, 0}},
         .option = OptionDef{"Clean back", true},
         .call = [](cBatch& b, CallSite) { return b.cFilter.BEND(b.funcParam[0], b.funcOption); },
         .sentence = "Bends the picture into a ring around its centre, the lower edge inside; "
                     "uncovered places become black or stay.",
         .example = "Radius factor=0"},
        {.id = 40,
         .name = "Curtain",
         .header = "[Behind Curtain]",
         .panel = Panel::FrmCurtain,
         .call = glass,
         .sentence = "Draws the picture out into stripes, as if it lay behind a curtain.",
         .example = "Horizontal=on"},
        {.id = 36,
         .name = "Flare",
         .header = "[Light]",
         .sliders = {{"Extension", 1, 100, 50},
                     {"Intensity", 0, 500, 250},
                     {"Definition", 0, 100, 0}},
         .picksPoint = true,
         .call = flare,
         .sentence = "Throws a round spot of light on the picked point, strongest at its centre; "
                     "the extension is its radius in pixels of each picture.",
         .example = "X=66,Y=45,Extension=60,Intensity=200"},
        {.id = 30,
         .name = "Fold",
         .header = "[Fold]",
         .sliders = {{"Horizontal factor", -100, 100, 0}, {"Vertical factor", -100, 100, 0}},
         .option = OptionDef{"Clean back", true},
         .call =
             [](cBatch& b, CallSite) {
                 return b.cFilter.FOLD(b.funcParam[0], b.funcParam[1], b.funcOption);
             },
         .sentence = "Narrows one end of the picture and widens the other, like a folded sheet; "
                     "uncovered places become black or stay.",
         .example = "Horizontal factor=60,Vertical factor=30"},
        {.id = 39,
         .name = "Glass",
         .header = "[Behind Glass]",
         .panel = Panel::FrmGlass,
         .call = glass,
         .sentence = "Ripples the picture, as if it lay behind patterned glass.",
         .example = "Squary=Tight"},
        {.id = 35,
         .name = "Grid",
         .header = "[Grid]",
         .sliders = {{"Horizontal step", 1, 250, 25},
                     {"Vertical step", 1, 250, 25},
                     {"Opacity", 0, 255, 128}},
         .option = OptionDef{"Force margins", true},
         .swatches = Swatches::onlySecond,
         .call =
             [](cBatch& b, CallSite) {
                 return b.cFilter.Grid(b.funcParam[0], b.funcParam[1], b.funcOption, b.funcColor[1],
                                       b.funcParam[2]);
             },
         .sentence = "Draws translucent lines over the picture, if wanted along its last row and "
                     "column too.",
         .example = "Horizontal step=20,Vertical step=20,Opacity=160,Color1=000000"},
        {.id = 27,
         .name = "Lens",
         .header = "[Lens]",
         .sliders = {{"Diameter", 1, 100, 50}, {"Magnify factor", 0, 100, 50}},
         .picksPoint = true,
         .call = lens,
         .sentence = "Magnifies what lies around the picked point, as a round lens does; the "
                     "diameter's number is its radius in pixels of each picture.",
         .example = "X=66,Y=45,Diameter=45,Magnify factor=80"},
        {.id = 38,
         .name = "Scanliness",
         .header = "[Scanlines]",
         .sliders = {{"Opacity", 0, 255, 128}},
         .call = [](cBatch& b, CallSite) { return b.cFilter.Scanlines(b.funcParam[0]); },
         .sentence = "Darkens every second row, as on an old screen.",
         .example = "Opacity=160"},
        {.id = 32,
         .name = "Stretch",
         .header = "[Stretch]",
         .sliders = {{"Horizontal factor", -100, 100, 0}, {"Vertical factor", -100, 100, 0}},
         .option = OptionDef{"Clean back", true},
         .call =
             [](cBatch& b, CallSite) {
                 return b.cFilter.STRETCH(b.funcParam[0], b.funcParam[1], b.funcOption);
             },
         .sentence = "Shrinks the content towards the picture's centre or, below 0, enlarges it; "
                     "uncovered places become black or stay.",
         .example = "Horizontal factor=40,Vertical factor=40"},
        {.id = 33,
         .name = "Tile",
         .header = "[Tile]",
         .sliders = {{"Factor", 2, 50, 2}},
         .call = [](cBatch& b, CallSite) { return b.cFilter.TILE(b.funcParam[0]); },
         .sentence = "Fills the picture with small copies of itself, as many across and down as "
                     "chosen.",
         .example = "Factor=3"},
        {.id = 34,
         .name = "Twirl",
         .header = "[Twirl]",
         .sliders = {{"Level", -100, 100, 0}, {"Offset degrees", -180, 180, 0}},
         .option = OptionDef{"Clean back", true},
         .call =
             [](cBatch& b, CallSite) {
                 return b.cFilter.TWIRL(b.funcParam[0], b.funcParam[1], b.funcOption);
             },
         .sentence = "Turns the picture about its centre, more and more with the distance from it; "
                     "uncovered places become black or stay.",
         .example = "Level=-40"},
        {.id = 28,
         .name = "Waves",
         .header = "[Waves]",
         .sliders = {{"Frequency", 0, 100, 25},
                     {"Amplitude", 1, 100, 25},
                     {"Start degree", 0, 360, 0}},
         .call =
             [](cBatch& b, CallSite) {
                 return b.cFilter.WAVES(b.funcParam[0], b.funcParam[1], b.funcParam[2]);
             },
         .sentence = "Moves the rows up and down in waves, as if the picture lay under water.",
         .example = "Frequency=8,Amplitude=30"},
    };
}

}  // namespace tessarine
