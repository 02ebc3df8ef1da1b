#pragma once

#include <string_view>

namespace tessarine {

/// Whether `a` comes before `b` as people order names: letters of ASCII without regard to case,
/// and runs of digits by the numbers that they are ("scan 9" before "Scan 10").
bool comesBefore(std::string_view a, std::string_view b);

}  // namespace tessarine
