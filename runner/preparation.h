#pragma once

#include "batch/batch.h"
#include "runner/command_line.h"
#include "runner/output_names.h"

namespace tessarine {

/// Has outputs go to a folder. \throws Refusal where it is none that can be written to
void setDestination(cBatch& batch, const std::string& folder);

/// Fills what the run reads, as a person would in the window's steps.
/// \return where the outputs go; the batch has to outlive it
/// \throws Refusal where that cannot make a run
OutputNames prepareRun(cBatch& batch, const CommandLine& line);

}  // namespace tessarine
