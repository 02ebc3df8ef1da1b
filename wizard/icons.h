#pragma once

#include <string_view>

#include <QIcon>

namespace tessarine {

/// The program's own icon of a name ("open-list"), in the colours of the current palette, crisp
/// at every size and density. A change of the palette shows with the next repaint. The names are
/// those of assets/icons; no icon for any other name.
QIcon programIcon(std::string_view name);

/// A picture of the program ("splash", "about", "banner"), of assets/pictures, in its own colours
/// and proportions.
QIcon programPicture(std::string_view name);

}  // namespace tessarine
