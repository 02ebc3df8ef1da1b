#include "batch/batch.h"
#include "batch/function_groups.h"
#include "pixels/numbers.h"

namespace tessarine {

namespace {

/// The slider's hundredths of the circle in sixths of it: those from 84 on count from below 0.
PixelBuffer colorize(cBatch& b, CallSite) {
    int32_t hue = roundToInteger(b.funcParam[0] * 2.4);
    if (hue > 200) hue -= 240;
    return b.cFilter.COLORIZE(single(hue / 40.0), single(b.funcParam[1] / 100.0),
                              single(b.funcParam[2] / 100.0));
}

// The invert and kill boxes are not part of a row: what they show at the call counts, in the
// preview and in a run alike.
PixelBuffer swapRgb(cBatch& b, CallSite) {
    return b.cFilter.SwapRGB(b.funcParam[0], b.funcParam[1], b.funcParam[2], b.chkInvt[0] != 0,
                             b.chkInvt[1] != 0, b.chkInvt[2] != 0, b.chkKill[0] != 0,
                             b.chkKill[1] != 0, b.chkKill[2] != 0);
}

}  // namespace

std::vector<FunctionDef> colorFunctions() {
    return {
        {.id = 41,
         .name = "Blue",
         .header = "[Blue]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.ClassyColors(0); },
         .sentence = "Gives red the values of green and green the mean of both, and takes a part "
                     "off blue: all of it where there is no green."},
        {.id = 48,
         .name = "Green",
         .header = "[Green]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.ClassyColors(1); },
         .sentence = "Gives red the values of green, and green the mean of both."},
        {.id = 0,
         .name = "Colorize",
         .header = "[Colorize]",
         .sliders = {{"Hue", 0, 100, 0}, {"Saturation", 0, 100, 50}, {"Luminosity", 0, 100, 100}},
         .call = colorize,
         .sentence = "Paints the whole picture in one hue and saturation and keeps only its light "
                     "and shade.",
         .example = "Hue=55,Saturation=60"},
        {.id = 14,
         .name = "Isolate",
         .header = "[Isolate]",
         .sliders = {{"Tolerance", 0, 200, 100}},
         .swatches = Swatches::both,
         .picksPoint = true,
         .call =
             [](cBatch& b, CallSite) {
                 return b.cFilter.ISOLATE(b.funcColor[0], b.funcColor[1], b.funcParam[0]);
             },
         .sentence = "Keeps the pixels near the first colour and paints all others in the second.",
         .example = "Color0=0A5F43,Tolerance=60,Color1=FFFFFF"},
        {.id = 22,
         .name = "Hue Rotation",
         .header = "[Hue rotation]",
         .sliders = {{"Offset", 0, 100, 0}, {"Saturation", 0, 100, 100}},
         .call = [](cBatch& b,
                    CallSite) { return b.cFilter.RotateH(b.funcParam[0], b.funcParam[1]); },
         .sentence = "Moves all hues around the colour circle and scales their saturation.",
         .example = "Offset=40"},
        {.id = 24,
         .name = "Hue Stretch",
         .header = "[Hue stretch]",
         .sliders = {{"Offset", 0, 100, 0},
                     {"Saturation", 0, 100, 100},
                     {"Stretch factor", 0, 100, 0}},
         .call =
             [](cBatch& b, CallSite) {
                 return b.cFilter.StretchH(b.funcParam[0], b.funcParam[1], b.funcParam[2]);
             },
         .sentence = "Colours the picture by its brightness, in hues that swing as a sine wave.",
         .example = "Stretch factor=40"},
        {.id = 23,
         .name = "Grey Rotation",
         .header = "[Grey rotation]",
         .sliders = {{"Offset", 0, 100, 0}, {"Steps", 0, 100, 25}},
         .call = [](cBatch& b,
                    CallSite) { return b.cFilter.RotateL(b.funcParam[0], b.funcParam[1]); },
         .sentence = "Makes a grey picture whose light follows the brightness as a sine wave.",
         .example = "Offset=0,Steps=50"},
        {.id = 49,
         .name = "Greyscale",
         .header = "[Greyscale]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.GreyScale(); },
         .sentence = "Makes the picture grey, with green weighing most."},
        {.id = 50,
         .name = "Magenta",
         .header = "[Magenta]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.SpecialColors(-1, 0, -1); },
         .sentence = "Switches green off, which leaves red and blue."},
        {.id = 60,
         .name = "Retro",
         .header = "[Retro]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.ClassyColors(7); },
         .sentence = "Gives red the values of blue, green those of red and blue those of green, "
                     "each less a part of the blue and red."},
        {.id = 53,
         .name = "Orange",
         .header = "[Orange]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.ClassyColors(10); },
         .sentence = "Keeps red; green becomes half of red, and blue half of green."},
        {.id = 52,
         .name = "Old Photo",
         .header = "[Old Photo]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.OLDPHOTO(); },
         .sentence = "Turns red and green into grey and leaves blue as it is."},
        {.id = 55,
         .name = "Photocop",
         .header = "[Photocop]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.PHOTOCOP(); },
         .sentence = "Turns light pixels white and dark ones black and keeps those between, as a "
                     "photocopier does."},
        {.id = 56,
         .name = "Purple",
         .header = "[Purple]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.ClassyColors(2); },
         .sentence = "Gives blue the values of red, and red the mean of both."},
        {.id = 57,
         .name = "Red",
         .header = "[Red]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.ClassyColors(3); },
         .sentence = "Gives blue the values of green, and green the mean of both."},
        {.id = 16,
         .name = "Replace Colors",
         .header = "[Replace]",
         .sliders = {{"Tolerance", 0, 200, 100}},
         .swatches = Swatches::both,
         .picksPoint = true,
         .call =
             [](cBatch& b, CallSite) {
                 return b.cFilter.REPLACE(b.funcColor[0], b.funcColor[1], b.funcParam[0]);
             },
         .sentence = "Turns the first colour into the second, less and less with the distance from "
                     "the first.",
         .example = "Color0=0A5F43,Tolerance=80,Color1=2040C0"},
        {.id = 17,
         .name = "Replace Hue & Stretch",
         .header = " [Replace Hue/Sat.]",
         .sliders = {{"Hue Tolerance", 0, 100, 50},
                     {"Sat. Tolerance", 0, 100, 50},
                     {"Apply Tolerance", 0, 200, 100}},
         .swatches = Swatches::both,
         .picksPoint = true,
         .call =
             [](cBatch& b, CallSite) {
                 return b.cFilter.ReplaceHS(b.funcColor[0], b.funcColor[1], b.funcParam[0],
                                            b.funcParam[1], b.funcParam[2]);
             },
         .sentence = "Turns the first colour into the second where hue and saturation are alike "
                     "too.",
         .example =
             "Color0=0A5F43,Hue Tolerance=50,Sat. Tolerance=50,Apply Tolerance=100,Color1=2040C0"},
        {.id = 18,
         .name = "Replace Luminous",
         .header = "[Replace Lum.]",
         .sliders = {{"Lum. Tolerance", 0, 100, 50}, {"Apply Tolerance", 0, 200, 100}},
         .swatches = Swatches::both,
         .picksPoint = true,
         .call =
             [](cBatch& b, CallSite) {
                 return b.cFilter.ReplaceL(b.funcColor[0], b.funcColor[1], b.funcParam[0],
                                           b.funcParam[1]);
             },
         .sentence = "Turns the first colour into the second where the brightness is alike too.",
         .example = "Color0=0A5F43,Lum. Tolerance=50,Apply Tolerance=100,Color1=2040C0"},
        {.id = 26,
         .name = "Swap RGB",
         .header = "[RGB banks]",
         .panel = Panel::frBanks,
         .call = swapRgb,
         .sentence = "Fills each of red, green and blue from a channel of choice, inverts channels "
                     "or switches them off.",
         .example = "Red=G,Green=B,Blue=R"},
        {.id = 61,
         .name = "Sepiatone",
         .header = "[Sepiatone]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.COLORIZE(0.5F, 0.25F, 1.0F); },
         .sentence = "Paints the picture in the brown of old photographs."},
        {.id = 62,
         .name = "Spotted",
         .header = "[Spotted]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.ClassyColors(6); },
         .sentence = "Mixes the channels anew: red from green and blue, green from red and green, "
                     "blue from red and blue."},
        {.id = 64,
         .name = "Thermique",
         .header = "[Thermique]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.THERMIQUE(); },
         .sentence = "Keeps of each pixel only its strongest channel, as a heat camera paints."},
        {.id = 25,
         .name = "Tweak RGB",
         .header = "[RGB levels]",
         .sliders = {{"Red", -255, 255, 0}, {"Green", -255, 255, 0}, {"Blue", -255, 255, 0}},
         .call =
             [](cBatch& b, CallSite) {
                 return b.cFilter.ShiftRGB(b.funcParam[0], b.funcParam[1], b.funcParam[2]);
             },
         .sentence = "Adds a number of its own to each of red, green and blue.",
         .example = "Red=60,Blue=-60"},
        {.id = 66,
         .name = "X -Black",
         .header = "[X -Black]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.XBLACK(); },
         .sentence = "Turns light pixels black and dark ones white and keeps those between."},
        {.id = 67,
         .name = "Yellow",
         .header = "[Yellow]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.ClassyColors(8); },
         .sentence = "Moves the channels on by one: green takes the values of red, and blue those "
                     "of green."},
        {.id = 21,
         .name = "Shift",
         .header = "[Shift]",
         .sliders = {{"Shift", -255, 255, 0}, {"Tolerance", 0, 200, 100}},
         .swatches = Swatches::onlyFirst,
         .picksPoint = true,
         .call =
             [](cBatch& b, CallSite) {
                 return b.cFilter.Shift(b.funcColor[0], b.funcParam[0], b.funcParam[1]);
             },
         .sentence = "Makes pixels near the chosen colour lighter or darker, less and less with "
                     "the distance from it.",
         .example = "Color0=0A5F43,Shift=120,Tolerance=80"},
        {.id = 12,
         .name = "Sketch",
         .header = "[Sketch]",
         .sliders = {{"Weight", 0, 255, 255}},
         .option = OptionDef{"B/W", false},
         .swatches = Swatches::onlySecond,
         .call =
             [](cBatch& b, CallSite) {
                 return b.cFilter.SKETCH(b.funcParam[0], b.funcOption, b.funcColor[1]);
             },
         .sentence = "Draws the edges, in black on white or in their own colours on the chosen "
                     "one.",
         .example = "Weight=230,B/W=on"},
        {.id = 65,
         .name = "Wet Paper",
         .header = "[Wet Paper]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.ClassyColors(11); },
         .sentence = "Sets red to one level and moves blue to green and green to blue, as colours "
                     "run on wet paper."},
        {.id = 43,
         .name = "Cyan",
         .header = "[Cyan]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.SpecialColors(0, -1, -1); },
         .sentence = "Switches red off, which leaves green and blue."},
    };
}

std::vector<FunctionDef> functionsWithoutNode() {
    return {
        {.id = 13,
         .name = "Threshold",
         .header = "[Threshold]",
         .sliders = {{"Cut value", 0, 255, 128}},
         .call = [](cBatch& b, CallSite) { return b.cFilter.Threshold(b.funcParam[0]); },
         .sentence = "Turns pixels brighter than the cut value white and all others black."},
    };
}

}  // namespace tessarine
