#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "pixels/pixel_buffer.h"

namespace tessarine {

class cBatch;

/// One slider of a sheet. Shown value = slider value times step; all steps of the catalogue are 1.
struct SliderDef {
    std::string_view label;
    int32_t min = 0;
    int32_t max = 0;
    int32_t initial = 0;
    bool centred = false;  ///< the parameter is the slider's value less half of max
};

/// The yes/no input of a sheet.
struct OptionDef {
    std::string_view label;
    bool initial = false;
};

// The labels of the special panels' choices, in the order of their indices.
inline constexpr std::array<std::string_view, 3> bankLabels{"B", "G", "R"};
inline constexpr std::array<std::string_view, 4> glassStyles{"Slanting", "Vertical", "Horizontal",
                                                             "Squary"};
inline constexpr std::array<std::string_view, 4> curtainStyles{"Horizontal", "Vertical", "Classy",
                                                               "Whity"};
inline constexpr int32_t lowestDegrees = -180;
inline constexpr int32_t highestDegrees = 180;

/// Which colour swatches a sheet shows. The values are what ShowSwatches hides, where it hides.
enum class Swatches : int16_t { none = -2, both = -1, onlySecond = 0, onlyFirst = 1 };

/// The special panels.
enum class Panel { none, frBanks, FrmGlass, FrmCurtain, FrResize, FrRotate };

/// Where an image function is called from: the preview reads the sheet, a row the stored columns.
enum class CallSite { preview, row };

/// One image function: everything the program knows of it. The tree, the sheets, the dispatch,
/// the command line and the documentation read nothing else.
struct FunctionDef {
    int16_t id = 0;
    int16_t treeIndex = 0;  ///< 1-based place in the tree; 0 where no node stands for it
    std::string_view name;  ///< as the tree shows it
    std::string_view header;
    std::vector<SliderDef> sliders{};
    std::optional<OptionDef> option{};
    Swatches swatches = Swatches::none;
    bool picksPoint = false;
    Panel panel = Panel::none;
    /// Carries the function out with the working state of cBatch and gives the new picture; null
    /// where nothing is called.
    PixelBuffer (*call)(cBatch& batch, CallSite site) = nullptr;
    std::string_view sentence;  ///< what it does, for people
    /// Inputs that show what it does, as the command line takes them; empty for its sheet as it is.
    std::string_view example{};
};

/// One node of the tree.
struct TreeNode {
    std::string_view text;
    int16_t functionId = -1;  ///< -1 for a group
};

constexpr int16_t highestFunctionId = 70;

/// All functions that have a call or a sheet of their own, by rising id.
std::span<const FunctionDef> functionTable();
/// The function of an id; null for an id that stands for none (63, negative, above 70).
const FunctionDef* findFunction(int32_t id);
/// The function with a catalogue name, upper and lower case alike; null where there is none.
const FunctionDef* findFunction(std::string_view name);

/// The 73 nodes of the catalogue tree in their order; node k stands at tree index k + 1.
std::span<const TreeNode> catalogueTree();

}  // namespace tessarine
