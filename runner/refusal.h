#pragma once

#include <stdexcept>
#include <string>

namespace tessarine {

/// How the program ends, as scripts see it.
enum class ExitStatus {
    done = 0,           ///< everything saved, or kept as asked
    somePictures = 1,   ///< some pictures failed
    commandLine = 2,    ///< the command line is wrong
    nothingStarts = 3,  ///< no pictures, no such destination, an unreadable list
    interrupted = 130,  ///< by SIGINT or SIGHUP
    terminated = 143,   ///< by SIGTERM
};

/// A reason not to start: one line that names the thing and what was expected.
class Refusal : public std::runtime_error {
  public:
    Refusal(ExitStatus status, const std::string& message)
        : std::runtime_error(message), status_(status) {}

    ExitStatus status() const { return status_; }

  private:
    ExitStatus status_;
};

}  // namespace tessarine
