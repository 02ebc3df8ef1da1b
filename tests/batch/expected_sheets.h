#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tessarine::tests {

/// What a sheet asks for, in terms of its own: the truth that table and screen are held against.
struct ExpectedSheet {
    struct Slider {
        std::string label;
        int min = 0;
        int max = 0;
        int initial = 0;
        bool centred = false;
    };
    struct Tick {
        std::string label;
        bool on = false;
    };

    int id = 0;
    std::string header;
    std::vector<Slider> sliders{};
    std::optional<Tick> option{};
    std::vector<int> swatches{};  ///< the indices of those that show
    bool pick = false;
    std::string panel{};  ///< empty for none
};

/// All sheets with inputs of their own.
inline std::vector<ExpectedSheet> expectedSheets() {
    using Tick = ExpectedSheet::Tick;
    return {
        {.id = 0,
         .header = "[Colorize]",
         .sliders = {{"Hue", 0, 100, 0}, {"Saturation", 0, 100, 50}, {"Luminosity", 0, 100, 100}}},
        {.id = 1, .header = "[Brightness]", .sliders = {{"Level", -100, 250, 0}}},
        {.id = 2, .header = "[Contrast]", .sliders = {{"Level", -100, 250, 0}}},
        {.id = 3, .header = "[Saturation]", .sliders = {{"Level", -100, 250, 0}}},
        {.id = 4, .header = "[Gamma correction]", .sliders = {{"Gamma", 0, 200, 100, true}}},
        {.id = 5,
         .header = "[Diffuse]",
         .sliders = {{"Horizontal range", 0, 50, 2}, {"Vertical range", 0, 50, 2}}},
        {.id = 6, .header = "[Blur]", .sliders = {{"Level", 0, 2, 0}}},
        {.id = 7,
         .header = "[Halftone]",
         .sliders = {{"Radius", 1, 25, 1}, {"Definition", 0, 100, 50}, {"Intensity", 0, 100, 0}}},
        {.id = 8, .header = "[Pixelaze]", .sliders = {{"Pixel size", 1, 25, 2}}},
        {.id = 9, .header = "[Emboss]", .sliders = {{"Weight", 0, 50, 10}}},
        {.id = 10, .header = "[Engrave]", .sliders = {{"Weight", 0, 50, 10}}},
        {.id = 11, .header = "[Contour]", .sliders = {{"Weight", 0, 255, 255}}, .swatches = {1}},
        {.id = 12,
         .header = "[Sketch]",
         .sliders = {{"Weight", 0, 255, 255}},
         .option = Tick{"B/W", false},
         .swatches = {1}},
        {.id = 13, .header = "[Threshold]", .sliders = {{"Cut value", 0, 255, 128}}},
        {.id = 14,
         .header = "[Isolate]",
         .sliders = {{"Tolerance", 0, 200, 100}},
         .swatches = {0, 1},
         .pick = true},
        {.id = 15, .header = "[Reduction]", .sliders = {{"Level", 0, 255, 0}}},
        {.id = 16,
         .header = "[Replace]",
         .sliders = {{"Tolerance", 0, 200, 100}},
         .swatches = {0, 1},
         .pick = true},
        {.id = 17,
         .header = " [Replace Hue/Sat.]",
         .sliders = {{"Hue Tolerance", 0, 100, 50},
                     {"Sat. Tolerance", 0, 100, 50},
                     {"Apply Tolerance", 0, 200, 100}},
         .swatches = {0, 1},
         .pick = true},
        {.id = 18,
         .header = "[Replace Lum.]",
         .sliders = {{"Lum. Tolerance", 0, 100, 50}, {"Apply Tolerance", 0, 200, 100}},
         .swatches = {0, 1},
         .pick = true},
        {.id = 19, .header = "[Sharpen]", .sliders = {{"Level", 0, 100, 0}}},
        {.id = 20, .header = "[Soften]", .sliders = {{"Level", 0, 100, 0}}},
        {.id = 21,
         .header = "[Shift]",
         .sliders = {{"Shift", -255, 255, 0}, {"Tolerance", 0, 200, 100}},
         .swatches = {0},
         .pick = true},
        {.id = 22,
         .header = "[Hue rotation]",
         .sliders = {{"Offset", 0, 100, 0}, {"Saturation", 0, 100, 100}}},
        {.id = 23,
         .header = "[Grey rotation]",
         .sliders = {{"Offset", 0, 100, 0}, {"Steps", 0, 100, 25}}},
        {.id = 24,
         .header = "[Hue stretch]",
         .sliders = {{"Offset", 0, 100, 0},
                     {"Saturation", 0, 100, 100},
                     {"Stretch factor", 0, 100, 0}}},
        {.id = 25,
         .header = "[RGB levels]",
         .sliders = {{"Red", -255, 255, 0}, {"Green", -255, 255, 0}, {"Blue", -255, 255, 0}}},
        {.id = 26, .header = "[RGB banks]", .panel = "frBanks"},
        {.id = 27,
         .header = "[Lens]",
         .sliders = {{"Diameter", 1, 100, 50}, {"Magnify factor", 0, 100, 50}},
         .pick = true},
        {.id = 28,
         .header = "[Waves]",
         .sliders = {{"Frequency", 0, 100, 25},
                     {"Amplitude", 1, 100, 25},
                     {"Start degree", 0, 360, 0}}},
        {.id = 29,
         .header = "[Bend]",
         .sliders = {{"Radius factor", -200, 200, 0}},
         .option = Tick{"Clean back", true}},
        {.id = 30,
         .header = "[Fold]",
         .sliders = {{"Horizontal factor", -100, 100, 0}, {"Vertical factor", -100, 100, 0}},
         .option = Tick{"Clean back", true}},
        {.id = 31,
         .header = "[Rotate]",
         .sliders = {{"Degrees", -180, 180, 0}},
         .option = Tick{"Clean back", true}},
        {.id = 32,
         .header = "[Stretch]",
         .sliders = {{"Horizontal factor", -100, 100, 0}, {"Vertical factor", -100, 100, 0}},
         .option = Tick{"Clean back", true}},
        {.id = 33, .header = "[Tile]", .sliders = {{"Factor", 2, 50, 2}}},
        {.id = 34,
         .header = "[Twirl]",
         .sliders = {{"Level", -100, 100, 0}, {"Offset degrees", -180, 180, 0}},
         .option = Tick{"Clean back", true}},
        {.id = 35,
         .header = "[Grid]",
         .sliders = {{"Horizontal step", 1, 250, 25},
                     {"Vertical step", 1, 250, 25},
                     {"Opacity", 0, 255, 128}},
         .option = Tick{"Force margins", true},
         .swatches = {1}},
        {.id = 36,
         .header = "[Light]",
         .sliders = {{"Extension", 1, 100, 50},
                     {"Intensity", 0, 500, 250},
                     {"Definition", 0, 100, 0}},
         .pick = true},
        {.id = 37,
         .header = "[Noise]",
         .sliders = {{"Intensity", 0, 100, 25}},
         .option = Tick{"Equalized", false}},
        {.id = 38, .header = "[Scanlines]", .sliders = {{"Opacity", 0, 255, 128}}},
        {.id = 39, .header = "[Behind Glass]", .panel = "FrmGlass"},
        {.id = 40, .header = "[Behind Curtain]", .panel = "FrmCurtain"},
        {.id = 59, .header = "[Resize]", .panel = "FrResize"},
        {.id = 70, .header = "[Rotate Intelligently]", .panel = "FrRotate"},
    };
}

}  // namespace tessarine::tests
