#pragma once

#include <string>
#include <vector>

#include "batch/batch.h"
#include "runner/command_line.h"

namespace tessarine {

/// One input of a function as --apply takes it.
struct FunctionInput {
    std::string key;
    std::string values;   ///< what is expected, e.g. "-100 to 250"
    std::string initial;  ///< what the sheet shows first; empty where that hangs on the picture
};

/// All inputs of a function, in the order of its sheet.
std::vector<FunctionInput> inputsOf(const FunctionDef& function);

/// Adds the functions of a command line to the chain, in their order, and sets what the sheet
/// shows at the run.
/// \throws Refusal (commandLine) for an unknown function or input or a value out of range,
///         (nothingStarts) for a function list that cannot be read
void addFunctions(cBatch& batch, const CommandLine& line);

}  // namespace tessarine
