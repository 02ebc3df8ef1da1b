#include "batch/batch.h"
#include "batch/function_groups.h"

namespace tessarine {

std::vector<FunctionDef> adjustmentFunctions() {
    return {
        {.id = 1,
         .name = "Brightness",
         .header = "[Brightness]",
         .sliders = {{"Level", -100, 250, 0}},
         .call = [](cBatch& b, CallSite) { return b.cFilter.BRIGHTNESS(b.funcParam[0]); },
         .sentence = "Adds the same number to red, green and blue of every pixel, which makes the "
                     "picture brighter or, below 0, darker.",
         .example = "Level=60"},
        {.id = 2,
         .name = "Contrast",
         .header = "[Contrast]",
         .sliders = {{"Level", -100, 250, 0}},
         .call = [](cBatch& b, CallSite) { return b.cFilter.Contrast(b.funcParam[0]); },
         .sentence = "Spreads the colours apart around the picture's mean brightness or, below 0, "
                     "draws them together.",
         .example = "Level=60"},
        {.id = 4,
         .name = "Gamma Correction",
         .header = "[Gamma correction]",
         .sliders = {{"Gamma", 0, 200, 100, true}},
         .call = [](cBatch& b, CallSite) { return b.cFilter.GammaCorrection(b.funcParam[0]); },
         .sentence = "Lightens the middle tones above 100 and darkens them below, while black and "
                     "white stay; at 0 all becomes black.",
         .example = "Gamma=170"},
        {.id = 15,
         .name = "Reduction (Level)",
         .header = "[Reduction]",
         .sliders = {{"Level", 0, 255, 0}},
         .call = [](cBatch& b, CallSite) { return b.cFilter.Reduction(b.funcParam[0]); },
         .sentence = "Reduces each channel to a few levels, whose distance is one more than the "
                     "chosen level.",
         .example = "Level=63"},
        {.id = 68,
         .name = "Flip Horizontally",
         .header = "[Flip Horizontally]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.Flip(true, false); },
         .sentence = "Mirrors the picture, so that left and right change places."},
        {.id = 69,
         .name = "Flip Vertically",
         .header = "[Flip Vertically]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.Flip(false, true); },
         .sentence = "Mirrors the picture, so that top and bottom change places."},
        {.id = 59,
         .name = "Resize",
         .header = "[Resize]",
         .panel = Panel::FrResize,
         .call =
             [](cBatch& b, CallSite site) {
                 if (site == CallSite::row) b.ApplyResize();
                 return b.workBits;
             },
         .sentence = "Gives each picture of a run another size in pixels, if wanted with its own "
                     "proportions, which follow the width alone, and smoothed; the preview keeps "
                     "its size.",
         .example = "Width=120"},
        {.id = 31,
         .name = "Rotate",
         .header = "[Rotate]",
         .sliders = {{"Degrees", -180, 180, 0}},
         .option = OptionDef{"Clean back", true},
         .call = [](cBatch& b, CallSite) { return b.cFilter.ROTATE(b.funcParam[0], b.funcOption); },
         .sentence = "Turns the content about the picture's centre without changing the picture's "
                     "size, so that corners are cut; uncovered places become black or stay.",
         .example = "Degrees=30"},
        {.id = 70,
         .name = "Rotate Intelligently",
         .header = "[Rotate Intelligently]",
         .panel = Panel::FrRotate,
         .call =
             [](cBatch& b, CallSite site) {
                 site == CallSite::row ? b.ApplyRotate() : b.PreviewRotate();
                 return b.workBits;
             },
         .sentence = "Turns the whole picture and makes it as large as it must be to lose nothing; "
                     "the preview keeps its size.",
         .example = "Degrees=30,Antialiasing=on"},
    };
}

}  // namespace tessarine
