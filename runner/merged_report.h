#pragma once

#include "runner/command_line.h"
#include "runner/refusal.h"

namespace tessarine {

/// Makes one report of several of the same basket: those of its shards, of runs that were ended
/// early and of those that went on. Pictures stand in the order of their numbers, each once: as
/// saved where a report says so, else as kept, else as failed; of several alike the last one given.
/// A last line that was cut off by the end of its run is passed over.
/// \return done; somePictures where some failed, are in no report, or the report was not taken
/// \throws Refusal (nothingStarts) where a file cannot be read, is no report, or belongs to another
///         basket than those before it
ExitStatus mergeReports(const CommandLine& line);

}  // namespace tessarine
