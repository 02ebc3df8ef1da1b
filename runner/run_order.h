#pragma once

#include "batch/batch.h"
#include "runner/command_line.h"

namespace tessarine {

/// What an independent run of a prepared basket is to do: the pictures of the command line's share,
/// with their numbers in the whole basket.
RunOrder orderOf(const cBatch& batch, const CommandLine& line);

/// What a dry run prints: a line for each picture of an order.
std::string planOf(const RunOrder& order);

}  // namespace tessarine
