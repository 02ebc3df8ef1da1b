#include "families.h"

#include <array>
#include <span>
#include <stdexcept>
#include <string>

namespace tessarine::bench {

namespace {

using Names = std::span<const std::string_view>;

constexpr std::array<std::string_view, 23> arithmetic{
    "Brightness", "Negative",  "Tweak RGB",  "Swap RGB",          "Cyan",           "Red",
    "Photocop",   "X -Black",  "Thermique",  "Magenta",           "Yellow",         "Blue",
    "Green",      "Orange",    "Purple",     "Spotted",           "Sepiatone",      "Wet Paper",
    "Retro",      "Old Photo", "Scanliness", "Flip Horizontally", "Flip Vertically"};
constexpr std::array<std::string_view, 3> lookUp{"Gamma Correction", "Reduction (Level)",
                                                 "Contrast"};
constexpr std::array<std::string_view, 12> colour{
    "Saturation",    "Greyscale", "Colorize",       "Hue Rotation",          "Hue Stretch",
    "Grey Rotation", "Isolate",   "Replace Colors", "Replace Hue & Stretch", "Replace Luminous",
    "Shift",         "Equalize"};
constexpr std::array<std::string_view, 12> stencil{
    "Blur",    "Bump Mapping", "Contour", "Dilate",  "Edge Enhance", "Emboss",
    "Engrave", "Erode",        "Relief",  "Sharpen", "Sketch",       "Soften"};
constexpr std::array<std::string_view, 1> painting{"Painting"};
constexpr std::array<std::string_view, 11> deformation{"Twirl",  "Bend",    "Fold",   "Stretch",
                                                       "Rotate", "Waves",   "Tile",   "Lens",
                                                       "Glass",  "Curtain", "Diffuse"};
constexpr std::array<std::string_view, 2> resampling{"Rotate Intelligently", "Resize"};
constexpr std::array<std::string_view, 5> synthesis{"Noise", "Halftone", "Pixelize", "Grid",
                                                    "Flare"};
constexpr std::array<std::string_view, 1> diffusion{"StuckiBW"};

struct Entry {
    Family family;
    Names names;
};

constexpr std::array<Entry, 9> families{{
    {{"channel arithmetic, selection, flip", 3}, arithmetic},
    {{"look-up", 5}, lookUp},
    {{"colour arithmetic", 15}, colour},
    {{"3 by 3 window", 6}, stencil},
    {{"painting", 40}, painting},
    {{"deformation", 25}, deformation},
    {{"resampling, by pixels of the result", 25}, resampling},
    {{"synthesis", 15}, synthesis},
    {{"error diffusion", 60}, diffusion},
}};

}  // namespace

const Family& familyOf(std::string_view function) {
    for (const Entry& entry : families)
        for (const std::string_view name : entry.names)
            if (name == function) return entry.family;
    throw std::out_of_range("no family has " + std::string(function));
}

}  // namespace tessarine::bench
