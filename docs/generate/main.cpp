#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "completions.h"
#include "functions_page.h"
#include "manual_page.h"
#include "option_table.h"

// Writes what is made from the program's own tables.

namespace {

namespace fs = std::filesystem;
using namespace tessarine;

constexpr const char* usage =
    "usage: tessarine-docs functions FOLDER SAMPLE\n"
    "       tessarine-docs manual PAGE OUTPUT\n"
    "       tessarine-docs completions FOLDER [HELP-OF-THE-WINDOW]\n";

std::string contentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) throw std::runtime_error(file.string() + " cannot be read");
    return {std::istreambuf_iterator<char>(stream), {}};
}

void write(const fs::path& file, const std::string& content) {
    fs::create_directories(file.parent_path());
    std::ofstream stream(file, std::ios::binary);
    if (!(stream << content).flush())
        throw std::runtime_error(file.string() + " could not be written");
}

/// One folder a shell, files called as the shells look for them.
void writeCompletions(const fs::path& folder, const Program& program) {
    const std::vector<FunctionKeys> functions = functionKeys();
    write(folder / "bash" / program.name, bashCompletion(program, functions));
    write(folder / "zsh" / ("_" + program.name), zshCompletion(program, functions));
    write(folder / "fish" / (program.name + ".fish"), fishCompletion(program, functions));
}

/// \return whether the words make sense
bool doAsAsked(const std::vector<std::string>& words) {
    const std::string what = words.empty() ? "" : words[0];
    if (what == "functions" && words.size() == 3) {
        writeFunctionsPage(words[1], words[2]);
    } else if (what == "manual" && words.size() == 3) {
        write(fs::absolute(words[2]), completedManualPage(contentOf(words[1]), runnerProgram()));
    } else if (what == "completions" && (words.size() == 2 || words.size() == 3)) {
        writeCompletions(words[1], runnerProgram());
        if (words.size() == 3) writeCompletions(words[1], windowProgram(contentOf(words[2])));
    } else {
        return false;
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        if (doAsAsked({argv + 1, argv + argc})) return 0;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "tessarine-docs: %s\n", failure.what());
        return 1;
    }
    std::fputs(usage, stderr);
    return 2;
}
