#pragma once

#include "imagefiles/worker/serve.h"

namespace tessarine {

// How a helper ends by itself. Any other end is a death; SIGXCPU (processor time) and SIGALRM (the
// clock on the wall) are the deaths of those whose picture took too long.

/// The program closed the socket, or is gone.
constexpr int helperDone = 0;
/// The helper has served long enough. It has answered every request that it took.
constexpr int helperRenews = 64;
/// The program sent what is no request.
constexpr int helperRefuses = 65;
/// It was not started as it has to be.
constexpr int helperMisused = 66;

/// A helper from its start to its end, as `PROGRAM SOCKET files|drawing PARENT` starts it: SOCKET
/// is the number of its end of the socket pair, PARENT the process that started it. \param
/// interference  for programs that misbehave on command \return the exit status
///
int runHelper(int argc, char** argv, Interference* interference);

}  // namespace tessarine
