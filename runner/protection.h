#pragma once

#include "batch/batch.h"
#include "runner/command_line.h"
#include "runner/output_names.h"

namespace tessarine {

/// Tells of outputs that would replace a picture of the run, or that the run would read as a
/// picture after it has written it itself.
/// \param mayReplace  whether outputs that are there are replaced
void protectPictures(const OutputNames& outputs, bool mayReplace, RealNames& names,
                     const FoundConflict& found);

/// Keeps what the run tells (report, failed list, journal, plan) from being written over a picture,
/// a list or an output of the run, or over each other.
/// \throws Refusal (nothingStarts)
void protectFromTelling(const OutputNames& outputs, const CommandLine& line, RealNames& names);

}  // namespace tessarine
