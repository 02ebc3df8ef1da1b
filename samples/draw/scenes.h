#pragma once

#include "canvas.h"

// The pictures, one function each. All are told in the units of Scene; `aspect` is width by height.

namespace draw {

Scene toys(double aspect);       ///< a wooden doll, letter blocks, marbles: the preview picture

}  // namespace draw
