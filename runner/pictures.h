#pragma once

#include <vector>

#include "batch/batch.h"
#include "runner/command_line.h"

namespace tessarine {

/// The basket of a command line, in its order. A path that does not exist stays in it, so that
/// the numbers of the others hang on the list alone.
/// \throws Refusal (nothingStarts) for a list that cannot be read
std::vector<BasketItem> collectPictures(const CommandLine& line);

}  // namespace tessarine
