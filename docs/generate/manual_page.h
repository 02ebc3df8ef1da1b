#pragma once

#include <string>
#include <string_view>

#include "option_table.h"

namespace tessarine {

/// The manual page with an entry for every option of the program. Those written by hand stay as
/// they are. An option that has none gets one made of its description, behind the option before it
/// in the program's table; such entries carry a mark and are made anew each time.
/// \throws std::runtime_error where an entry written by hand is of no option, or there is no
///         section "OPTIONS"
std::string completedManualPage(std::string_view page, const Program& program);

}  // namespace tessarine
