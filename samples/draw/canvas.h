#pragma once

#include <functional>
#include <string>

#include "vec.h"

namespace draw {

/// The colour seen at a point of the picture: x from left, y from top, both in units of the
/// picture's height, so that y runs from 0 to 1 and x from 0 to width / height. Linear light,
/// 1 is white.
using Scene = std::function<Vec3(double x, double y)>;

struct Size {
    int width = 0;
    int height = 0;
};

/// Looks at the scene `grid` by `grid` times inside each pixel, turns the mean into bytes and
/// writes them as a binary pixmap (P6).
/// \param grain  strength of the film grain, in levels of 255
/// \throws std::runtime_error where the file cannot be written
void paint(const std::string& path, Size size, int grid, const Scene& scene, double grain = 0);

}  // namespace draw
