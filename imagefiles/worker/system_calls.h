#pragma once

#include "imagefiles/worker/sandbox.h"

namespace tessarine {

/// From here on the kernel serves this process what decoding and encoding need, and refuses all
/// else with EPERM. Threads that it starts are held to the same.
/// \return false where the kernel does not filter
bool filterSystemCalls(HelperKind kind);

}  // namespace tessarine
