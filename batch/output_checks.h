#pragma once

#include <cstddef>
#include <functional>
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

/// The same for tasks that are told one by one, since a basket may be larger than what it takes
/// for all of them to lie in memory.
/// \param taskAt  the task at a place, from 0; may be asked for more than once
std::optional<PictureInDanger> pictureInDanger(size_t tasks,
                                               const std::function<PictureTask(size_t)>& taskAt,
                                               OnExists onExists);

}  // namespace tessarine
