#include "runner/messages.h"

#include <cstdio>

#include <fmt/format.h>

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

std::string onOneLine(const std::string& text) {
    std::string line;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < ' ' || byte == 0x7F)
            line += fmt::format("\\x{:02x}", byte);
        else
            line += c;
    }
    return line;
}

}  // namespace tessarine
