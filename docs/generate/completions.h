#pragma once

#include <string>
#include <vector>

#include "option_table.h"

namespace tessarine {

/// What a shell reads to complete a program's command line: options, their words, functions with
/// their keys, files and folders.
std::string bashCompletion(const Program& program, const std::vector<FunctionKeys>& functions);
std::string zshCompletion(const Program& program, const std::vector<FunctionKeys>& functions);
std::string fishCompletion(const Program& program, const std::vector<FunctionKeys>& functions);

/// Whether one of the program's options takes functions.
bool takesFunctions(const Program& program);

/// A text as one word of bash or zsh.
std::string shellQuoted(const std::string& text);

/// All words with one between them.
std::string joinedBy(const std::string& between, const std::vector<std::string>& words);

}  // namespace tessarine
