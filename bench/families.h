#pragma once

#include <string_view>

namespace tessarine::bench {

/// Functions that do the same kind of work, and what they may take.
struct Family {
    std::string_view name;
    double limit;  ///< copies of the picture, on one thread
};

/// The family of a catalogue function or of a member beside the catalogue.
/// \throws std::out_of_range for any other name
const Family& familyOf(std::string_view function);

}  // namespace tessarine::bench
