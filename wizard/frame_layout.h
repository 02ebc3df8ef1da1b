#pragma once

#include <array>
#include <cstdint>
#include <functional>

// Where the parts of the main window stand. All measures are in pixels, and nothing here knows a
// toolkit.

namespace tessarine {

struct Box {
    int32_t x = 0;
    int32_t y = 0;
    int32_t width = 0;
    int32_t height = 0;

    friend bool operator==(const Box&, const Box&) = default;
};

struct Extent {
    int32_t width = 0;
    int32_t height = 0;

    friend bool operator==(const Extent&, const Extent&) = default;
};

/// Height of the captions at the top of the tab strip.
inline constexpr int32_t captionHeight = 26;

/// What the window becomes when it was given a size: 500 by 400 at least.
Extent leastWindow(Extent inner);

struct FrameLayout {
    Box sTab;   ///< in the window
    Box frame;  ///< of each step, in the tab strip
    Box SB;     ///< in the window
};

/// The parts of a window of an inner size over a status bar of a height.
FrameLayout layOutWindow(Extent inner, int32_t statusBarHeight);

inline constexpr size_t panelCount = 5;

/// The panels of a status bar. Panels 1, 3 and 4 get what their texts want, panel 2 a part of the
/// bar, and panel 5 what is left; where that is too little for it, the others give way, panels 1
/// and 2 before 3 and 4.
/// \param wanted  the width of each panel's text; those of panels 2 and 5 are not looked at
std::array<Box, panelCount> layOutPanels(Extent bar, const std::array<int32_t, panelCount>& wanted);

/// The progress bar over panel 2: as wide as the panel, and 2 lower than the bar.
Box layOutProgressBar(Extent bar, const Box& panel);

/// How the captions of the tab strip are drawn.
struct CaptionFit {
    int32_t padding = 0;  ///< on either side of a caption
    bool icons = false;
    double scale = 1;    ///< of the font
    bool whole = false;  ///< no caption is cut off

    friend bool operator==(const CaptionFit&, const CaptionFit&) = default;
};

/// The roomiest way to draw captions within a width: first the padding shrinks, then the icons go,
/// then the font shrinks.
/// \param count     of the captions
/// \param iconRoom  an icon with the gap behind it
/// \param textWidth the width of all captions together in a font of a scale
CaptionFit fitCaptions(int32_t available, int32_t count, int32_t iconRoom,
                       const std::function<int32_t(double scale)>& textWidth);

}  // namespace tessarine
