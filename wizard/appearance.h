#pragma once

#include <QPalette>

class QApplication;

namespace tessarine {

enum class ColourScheme { light, dark };

/// The program's own colours, for desktops that bring none.
QPalette programPalette(ColourScheme scheme);

/// Makes the program at home on its desktop. Where the desktop brings a style or colours of its
/// own, or the person chose a style, these stand. Elsewhere the program takes the style Fusion
/// with its own colours, light or dark as the desktop prefers, and follows that preference while
/// it runs. Waits a quarter of a second at most for the desktop to tell it.
///
/// To be called once, before the first window is made.
void applyAppearance(QApplication& application);

/// The program's own colours in any case, from now on and whatever the desktop prefers: for tools
/// that take pictures of the program.
void useColourScheme(QApplication& application, ColourScheme scheme);

}  // namespace tessarine
