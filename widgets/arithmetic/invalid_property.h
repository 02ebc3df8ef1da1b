#pragma once

#include <stdexcept>

namespace tessarine {

/// A property of a control was given a value that it cannot take.
class InvalidPropertyValue : public std::invalid_argument {
  public:
    static constexpr int number = 380;  ///< under which the failure is known

    InvalidPropertyValue();
};

}  // namespace tessarine
