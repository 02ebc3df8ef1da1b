#include "runner/terminal_platform.h"

#include "runner/messages.h"

namespace tessarine {

void TerminalPlatform::messageBox(const std::string& text, Icon, const std::string& title) {
    writeToTerminal(onOneLine(title + ": " + text) + "\n");
}

}  // namespace tessarine
