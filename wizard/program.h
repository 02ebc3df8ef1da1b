#pragma once

#include <string>
#include <vector>

namespace tessarine {

/// What the command line of the window's program asks for.
struct WindowCommandLine {
    bool help = false;
    bool version = false;
    std::string refusal;             ///< why the line is wrong; empty where it is not
    std::vector<std::string> paths;  ///< to open, absolute

    /// \param arguments  without the program's own name
    static WindowCommandLine parse(const std::vector<std::string>& arguments);
};

/// The program: command line, splash window, main window. \return its exit status
int runProgram(int argumentCount, char** arguments);

}  // namespace tessarine
