#pragma once

#include <QPalette>

class QApplication;
class QDBusConnection;

namespace tessarine {

enum class ColourScheme { light, dark };

/// The program's own colours, for desktops that bring none.
QPalette programPalette(ColourScheme scheme);

/// Makes the program at home on its desktop. A style that the desktop brings or the person chose
/// stands; elsewhere the program takes its own (ProgramStyle). Colours that the desktop brings
/// stand as well; elsewhere the program takes its own, light or dark as the desktop prefers, and
/// follows that preference while it runs. Waits a quarter of a second at most for the desktop to
/// tell it.
///
/// To be called once, before the first window is made.
/// \param bus  where the desktop tells its preference; one that is not connected is no error
void applyAppearance(QApplication& application, const QDBusConnection& bus);

/// The program's own colours in any case, from now on and whatever the desktop prefers: for tools
/// that take pictures of the program.
void useColourScheme(QApplication& application, ColourScheme scheme);

}  // namespace tessarine
