#pragma once

#include <string>
#include <utility>
#include <vector>

#include "batch/batch.h"
#include "imagefiles/codec/codec_files.h"
#include "runner/command_line.h"
#include "runner/output_names.h"
#include "runner/refusal.h"

namespace tessarine {

/// Pictures that keep a run from starting, by their places, and why.
using Conflicts = std::vector<std::pair<size_t, std::string>>;

/// Writes what a run of the whole basket would do, as JSON lines: the settings, each picture with
/// what becomes of it and what its header promises, and a summary. Tells what is amiss on standard
/// error, and in the end the counts, unless they are not wanted.
/// \return done; somePictures where the plan cannot be run, or was not taken whole
/// \throws Refusal (nothingStarts) where it cannot be written
ExitStatus writePlan(const CommandLine& line, const cBatch& batch, const OutputNames& outputs,
                     const RunOrder& order, const Conflicts& conflicts, CodecFiles& files);

/// Fills what the run reads from the plan of --from-plan, and `line` with what else it tells.
/// \throws Refusal (nothingStarts) where it is no whole plan of this version, has conflicts, or one
///         of the pictures in the line's share is not as it was
OutputNames takePlan(cBatch& batch, CommandLine& line);

}  // namespace tessarine
