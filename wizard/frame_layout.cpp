#include "wizard/frame_layout.h"

#include <algorithm>
#include <utility>

namespace tessarine {

Extent leastWindow(Extent inner) {
    return {std::max(inner.width, 500), std::max(inner.height, 400)};
}

FrameLayout layOutWindow(Extent inner, int32_t statusBarHeight) {
    const int32_t aboveBar = inner.height - statusBarHeight;
    FrameLayout places;
    places.sTab = {1, 0, inner.width - 3, aboveBar};
    places.frame = {5, captionHeight + 1, inner.width - 13, aboveBar - 30};
    places.SB = {0, aboveBar, inner.width, statusBarHeight};
    return places;
}

std::array<Box, panelCount> layOutPanels(Extent bar,
                                         const std::array<int32_t, panelCount>& wanted) {
    constexpr int32_t gap = 2;
    const int32_t room = std::max(0, bar.width - gap * static_cast<int32_t>(panelCount - 1));
    std::array<int32_t, panelCount> widths = wanted;
    widths[1] = std::clamp(room / 6, 60, 200);
    // A path says little in less than a fifth of the bar. The name of the program and the room for
    // progress give way to it first.
    int32_t missing = widths[0] + widths[1] + widths[2] + widths[3] - (room - room / 5);
    for (const auto& [panel, least] :
         {std::pair<size_t, int32_t>{1, 60}, {0, 40}, {2, 20}, {3, 20}}) {
        const int32_t given = std::clamp(missing, 0, std::max(0, widths[panel] - least));
        widths[panel] -= given;
        missing -= given;
    }
    widths[4] = std::max(0, room - widths[0] - widths[1] - widths[2] - widths[3]);

    std::array<Box, panelCount> panels;
    int32_t x = 0;
    for (size_t i = 0; i < panelCount; ++i) {
        panels[i] = {x, 1, widths[i], bar.height - 2};
        x += widths[i] + gap;
    }
    return panels;
}

Box layOutProgressBar(Extent bar, const Box& panel) {
    return {panel.x, 1, panel.width, bar.height - 2};
}

CaptionFit fitCaptions(int32_t available, int32_t count, int32_t iconRoom,
                       const std::function<int32_t(double scale)>& textWidth) {
    constexpr int32_t leastPadding = 4;
    constexpr double leastScale = 0.5;
    const int32_t full = textWidth(1);
    for (const bool icons : {true, false})
        for (int32_t padding = 12; padding >= leastPadding; padding -= 2)
            if (full + count * (2 * padding + (icons ? iconRoom : 0)) <= available)
                return {padding, icons, 1, true};
    for (double scale = 0.98; scale >= leastScale; scale -= 0.02)
        if (textWidth(scale) + count * 2 * leastPadding <= available)
            return {leastPadding, false, scale, true};
    return {leastPadding, false, leastScale, false};
}

}  // namespace tessarine
