#pragma once

#include <string_view>

#include "vec.h"

namespace draw {

/// Distance from a point to the strokes of a capital letter, which stands in a cell 1 wide and
/// 1.4 high, y upwards from its foot. Far away for a character without strokes.
double toLetter(char letter, Vec2 p);

/// The same for a line of letters, each `advance` from the last.
double toLine(std::string_view text, Vec2 p, double advance);

}  // namespace draw
