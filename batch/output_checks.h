#pragma once

#include <optional>
#include <string>

#include "batch/picture_task.h"

namespace tessarine {

/// A picture of a run that an output of the same run stands against.
struct PictureInDanger {
    enum class Danger {
        replaced,  ///< the picture is there, and the output would replace it
        made,      ///< the picture is not there yet, and would be the output that the run has made
    };
    Danger danger;
    std::string input;
    std::string output;
};

/// The first picture of a run that the run itself would replace, or make before it reads it. By
/// whatever paths and links they are named, it is files that are compared.
std::optional<PictureInDanger> pictureInDanger(const RunOrder& order);

}  // namespace tessarine
