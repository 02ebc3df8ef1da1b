#pragma once

namespace tessarine {

/// The whole program. \return the exit status
int runProgram(int argc, const char* const* argv);

}  // namespace tessarine
