#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace tessarine {

/// One picture of a run in which each is processed by itself.
struct PictureTask {
    int32_t number = 0;  ///< place in the whole basket, from 1; its random numbers hang on it
    std::string input;
    std::string output;
};

/// What becomes of a picture whose output is there already.
enum class OnExists {
    keep,       ///< nothing; the output stays, and counts as kept
    overwrite,  ///< the output is replaced
    fail,       ///< nothing; the picture counts as failed, with the class "exists"
};

/// What a run with each picture by itself is to do, and how.
struct RunOrder {
    std::vector<PictureTask> tasks;  ///< in the order in which they are begun and reported
    OnExists onExists = OnExists::keep;
    /// Behind so many failed pictures no further one is begun.
    size_t mostFailures = std::numeric_limits<size_t>::max();
    /// For a calling thread with a window, which stays live: the thread does no picture itself, not
    /// even a single one, and has the platform's moments about every 10 ms; what members say at the
    /// start holds for all pictures, and not what they say when each is begun.
    bool inWindow = false;
    /// Called on the calling thread when a picture has ended. The report may wait with its entry
    /// for pictures before it.
    std::function<void()> onEnd;
};

}  // namespace tessarine
