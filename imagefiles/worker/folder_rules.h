#pragma once

#include "imagefiles/worker/sandbox.h"

namespace tessarine {

/// From here on this process opens nothing at all; a drawing helper reads below the folders of
/// fonts, their settings and libraries.
/// \return false where the kernel knows no such rules
bool confineToFolders(HelperKind kind);

}  // namespace tessarine
