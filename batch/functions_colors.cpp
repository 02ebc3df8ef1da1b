#include "batch/batch.h"
#include "batch/function_groups.h"

namespace tessarine {

namespace {

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
         .sentence = "Recombines the channels into cold tones of blue and green."},
        {.id = 48,
         .name = "Green",
         .header = "[Green]",
         .sentence = "Gives red the values of green, and green the mean of both."},
        {.id = 0,
         .name = "Colorize",
         .header = "[Colorize]",
         .sliders = {{"Hue", 0, 100, 0}, {"Saturation", 0, 100, 50}, {"Luminosity", 0, 100, 100}},
         .sentence = "Paints the whole picture in one hue and saturation and keeps only its light "
                     "and shade."},
        {.id = 14,
         .name = "Isolate",
         .header = "[Isolate]",
         .sliders = {{"Tolerance", 0, 200, 100}},
         .swatches = Swatches::both,
         .picksPoint = true,
         .sentence = "Keeps the pixels near the first colour and paints all others in the second."},
        {.id = 22,
         .name = "Hue Rotation",
         .header = "[Hue rotation]",
         .sliders = {{"Offset", 0, 100, 0}, {"Saturation", 0, 100, 100}},
         .sentence = "Moves all hues around the colour circle and scales their saturation."},
        {.id = 24,
         .name = "Hue Stretch",
         .header = "[Hue stretch]",
         .sliders = {{"Offset", 0, 100, 0},
                     {"Saturation", 0, 100, 100},
                     {"Stretch factor", 0, 100, 0}},
         .sentence = "Colours the picture by its brightness, in hues that swing as a sine wave."},
        {.id = 23,
         .name = "Grey Rotation",
         .header = "[Grey rotation]",
         .sliders = {{"Offset", 0, 100, 0}, {"Steps", 0, 100, 25}},
         .sentence = "Makes a grey picture whose light follows the brightness as a sine wave."},
        {.id = 49,
         .name = "Greyscale",
         .header = "[Greyscale]",
         .call = [](cBatch& b, CallSite) { return b.cFilter.GreyScale(); },
         .sentence = "Makes the picture grey, with green weighing most."},
        {.id = 50,
         .name = "Magenta",
         .header = "[Magenta]",
         .sentence = "Switches green off, which leaves red and blue."},
        {.id = 60,
         .name = "Retro",
         .header = "[Retro]",
         .sentence =
             "Exchanges the channels and draws a part of the blue and red off them, for the "
             "look of a faded print."},
        {.id = 53,
         .name = "Orange",
         .header = "[Orange]",
         .sentence = "Keeps red and halves the others: green becomes half of red and blue half of "
                     "green."},
        {.id = 52,
         .name = "Old Photo",
         .header = "[Old Photo]",
         .sentence = "Turns red and green into grey and leaves blue as it is."},
        {.id = 55,
         .name = "Photocop",
         .header = "[Photocop]",
         .sentence = "Turns light pixels white and dark ones black and keeps those between, as a "
                     "photocopier does."},
        {.id = 56,
         .name = "Purple",
         .header = "[Purple]",
         .sentence = "Gives blue the values of red, and red the mean of both."},
        {.id = 57,
         .name = "Red",
         .header = "[Red]",
         .sentence = "Gives blue the values of green, and green the mean of both."},
        {.id = 16,
         .name = "Replace Colors",
         .header = "[Replace]",
         .sliders = {{"Tolerance", 0, 200, 100}},
         .swatches = Swatches::both,
         .picksPoint = true,
         .sentence = "Turns the first colour into the second, less and less with the distance from "
                     "the first."},
        {.id = 17,
         .name = "Replace Hue & Stretch",
         .header = " [Replace Hue/Sat.]",
         .sliders = {{"Hue Tolerance", 0, 100, 50},
                     {"Sat. Tolerance", 0, 100, 50},
                     {"Apply Tolerance", 0, 200, 100}},
         .swatches = Swatches::both,
         .picksPoint = true,
         .sentence = "Turns the first colour into the second where hue and saturation are alike "
                     "too."},
        {.id = 18,
         .name = "Replace Luminous",
         .header = "[Replace Lum.]",
         .sliders = {{"Lum. Tolerance", 0, 100, 50}, {"Apply Tolerance", 0, 200, 100}},
         .swatches = Swatches::both,
         .picksPoint = true,
         .sentence = "Turns the first colour into the second where the brightness is alike too."},
        {.id = 26,
         .name = "Swap RGB",
         .header = "[RGB banks]",
         .panel = Panel::frBanks,
         .call = swapRgb,
         .sentence = "Fills each of red, green and blue from a channel of choice, inverts channels "
                     "or switches them off."},
        {.id = 61,
         .name = "Sepiatone",
         .header = "[Sepiatone]",
         .sentence = "Paints the picture in the brown of old photographs."},
        {.id = 62,
         .name = "Spotted",
         .header = "[Spotted]",
         .sentence = "Mixes each channel from parts of two others."},
        {.id = 64,
         .name = "Thermique",
         .header = "[Thermique]",
         .sentence = "Keeps of each pixel only its strongest channel, as a heat camera paints."},
        {.id = 25,
         .name = "Tweak RGB",
         .header = "[RGB levels]",
         .sliders = {{"Red", -255, 255, 0}, {"Green", -255, 255, 0}, {"Blue", -255, 255, 0}},
         .call =
             [](cBatch& b, CallSite) {
                 return b.cFilter.ShiftRGB(b.funcParam[0], b.funcParam[1], b.funcParam[2]);
             },
         .sentence = "Adds a number of its own to each of red, green and blue."},
        {.id = 66,
         .name = "X -Black",
         .header = "[X -Black]",
         .sentence = "Turns light pixels black and dark ones white and keeps those between."},
        {.id = 67,
         .name = "Yellow",
         .header = "[Yellow]",
         .sentence = "Moves the channels on by one: green takes the values of red, and blue those "
                     "of green."},
        {.id = 21,
         .name = "Shift",
         .header = "[Shift]",
         .sliders = {{"Shift", -255, 255, 0}, {"Tolerance", 0, 200, 100}},
         .swatches = Swatches::onlyFirst,
         .picksPoint = true,
         .sentence = "Makes pixels near the chosen colour lighter or darker, less and less with "
                     "the distance from it."},
        {.id = 12,
         .name = "Sketch",
         .header = "[Sketch]",
         .sliders = {{"Weight", 0, 255, 255}},
         .option = OptionDef{"B/W", false},
         .swatches = Swatches::onlySecond,
         .sentence = "Draws the edges, in black on white or in their own colours on the chosen "
                     "one."},
        {.id = 65,
         .name = "Wet Paper",
         .header = "[Wet Paper]",
         .sentence = "Sets red to one level and moves blue to green and green to blue, as colours "
                     "run on wet paper."},
        {.id = 43,
         .name = "Cyan",
         .header = "[Cyan]",
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
