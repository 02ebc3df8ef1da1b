#pragma once

#include <cstdint>
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

/// What becomes of that which picture files say beyond their pixels. By itself nothing of it is
/// looked at.
struct MetadataWishes {
    bool autoOrient = false;  ///< pictures that lie otherwise are turned upright before the chain
    bool keep = false;        ///< outputs say what their pictures said, file times included
    bool stripLocation = false;  ///< but for places

    bool areNone() const { return !autoOrient && !keep; }
};

/// What a run with each picture by itself is to do, and how.
struct RunOrder {
    std::vector<PictureTask> tasks;  ///< in the order in which they are begun and reported
    OnExists onExists = OnExists::keep;
    /// Behind so many failed pictures no further one is begun.
    size_t mostFailures = std::numeric_limits<size_t>::max();
    MetadataWishes metadata;
};

}  // namespace tessarine
