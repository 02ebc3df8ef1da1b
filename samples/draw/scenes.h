#pragma once

#include "canvas.h"

// The pictures, one function each. All are told in the units of Scene; `aspect` is width by height.

namespace draw {

Scene toys(double aspect);       ///< a wooden doll, letter blocks, marbles: the preview picture
Scene mountains(double aspect);  ///< ranges in the morning haze
Scene fruit(double aspect);      ///< still life with pears and a bowl
Scene seaAtDusk(double aspect);
Scene aurora(double aspect);    ///< northern light over a lake
Scene milkyWay(double aspect);  ///< night sky over hills
Scene drops(double aspect);     ///< water drops on a leaf
Scene stainedGlass(double aspect);
Scene tartan(double aspect);  ///< woven wool from near
Scene dunes(double aspect);

}  // namespace draw
