#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace tessarine {

struct PictureReport;

/// What is known of a picture's output from earlier runs.
enum class Earlier {
    nothing,   ///< an output that is there may be anybody's
    stale,     ///< it was made by an earlier run and is replaced, whatever OnExists says
    upToDate,  ///< it is what this run would make: the picture is not begun, and counts as kept
};

/// One picture of a run in which each is processed by itself.
struct PictureTask {
    int32_t number = 0;  ///< place in the whole basket, from 1; its random numbers hang on it
    std::string input;
    std::string output;
    Earlier earlier = Earlier::nothing;
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
    /// Called with the place of a task that is about to be read; may be empty. Both are called on
    /// the thread of the run.
    std::function<void(size_t place)> onBegin;
    /// Called as soon as a task has come to its end, before the report hears of it, which keeps to
    /// the tasks' order; may be empty.
    std::function<void(size_t place, const PictureReport& entry)> onEnd;
    /// For a calling thread with a window, which stays live: the thread does no picture itself, not
    /// even a single one, and has the platform's moments about every 10 ms; what members say at the
    /// start holds for all pictures, and not what they say when each is begun.
    bool inWindow = false;
    /// Called on the calling thread when a picture has ended and been told to the report, which may
    /// wait with its entry for pictures before it; may be empty.
    std::function<void()> onTold;
};

/// The message of a picture that is up to date.
inline constexpr const char* upToDateText = "it is up to date";

}  // namespace tessarine
