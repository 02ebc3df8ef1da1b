#include "runner/messages.h"

#include <cstdio>

namespace tessarine {

void writeToTerminal(const std::string& text) {
    std::fputs(text.c_str(), stderr);
    std::fflush(stderr);
}

void complain(const std::string& message) {
    writeToTerminal("tessarine-batch: " + onOneLine(message) + "\n");
}

bool writeToOutput(const std::string& text) {
    return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() &&
           std::fflush(stdout) == 0;
}

}  // namespace tessarine
