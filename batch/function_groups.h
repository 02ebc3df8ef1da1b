#pragma once

#include <vector>

#include "batch/functions.h"

// The rows of the function table, a source file for each group of the tree. The order of a
// group's rows is the order of its nodes; tree indices are counted off from it.

namespace tessarine {

std::vector<FunctionDef> adjustmentFunctions();
std::vector<FunctionDef> filterFunctions();
std::vector<FunctionDef> colorFunctions();
std::vector<FunctionDef> deformationFunctions();
/// Functions that have a sheet and a call, but no node: rows and list files may name them.
std::vector<FunctionDef> functionsWithoutNode();

}  // namespace tessarine
