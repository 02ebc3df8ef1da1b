#pragma once

#include "batch/batch.h"
#include "runner/command_line.h"

namespace tessarine {

/// Fills what the run reads, as a person would in the window's steps.
/// \throws Refusal where that cannot make a run
void prepareRun(cBatch& batch, const CommandLine& line);

}  // namespace tessarine
