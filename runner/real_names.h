#pragma once

#include <string>
#include <unordered_map>

namespace tessarine {

/// Names of files with every link in their folders followed and all of "." and ".." taken away, so
/// that a place on the disk has one name. What is not there yet has a name as well. A link at the
/// end of a path is not followed: it is itself what an output replaces.
class RealNames {
  public:
    std::string of(const std::string& path);
    /// The name of the folder that a file lies in, without a separator at its end.
    std::string ofFolder(const std::string& path);

  private:
    std::unordered_map<std::string, std::string> folders_;
};

}  // namespace tessarine
