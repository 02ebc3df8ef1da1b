#include "runner/terminal_platform.h"

#include <fmt/format.h>

namespace tessarine {

void TerminalPlatform::messageBox(const std::string& text, Icon, const std::string& title) {
    fmt::print(stderr, "{}: {}\n", title, text);
}

}  // namespace tessarine
